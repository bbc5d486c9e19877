// ostrel-demo-copy: copies what a USB stick brings along into the set.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "base/paths.h"
#include "content_copy.h"
#include "log/log_line.h"
#include "player_rules/content_rules.h"
#include "player_rules/launch_rules.h"
#include "progress.h"
#include "settings/settings.h"
#include "stop_signals.h"
#include "usb_storage/stick_content.h"
#include "usb_storage/usb_devices.h"

namespace {

enum ExitStatus { DONE = 0, NOT_COPIED = 1, BAD_COMMAND_LINE = 2 };

constexpr char USAGE[] =
    "Usage: ostrel-demo-copy [FROM [TO]]\n"
    "Replaces the demo's content by that of a USB stick, while the demo plays. Each copy is read "
    "back\n"
    "from the disk; when all are right, they take the place of the old content in one step.\n"
    "  FROM  a folder; default: the folder \"demo\" of the first stick that has something to play\n"
    "  TO    the folder to be replaced; default: /opt/data/demo_movie\n"
    "What is in TO and not in FROM is gone afterwards. There has to be room for both.\n";

std::atomic<bool> stop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void on_stop_signal(int)
{
    stop = true;
}

/** On a machine with the kiosk its player is the one whose content is copied. */
void go_by_the_kiosk()
{
    constexpr const char *CONF = "/etc/ostrel-demo-kiosk/tv.conf";
    constexpr int KEEP_THE_CALLERS = 0;
    if (access(CONF, F_OK) == 0)
        setenv("OSTREL_DEMO_TV_CONF", CONF, KEEP_THE_CALLERS);
}

std::string content_of_a_stick()
{
    const auto mounts = platform::usb_mount_paths({}).value_or(std::vector<std::string>());
    for (const std::string &found : platform::stick_contents(mounts)) {
        // A link could have any folder of the machine copied.
        if (!std::filesystem::is_symlink(platform::without_last_slashes(found)))
            return found;
    }
    throw demo_copy::CopyFailure(
        "no USB stick is plugged in that has a folder \"demo\" with something to play");
}

/** Where a panel has nothing to show, what the names begin with is the usual reason. */
void tell_for_which_panel(const std::vector<demo_copy::ContentFile> &files)
{
    const auto is_upright = [](const auto &file) {
        return platform::is_portrait_content(file.name);
    };
    if (std::none_of(files.begin(), files.end(), is_upright))
        std::printf("They are for a landscape screen: names for an upright one begin with %s.\n",
                    platform::PORTRAIT_PREFIX.data());
    else if (std::all_of(files.begin(), files.end(), is_upright))
        std::printf("They are for an upright screen: their names begin with %s.\n",
                    platform::PORTRAIT_PREFIX.data());
}

void copy(const std::string &from, const std::string &to)
{
    using namespace demo_copy;
    const ContentCopy content(from, platform::Settings::get().direct_backlight());
    std::printf("%zu files, %s, from %s to %s\n", content.files().size(),
                in_words(content.bytes()).c_str(), platform::visible_text(from).c_str(),
                platform::visible_text(to).c_str());
    for (const std::string &name : content.left_out())
        std::printf("Left out, for the demo does not play it: %s\n",
                    platform::visible_text(name).c_str());
    ProgressShow shown(content);
    std::string left;
    try {
        left = content.replace(to, stop, [&](const auto &progress) { shown.show(progress); });
    } catch (...) {
        shown.end();
        throw;
    }
    shown.end();
    std::printf("All files are copied and checked.\n");
    tell_for_which_panel(content.files());
    if (!left.empty())
        std::fprintf(stderr, "ostrel-demo-copy: %s\n", platform::visible_text(left).c_str());
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h")) {
        std::fputs(USAGE, stdout);
        return DONE;
    }
    if (arguments.size() > 2 || (!arguments.empty() && arguments[0][0] == '-')) {
        std::fputs(USAGE, stderr);
        return BAD_COMMAND_LINE;
    }
    go_by_the_kiosk();
    tools::catch_stop_signals(&on_stop_signal);
    try {
        copy(arguments.empty() ? content_of_a_stick() : arguments[0],
             arguments.size() < 2 ? platform::BUILT_IN_FOLDER : arguments[1]);
        return DONE;
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "ostrel-demo-copy: %s\nThe content is as it was.\n",
                     platform::visible_text(failure.what()).c_str());
        return NOT_COPIED;
    }
}
