/**
 * The set's side of the model: what the set is, what it would have been asked to do, and what the
 * platform objects do with that. The player's side, which only knows these operations, is model.h.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "steps.h"
#include "transcript.h"

namespace model {

inline constexpr char DEMO_MODE[] = "db/ostrel-demo-player-tv/demo_mode";
inline constexpr char FILE_MODE[] = "db/ostrel-demo-player-tv/file_mode";
inline constexpr char AUTO_MODE[] = "db/ostrel-demo-player-tv/rotation_auto_mode";
inline constexpr char PORTRAIT_TIMER[] = "db/ostrel-demo-player-tv/portrait_timer";
inline constexpr char LANDSCAPE_TIMER[] = "db/ostrel-demo-player-tv/landscape_timer";
inline constexpr char STATUS[] = "memory/ostrel-demo-player-tv/playback_status";
inline constexpr char RELAUNCH_TIMER[] = "memory/usb-launcher-service/start_relaunch_timer";
inline constexpr char ROTATION_STATE[] = "db/sysman/rotation_state";
inline constexpr char USE_MODE[] = "db/menu/support/use_mode";

/** Index of a timer, or NONE. */
using TimerId = int;
inline constexpr TimerId NONE = -1;

/** What the player's timers are for. */
enum class Alarm { SlideShow, PhotoEnd, PopupGone, Disclaimer, TimedRotation, RotationDelay };

/** States of the media player, by the platform's numbers. */
enum class Video { None = 0, Idle = 1, Ready = 2, Playing = 3, Paused = 4 };

/** What the set is; steps change it, the player never does. */
struct Facts {
    bool window_prepared = true;
    bool has_rotator = false;
    int rotator_status = 0;
    bool has_disclaimer = false;
    bool direct_backlight = false;
    bool right_to_left = false;
    bool has_resources = true;
    std::string language = "en_US";
    std::vector<std::string> sticks;
    std::map<std::string, std::vector<std::string>> folders;
};

class ExpectedSet {
  public:
    Facts facts;
    std::map<std::string, int> config;
    int sound_route = 0;
    int exit_requests = 0;

    // What is registered with the set.
    bool pipe = false;
    bool key_handler = false;
    bool rotator_followed = false;
    bool follows_demo_mode = false;
    bool follows_use_mode = false;
    std::deque<std::string> untold; /**< followed keys that the player wrote itself */
    bool epop_blocked = false;
    int idlers = 0;

    std::deque<std::pair<int, int>> queue; /**< records on their way: event id and parameter */

    struct Timer {
        Alarm alarm;
        int64_t interval; /**< milliseconds */
        int64_t due;
        bool running;
    };
    std::vector<Timer> timers;
    int64_t now = 0;

    // The media player.
    bool player = false;
    bool completed_followed = false;
    bool interrupted_followed = false;
    bool errors_followed = false;
    bool subtitles_followed = false;
    Video video = Video::None;
    bool preparing = false;
    bool preparation_failed = false; /**< and so never ends well */
    bool looping = false;
    int video_rotation = 0;
    double rate = 1.0;
    std::string uri;
    std::string subtitle;

    // The picture library. The last picture is also known after its end.
    bool display_ready = false;
    bool picture = false;
    int picture_mark = 0;
    bool parse_followed = false;
    bool decode_followed = false;
    bool conflict_followed = false;

    /** What the player did in this step, as lines of the fake's transcript. */
    std::vector<std::string> calls;

    void begin(const Step &step);

    /** Notes a call. @return whether it succeeds. */
    template <typename... Args> bool call(const char *function, const Args &...args)
    {
        calls.push_back(fake::format_call(function, args...));
        return works(function);
    }
    /** Whether a call that only asks, or that is not compared, succeeds. */
    bool works(const char *function) const { return !step_.fails(function); }

    // Configuration, events, timers.
    bool read(const std::string &key, int &value) const;
    void write(const std::string &key, int value);
    void post(int id, int parameter);
    TimerId start_timer(int64_t milliseconds, Alarm alarm);
    /** Deletes a timer that runs, and forgets it. */
    void delete_timer(TimerId &timer);
    /** The timer that falls due first until then, or NONE. */
    TimerId next_due(int64_t until) const;
    void exit();

    // The media player: each call with the player's handle, and only in the states that fit.
    bool player_result(const char *function, std::initializer_list<Video> states = {}) const;
    template <typename... Args> void player_line(const char *function, const Args &...args)
    {
        if (player)
            call(function, args...);
        else
            call(function, fake::Raw{"null"}, args...);
    }
    bool set_uri(const std::string &new_uri);
    bool set_subtitle(const std::string &new_subtitle);
    bool prepare();
    void unprepare();
    bool start();
    void stop();
    bool pause();
    void set_rate(double new_rate);
    void set_looping(bool on);
    void set_video_rotation(int rotation);

    // What the set answers.
    bool has_rotator() const;
    bool shows_disclaimer() const;
    bool folder_opens(const std::string &path) const;
    /** Names in a folder that opens. */
    const std::vector<std::string> &files_of(const std::string &path) const;
    bool folder_exists(const std::string &path) const;

  private:
    bool take_file(const char *function, const std::string &path, std::string &file);

    Step step_;
};

} // namespace model
