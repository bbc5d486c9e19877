// The set of the unit tests: it does nothing by itself, so what it owes is played here.

#include "platform.h"
#include "set_under_test.h"

namespace set_under_test {
namespace {

constexpr char GOOD_VIDEO[] = "/stick/good.mp4";
constexpr char MISSING_VIDEO[] = "/stick/missing.mp4";
constexpr char BROKEN_VIDEO[] = "/stick/broken.mp4";
constexpr char GOOD_PHOTO[] = "/stick/good.jpg";
constexpr char BROKEN_PHOTO[] = "/stick/broken.jpg";

/** Does one of the things that the real set would do next. @return false when there is none. */
bool do_next()
{
    fake::Platform &set = fake::platform();
    if (set.store.tell_next())
        return true;
    if (set.media.preparing() && !set.media.preparation_failed) {
        if (set.media.uri == GOOD_VIDEO)
            set.media.fire_prepared();
        else
            set.media.fire_error(PLAYER_ERROR_NOT_SUPPORTED_FILE);
        return true;
    }
    if (set.media.state == PLAYER_STATE_PLAYING && !set.media.looping) {
        set.media.fire_completed();
        return true;
    }
    switch (set.pictures.owed()) {
    case fake::Pictures::Owed::Parse:
        set.pictures.fire_parsed(set.pictures.path() == GOOD_PHOTO ? PICTREL_RESULT_PARSED
                                                                   : PICTREL_RESULT_PARSE_FAILED);
        return true;
    case fake::Pictures::Owed::Decode:
        set.pictures.fire_decoded(PICTREL_RESULT_DECODED);
        return true;
    case fake::Pictures::Owed::Nothing:
        break;
    }
    return false;
}

} // namespace

void begin()
{
    fake::reset();
}

void end() {}

bool goes_on_until(const std::function<bool()> &condition)
{
    while (!condition()) {
        if (!do_next())
            return false;
    }
    return true;
}

std::string good_video()
{
    return GOOD_VIDEO;
}

std::string broken_video()
{
    return BROKEN_VIDEO;
}

std::string missing_video()
{
    return MISSING_VIDEO;
}

std::string good_photo()
{
    return GOOD_PHOTO;
}

std::string broken_photo()
{
    return BROKEN_PHOTO;
}

void another_process_writes(const char *key, int value)
{
    fake::platform().store.change(key, value);
}

std::vector<std::string> plug_in(int sticks)
{
    std::vector<std::string> &plugged = fake::platform().storage.sticks;
    plugged.clear();
    for (int i = 0; i < sticks; i++)
        plugged.push_back("/media/stick" + std::to_string(i));
    return plugged;
}

} // namespace set_under_test
