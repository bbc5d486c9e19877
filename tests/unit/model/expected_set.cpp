#include "expected_set.h"

#include <algorithm>

namespace model {

using fake::Raw;

namespace {

// As a file system sees it: repeated slashes, and one at the end, make no difference.
std::string normal(const std::string &path)
{
    std::string result;
    for (const char character : path + (path.empty() ? "" : "/")) {
        if (character != '/' || result.empty() || result.back() != '/')
            result += character;
    }
    return result;
}

} // namespace

void ExpectedSet::begin(const Step &step)
{
    step_ = step;
    calls.clear();
}

bool ExpectedSet::read(const std::string &key, int &value) const
{
    const auto found = config.find(key);
    if (!works("vconf_get_int") || found == config.end())
        return false;
    value = found->second;
    return true;
}

void ExpectedSet::write(const std::string &key, int value)
{
    if (!call("vconf_set_int", key, value))
        return;
    config[key] = value;
    const bool followed =
        (key == DEMO_MODE && follows_demo_mode) || (key == USE_MODE && follows_use_mode);
    if (followed && std::find(untold.begin(), untold.end(), key) == untold.end())
        untold.push_back(key);
}

void ExpectedSet::post(int id, int parameter)
{
    if (!pipe)
        return;
    if (call("ecore_pipe_write", id, parameter))
        queue.emplace_back(id, parameter);
}

TimerId ExpectedSet::start_timer(int64_t milliseconds, Alarm alarm)
{
    if (!call("ecore_timer_add", static_cast<double>(milliseconds) / 1000.0, Raw{"data"}))
        return NONE;
    timers.push_back({alarm, milliseconds, now + milliseconds, true});
    return static_cast<TimerId>(timers.size()) - 1;
}

void ExpectedSet::delete_timer(TimerId &timer)
{
    if (timer == NONE)
        return;
    call("ecore_timer_del", Raw{"timer"});
    timers[static_cast<size_t>(timer)].running = false;
    timer = NONE;
}

TimerId ExpectedSet::next_due(int64_t until) const
{
    TimerId next = NONE;
    int64_t earliest = until + 1;
    for (size_t i = 0; i < timers.size(); ++i) {
        if (timers[i].running && timers[i].due < earliest) {
            earliest = timers[i].due;
            next = static_cast<TimerId>(i);
        }
    }
    return next;
}

void ExpectedSet::exit()
{
    call("ui_app_exit");
    ++exit_requests;
}

bool ExpectedSet::player_result(const char *function, std::initializer_list<Video> states) const
{
    const bool fits =
        states.size() == 0 || std::find(states.begin(), states.end(), video) != states.end();
    return works(function) && player && fits;
}

bool ExpectedSet::take_file(const char *function, const std::string &path, std::string &file)
{
    player_line(function, path);
    if (!player_result(function, {Video::Idle}) || preparing)
        return false;
    file = path;
    return true;
}

bool ExpectedSet::set_uri(const std::string &new_uri)
{
    return take_file("player_set_uri", new_uri, uri);
}

bool ExpectedSet::set_subtitle(const std::string &new_subtitle)
{
    return take_file("player_set_subtitle_path", new_subtitle, subtitle);
}

bool ExpectedSet::prepare()
{
    player_line("player_prepare_async", Raw{"data"});
    if (!player_result("player_prepare_async", {Video::Idle}) || uri.empty() || preparing)
        return false;
    preparing = true;
    return true;
}

void ExpectedSet::unprepare()
{
    player_line("player_unprepare");
    if (!player_result("player_unprepare"))
        return;
    preparing = preparation_failed = false;
    uri.clear();
    subtitle.clear();
    rate = 1.0;
    video = Video::Idle;
}

bool ExpectedSet::start()
{
    player_line("player_start");
    if (!player_result("player_start", {Video::Ready, Video::Playing, Video::Paused}))
        return false;
    video = Video::Playing;
    return true;
}

void ExpectedSet::stop()
{
    player_line("player_stop");
    if (player_result("player_stop", {Video::Ready, Video::Playing, Video::Paused})) {
        video = Video::Ready;
        rate = 1.0;
    }
}

bool ExpectedSet::pause()
{
    player_line("player_pause");
    if (!player_result("player_pause", {Video::Playing}))
        return false;
    video = Video::Paused;
    return true;
}

void ExpectedSet::set_rate(double new_rate)
{
    player_line("player_set_playback_rate", new_rate);
    if (player_result("player_set_playback_rate", {Video::Ready, Video::Playing, Video::Paused}))
        rate = new_rate;
}

void ExpectedSet::set_looping(bool on)
{
    player_line("player_set_looping", on);
    if (player_result("player_set_looping"))
        looping = on;
}

void ExpectedSet::set_video_rotation(int rotation)
{
    player_line("player_set_display_rotation", rotation);
    if (player_result("player_set_display_rotation"))
        video_rotation = rotation;
}

bool ExpectedSet::has_rotator() const
{
    return facts.has_rotator && facts.rotator_status >= 0 && works("display_rotator_get_status");
}

bool ExpectedSet::shows_disclaimer() const
{
    return facts.has_disclaimer && works("system_info_get_custom_bool");
}

bool ExpectedSet::folder_opens(const std::string &path) const
{
    return works("opendir") && facts.folders.count(normal(path)) != 0;
}

const std::vector<std::string> &ExpectedSet::files_of(const std::string &path) const
{
    return facts.folders.at(normal(path));
}

bool ExpectedSet::folder_exists(const std::string &path) const
{
    return works("stat") && facts.folders.count(normal(path)) != 0;
}

} // namespace model
