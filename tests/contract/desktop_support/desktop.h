/**
 * A desktop for the programs under test: an X server in memory with a kiosk compositor on it, a
 * session bus, and folders of their own for state, settings and sockets.
 */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/geometry.h"
#include "desktop_support/program.h"
#include "store_support/private_bus.h"
#include "store_support/scratch.h"

namespace desktop_test {

inline constexpr int SCREEN_WIDTH = 640;
inline constexpr int SCREEN_HEIGHT = 400;

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
    bool operator==(const Colour &other) const
    {
        return red == other.red && green == other.green && blue == other.blue;
    }
};

/** The X server and the compositor, shared by all tests of the program: they keep no state. */
class Screen {
  public:
    static Screen &get();
    ~Screen();

    /** The environment in which programs find the compositor. */
    Program::Variables variables() const;

    /** Moves the real pointer, presses real keys; xdotool's own arguments. */
    void input(const std::vector<std::string> &arguments) const;

    /**
     * Puts the pointer into a corner where it is in nobody's way. It comes from outside, because
     * only then does the compositor know where it is; and it stays inside, because the keys go
     * where the pointer is.
     */
    void bring_pointer_in() const;

    /** What is on the screen at a place. */
    Colour colour(int x, int y) const;

    /** The smallest rectangle around all that is not black. */
    platform::Rect lit_part() const;

    const std::string &runtime_dir() const { return folder_.path(); }

  private:
    Screen();

    store_test::ScratchDir folder_;
    std::unique_ptr<Program> server_;
    std::unique_ptr<Program> compositor_;
    std::string display_;
};

class DesktopTest : public testing::Test {
  protected:
    DesktopTest();

    /** Starts the test application. */
    std::unique_ptr<Program> start(const std::vector<std::string> &arguments = {},
                                   const Program::Variables &more = {});

    /** Starts it and waits until its window has been seen. */
    std::unique_ptr<Program> start_and_show(const Program::Variables &more = {});

    /** Waits until its window has the keyboard: a key typed before that is nobody's. */
    static bool gets_keyboard(Program &app);

    /** Tells the test application to end and waits for that. @return its exit status */
    static int quit(Program &app);

    void write_settings(const std::string &text) const;
    std::string stored_rotation_state() const;

    const store_test::ScratchDir folder_;
    store_test::PrivateBus session_bus_{folder_ / "bus"};
    Program::Variables variables_;
};

} // namespace desktop_test
