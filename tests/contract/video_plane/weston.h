/**
 * A compositor without a screen for one test, with the toolkit connected to it and one full-screen,
 * see-through window. The test's main thread is the main-loop thread.
 */
#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <Efreet.h>
#include <Elementary.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "store_support/scratch.h"

namespace platform_test {

using store_test::Child;
using store_test::Environment;
using store_test::ScratchDir;

constexpr int SCREEN_WIDTH = 640;
constexpr int SCREEN_HEIGHT = 360;

/** Waits for what happens on another thread, without the main loop. */
inline bool wait_until(const std::function<bool()> &condition, double deadline_s = 10.0)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration<double>(deadline_s);
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        poll(nullptr, 0, 2);
    }
    return true;
}

class Weston {
  public:
    Weston()
        : runtime_("XDG_RUNTIME_DIR", folder_.path()), home_("HOME", folder_.path()),
          name_("WAYLAND_DISPLAY", "test"),
          server_({WESTON, "--config=" + configuration(), "--backend=headless-backend.so",
                   "--use-pixman", "--shell=desktop-shell.so", "--idle-time=0", "--debug",
                   "--socket=test", "--width=" + std::to_string(SCREEN_WIDTH),
                   "--height=" + std::to_string(SCREEN_HEIGHT), "--log=" + (folder_ / "log")})
    {
        if (!wait_until([this] { return listening(); }))
            ADD_FAILURE() << "weston did not start: " << store_test::read_file(folder_ / "log");
    }

    void kill() { server_.signal(SIGKILL); }

    /** What is on the screen: the path of a picture file, good until the next call. */
    std::string screenshot()
    {
        // The tool puts a file with the time in its name into its working folder.
        const ScratchDir shots;
        Child shooter({WESTON_SCREENSHOOTER}, [&] {
            if (chdir(shots.path().c_str()) != 0)
                _exit(126);
        });
        EXPECT_EQ(shooter.finish(), 0) << shooter.err_text();
        for (const auto &entry : std::filesystem::directory_iterator(shots.path()))
            std::filesystem::rename(entry.path(), folder_ / "shot.png");
        return folder_ / "shot.png";
    }

  private:
    std::string configuration() const
    {
        store_test::write_file(folder_ / "weston.ini", "[shell]\nstartup-animation=none\n"
                                                       "animation=none\nclose-animation=none\n"
                                                       "locking=false\npanel-position=none\n");
        return folder_ / "weston.ini";
    }

    bool listening() const
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        (folder_ / "test").copy(address.sun_path, sizeof address.sun_path - 1);
        const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool connected =
            connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        close(client);
        return connected;
    }

    ScratchDir folder_;
    Environment runtime_;
    Environment home_;
    Environment name_;
    Child server_;
};

class WestonTest : public testing::Test {
  protected:
    void SetUp() override
    {
        efreet_cache_disable(); // no cache daemon in the test's folder
        char name[] = "contract";
        char *arguments[] = {name, nullptr};
        ASSERT_GT(elm_init(1, arguments), 0);
        // Conditions are looked at again at each turn of the loop, so it must not sleep for long.
        ticker_ = ecore_timer_add(
            0.01, [](void *) -> Eina_Bool { return ECORE_CALLBACK_RENEW; }, nullptr);
        window_ = elm_win_add(nullptr, "plane", ELM_WIN_BASIC);
        elm_win_alpha_set(window_, EINA_TRUE);
        elm_win_borderless_set(window_, EINA_TRUE);
        elm_win_fullscreen_set(window_, EINA_TRUE);
        evas_object_resize(window_, SCREEN_WIDTH, SCREEN_HEIGHT);
        Evas_Object *hole = evas_object_rectangle_add(evas_object_evas_get(window_));
        evas_object_color_set(hole, 0, 0, 0, 0);
        evas_object_render_op_set(hole, EVAS_RENDER_COPY);
        evas_object_size_hint_weight_set(hole, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
        elm_win_resize_object_add(window_, hole);
        evas_object_show(hole);
        evas_object_show(window_);
        bool drawn = false;
        const auto on_drawn = [](void *data, Evas *, void *) { *static_cast<bool *>(data) = true; };
        Evas *canvas = evas_object_evas_get(window_);
        evas_event_callback_add(canvas, EVAS_CALLBACK_RENDER_POST, on_drawn, &drawn);
        ASSERT_TRUE(run([&] { return drawn; })) << "the window was never drawn";
        evas_event_callback_del_full(canvas, EVAS_CALLBACK_RENDER_POST, on_drawn, &drawn);
    }

    void TearDown() override
    {
        delete_window();
        ecore_timer_del(ticker_);
        elm_shutdown();
    }

    void delete_window()
    {
        if (window_)
            evas_object_del(window_);
        window_ = nullptr;
    }

    /** A colour of the compositor's output, red in the highest of the three bytes. */
    uint32_t colour_at(int x, int y)
    {
        Ecore_Evas *canvas = ecore_evas_buffer_new(1, 1);
        Evas_Object *image = evas_object_image_add(ecore_evas_get(canvas));
        evas_object_image_file_set(image, weston_.screenshot().c_str(), nullptr);
        int width = 0;
        int height = 0;
        evas_object_image_size_get(image, &width, &height);
        const auto *pixels =
            static_cast<const uint32_t *>(evas_object_image_data_get(image, EINA_FALSE));
        const uint32_t colour = pixels && x < width && y < height ? pixels[y * width + x] : 0;
        ecore_evas_free(canvas);
        return colour & 0xffffff;
    }

    /** Runs the main loop. */
    static bool run(const std::function<bool()> &condition)
    {
        return store_test::run_loop_until(condition);
    }

    const Environment engine_{"ELM_DISPLAY", "wl"};
    const Environment acceleration_{"ELM_ACCEL", "none"};
    const Environment modules_{"ECORE_NO_SYSTEM_MODULES", "1"};
    Weston weston_;
    Evas_Object *window_ = nullptr;
    Ecore_Timer *ticker_ = nullptr;
};

} // namespace platform_test
