/**
 * A panel with its own settings, store and main loop. Settings and panel are one per process, so
 * every test runs in a process of its own.
 */
#pragma once

#include <string>
#include <vector>

#include <Ecore.h>
#include <gmock/gmock.h>

#include "panel/panel_model.h"
#include "store_support/scratch.h"

namespace panel_test {

class PanelTest : public testing::Test {
  protected:
    explicit PanelTest(
        const std::string &settings = "[panel]\nrotator = true\nturning_time_s = 0.05\n")
        : state_dir_("OSTREL_DEMO_STATE_DIR", folder_ / "state"),
          runtime_dir_("OSTREL_DEMO_RUNTIME_DIR", folder_ / "run"),
          file_("OSTREL_DEMO_TV_CONF", folder_ / "tv.conf"),
          modules_("ECORE_NO_SYSTEM_MODULES", "1")
    {
        store_test::write_file(folder_ / "tv.conf", settings);
        ecore_init();
    }
    ~PanelTest() override
    {
        panel_.stop();
        ecore_shutdown();
    }

    void log(const std::string &what) { seen_.push_back(what); }

    /** Runs the main loop until the turn under way is over. */
    void finish_turn()
    {
        EXPECT_TRUE(store_test::run_loop_until([this] { return !panel_.turning(); }));
    }

    std::string stored_state() const
    {
        return store_test::read_file(folder_ / "state/db/sysman/rotation_state");
    }

    const store_test::ScratchDir folder_;
    const store_test::Environment state_dir_;
    const store_test::Environment runtime_dir_;
    const store_test::Environment file_;
    const store_test::Environment modules_;
    platform::PanelModel &panel_ = platform::PanelModel::get();
    std::vector<std::string> seen_;
    const platform::PanelModel::Subscription status_ =
        panel_.on_status([this](int status) { log("status " + std::to_string(status)); });
    const platform::PanelModel::Subscription angle_ =
        panel_.on_angle([this](int angle) { log("angle " + std::to_string(angle)); });
};

} // namespace panel_test
