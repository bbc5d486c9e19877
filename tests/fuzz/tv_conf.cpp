// The file tv.conf, which staff write by hand.

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz.h"
#include "settings/tv_conf.h"

namespace {

/** A file with this content; the next call changes it. @return its path */
std::string file_with(const uint8_t *data, size_t size)
{
    static const int file = memfd_create("tv.conf", MFD_CLOEXEC);
    fuzz::require(ftruncate(file, 0) == 0 &&
                      pwrite(file, data, size, 0) == static_cast<ssize_t>(size),
                  "there is memory for the file");
    return "/proc/self/fd/" + std::to_string(file);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    platform::Settings settings;
    fuzz::require(platform::read_tv_conf(file_with(data, size), settings),
                  "a file of this size is read, whatever it holds");
    fuzz::require(settings.turning_time_s >= 0 && settings.turning_time_s <= 600,
                  "a turn takes ten minutes at most");
    fuzz::require(settings.first_rotation_state >= 0 && settings.first_rotation_state <= 3,
                  "the panel stands in one of four ways");
    fuzz::require(settings.sdr_white >= 80 && settings.sdr_white <= 1000, "white has its bounds");
    fuzz::require(settings.menu_orientation.empty() || settings.menu_orientation == "ltr" ||
                      settings.menu_orientation == "rtl",
                  "the menu has one of two directions");
    fuzz::require(settings.language.empty() || platform::is_language(settings.language),
                  "a language is one");
    for (const std::string &mount : settings.usb_mounts)
        fuzz::require(!mount.empty() && mount.front() == '/', "mount points are absolute");
    for (const auto &[from, to] : settings.keys)
        fuzz::require(!from.empty() && !to.empty(), "a key has a name on both sides");
    return 0;
}
