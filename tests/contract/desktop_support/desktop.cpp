#include "desktop_support/desktop.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace desktop_test {

namespace {

/** How much larger the X server's screen is than the compositor's window, to its right and below.
 */
constexpr int MARGIN = 40;

bool answers(const std::string &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected =
        connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    close(client);
    return connected;
}

[[noreturn]] void give_up(const std::string &what, Program &program)
{
    std::fprintf(stderr, "%s did not start:\n%s\n", what.c_str(), program.errors().c_str());
    std::abort();
}

/** What the X server writes of its screen, a window dump. */
class Dump {
  public:
    explicit Dump(const std::string &path) : bytes_(store_test::read_file(path))
    {
        constexpr size_t HEADER_SIZE = 0, BYTES_PER_LINE = 12, COLOURS = 19, BYTES_PER_COLOUR = 12;
        first_ = number_at(HEADER_SIZE) + number_at(COLOURS) * BYTES_PER_COLOUR;
        stride_ = number_at(BYTES_PER_LINE);
    }

    Colour colour(int x, int y) const
    {
        const size_t at = first_ + static_cast<size_t>(y) * stride_ + static_cast<size_t>(x) * 4;
        const auto byte = [&](size_t offset) {
            return static_cast<int>(static_cast<unsigned char>(bytes_.at(at + offset)));
        };
        return {byte(2), byte(1), byte(0)};
    }

  private:
    /** A number of the header, which is big-endian. */
    uint32_t number_at(size_t index) const
    {
        uint32_t number = 0;
        for (size_t byte = 0; byte < 4; ++byte)
            number = number << 8 | static_cast<unsigned char>(bytes_.at(index * 4 + byte));
        return number;
    }

    std::string bytes_;
    size_t first_ = 0;
    size_t stride_ = 0;
};

} // namespace

Screen &Screen::get()
{
    static Screen screen;
    return screen;
}

Screen::Screen()
{
    const std::string size = std::to_string(SCREEN_WIDTH + MARGIN) + "x" +
                             std::to_string(SCREEN_HEIGHT + MARGIN) + "x24";
    server_ = std::make_unique<Program>(std::vector<std::string>{XVFB, "-displayfd", "1", "-screen",
                                                                 "0", size, "-nolisten", "tcp",
                                                                 "-fbdir", folder_.path()},
                                        Program::Variables{});
    if (!wait_until([this] { return !server_->lines().empty(); }))
        give_up("the X server", *server_);
    display_ = ":" + server_->lines().front();

    store_test::write_file(folder_ / "weston.ini", "[core]\nshell=kiosk-shell.so\nidle-time=0\n"
                                                   "[keyboard]\nkeymap_layout=us\n");
    compositor_ = std::make_unique<Program>(
        std::vector<std::string>{WESTON, "--backend=x11-backend.so", "--use-pixman",
                                 "--width=" + std::to_string(SCREEN_WIDTH),
                                 "--height=" + std::to_string(SCREEN_HEIGHT),
                                 "--config=" + (folder_ / "weston.ini"), "--socket=test"},
        Program::Variables{{"DISPLAY", display_}, {"XDG_RUNTIME_DIR", folder_.path()}});
    // The socket answers long before the compositor has its window, and a client that comes in
    // between is never told where the pointer is. Loading the shell is the last thing that is
    // logged.
    if (!wait_until([this] {
            return compositor_->errors().find("kiosk-shell.so") != std::string::npos &&
                   answers(folder_ / "test");
        }))
        give_up("the compositor", *compositor_);
}

Screen::~Screen() = default;

void Screen::bring_pointer_in() const
{
    input({"mousemove", std::to_string(SCREEN_WIDTH + MARGIN / 2),
           std::to_string(SCREEN_HEIGHT + MARGIN / 2)});
    input({"mousemove", std::to_string(SCREEN_WIDTH - 8), std::to_string(SCREEN_HEIGHT - 8)});
}

Program::Variables Screen::variables() const
{
    return {{"WAYLAND_DISPLAY", "test"}, {"XDG_RUNTIME_DIR", folder_.path()}};
}

void Screen::input(const std::vector<std::string> &arguments) const
{
    std::vector<std::string> command = {XDOTOOL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Program tool(command, {{"DISPLAY", display_}});
    EXPECT_EQ(tool.finish(), 0) << tool.errors();
}

Colour Screen::colour(int x, int y) const
{
    return Dump(folder_ / "Xvfb_screen0").colour(x, y);
}

platform::Rect Screen::lit_part() const
{
    const Dump dump(folder_ / "Xvfb_screen0");
    platform::Rect part;
    for (int y = 0; y < SCREEN_HEIGHT; ++y) {
        for (int x = 0; x < SCREEN_WIDTH; ++x) {
            if (!(dump.colour(x, y) == Colour()))
                part = platform::united(part, {x, y, 1, 1});
        }
    }
    return part;
}

DesktopTest::DesktopTest()
{
    Screen::get().bring_pointer_in();
    variables_ = Screen::get().variables();
    variables_["DBUS_SESSION_BUS_ADDRESS"] = session_bus_.address();
    variables_["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + (folder_ / "nobody");
    variables_["OSTREL_DEMO_STATE_DIR"] = folder_ / "state";
    variables_["OSTREL_DEMO_RUNTIME_DIR"] = folder_ / "run";
    variables_["OSTREL_DEMO_TV_CONF"] = folder_ / "tv.conf";
    variables_["HOME"] = folder_.path();
    // A new home would have every program look through all plugins of the media system.
    variables_["GST_REGISTRY_1_0"] = std::string(TEST_APP) + ".gstreamer-registry";
    write_settings("[panel]\nrotator = true\nturning_time_s = 0.1\n");
}

std::unique_ptr<Program> DesktopTest::start(const std::vector<std::string> &arguments,
                                            const Program::Variables &more)
{
    std::vector<std::string> command = {TEST_APP};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Program::Variables variables = variables_;
    for (const auto &[name, value] : more)
        variables[name] = value;
    return std::make_unique<Program>(command, variables);
}

std::unique_ptr<Program> DesktopTest::start_and_show(const Program::Variables &more)
{
    auto app = start({}, more);
    EXPECT_TRUE(app->hears("visibility 1")) << app->errors();
    return app;
}

bool DesktopTest::gets_keyboard(Program &app)
{
    app.say("keyboard");
    return app.hears("keyboard");
}

int DesktopTest::quit(Program &app)
{
    app.say("quit");
    return app.finish();
}

void DesktopTest::write_settings(const std::string &text) const
{
    store_test::write_file(folder_ / "tv.conf", text);
}

std::string DesktopTest::stored_rotation_state() const
{
    return store_test::read_file(folder_ / "state/db/sysman/rotation_state");
}

} // namespace desktop_test
