/** A session bus of their own, a player on it, and tvctl, each a process. */
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "store_support/private_bus.h"
#include "store_support/scratch.h"

class ControlFixture : public testing::Test {
  protected:
    /** What a run of tvctl left behind. */
    struct Outcome {
        int status;
        std::string out;
        std::string err;
    };

    ControlFixture()
    {
        std::filesystem::create_directories(scratch_ / "stick");
        store_test::write_file(scratch_ / "tv.conf",
                               "[panel]\nrotator = yes\nturning_time_s = 0.05\n");
    }

    void start_bus()
    {
        bus_.emplace(scratch_ / "bus");
        address_.emplace("DBUS_SESSION_BUS_ADDRESS", bus_->address());
    }

    void start_player()
    {
        start_bus();
        player_ = std::make_unique<store_test::Child>(std::vector<std::string>{CONTROL_PLAYER});
        wait_for(*player_, "ready\n");
        player_->out_text().clear();
    }

    /** Waits until the player has said something. @return whether it did before it ended */
    bool player_says(const std::string &line) { return wait_for(*player_, line + "\n"); }

    static bool wait_for(store_test::Child &child, const std::string &text)
    {
        const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
        while (child.out_text().find(text) == std::string::npos) {
            if (!child.read_some(100) || std::chrono::steady_clock::now() > deadline)
                break;
        }
        const bool found = child.out_text().find(text) != std::string::npos;
        EXPECT_TRUE(found) << "missing: " << text << "\nin: " << child.out_text()
                           << "\nerrors: " << child.err_text();
        return found;
    }

    static Outcome tvctl(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), TVCTL);
        store_test::Child child(arguments);
        const int status = child.finish();
        return {status, child.out_text(), child.err_text()};
    }

    std::string in_store(const std::string &name) { return scratch_ / name; }

    /** Long enough for a loaded machine; nothing that works ever takes it. */
    static constexpr std::chrono::seconds PATIENCE{30};

    store_test::ScratchDir scratch_;
    store_test::Environment conf_{"OSTREL_DEMO_TV_CONF", scratch_ / "tv.conf"};
    store_test::Environment state_{"OSTREL_DEMO_STATE_DIR", scratch_ / "state"};
    store_test::Environment runtime_{"OSTREL_DEMO_RUNTIME_DIR", scratch_ / "run"};
    store_test::Environment locale_{"LC_ALL", "C"};
    store_test::Environment system_modules_{"ECORE_NO_SYSTEM_MODULES", "1"};
    store_test::Environment no_bus_{"DBUS_SESSION_BUS_ADDRESS"};
    store_test::Environment no_system_bus_{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere"};
    store_test::Environment no_default_bus_{"XDG_RUNTIME_DIR", scratch_ / "xdg"};
    std::optional<store_test::Environment> address_;
    std::optional<store_test::PrivateBus> bus_;
    std::unique_ptr<store_test::Child> player_;
};
