/**
 * The application shell: main() runs with the fake framework inside it, and each test plays the
 * framework's part.
 */
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <Elementary.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app_data.h"
#include "platform.h"
#include "player/util/EventManager.h"
#include "player/util/OstrelDemoUtil.h"
#include "player_fixture.h"

// main() of the player, under another name.
int demo_player_main(int argc, char **argv);

inline constexpr char DEMO_MODE[] = "db/ostrel-demo-player-tv/demo_mode";
inline constexpr char USE_MODE[] = "db/menu/support/use_mode";
inline constexpr char RELAUNCH_TIMER[] = "memory/usb-launcher-service/start_relaunch_timer";

class MainTest : public testing::Test {
  protected:
    MainTest() : fake_(fake::reset())
    {
        COstrelDemoUtil::SetWindowRotationType(ROTATION_TYPE_LANDSCAPE);
        fake_.forget();
        fake_.store.values = {{DEMO_MODE, 0},
                              {USE_MODE, 1},
                              {"db/sysman/rotation_state", 1},
                              {"db/ostrel-demo-player-tv/file_mode", 1},
                              {"db/ostrel-demo-player-tv/rotation_auto_mode", 0}};
        fake_.storage.add_folder("/opt/data/demo_movie", {"a.mp4", "b.mp4"});
    }

    ~MainTest() override
    {
        CEventManager::ReleaseInstance();
        EXPECT_THAT(fake_.script.unused(), testing::IsEmpty()) << "failures that never came about";
        EXPECT_THAT(fake_.texts.held(), testing::IsEmpty());
    }

    // Runs main(); `script` is the application's life between start and end of the main loop.
    int run(std::function<void()> script)
    {
        fake_.app.script = std::move(script);
        char name[] = "ostrel-demo-player-tv";
        char *argv[] = {name, nullptr};
        fake_.registry.name(argv, "argv");
        return demo_player_main(1, argv);
    }

    // As run(), with the application created before and terminated after.
    void run_created(std::function<void()> script)
    {
        run([this, script = std::move(script)] {
            EXPECT_TRUE(fake_.app.create());
            fake_.forget();
            script();
            fake_.app.terminate();
        });
    }

    // The window's first visibility starts playback once in a process, and all tests share theirs:
    // a second request starts it at any time.
    void launch_and_start(const fake::Application::Extras &extras = {})
    {
        fake_.app.launch(extras);
        fake_.app.launch(extras);
    }

    int exits() const { return fake_.app.exit_requests; }
    bool has_controller() const { return fake_.media.state != PLAYER_STATE_NONE; }

    fake::Platform &fake_;
};
