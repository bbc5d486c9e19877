/**
 * The fake media player and picture library: states and handles as the real ones keep them, results
 * told by the test.
 */
#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "media_player.h"
#include "still_picture.h"

namespace fake {

class MediaPlayer {
  public:
    player_state_e state = PLAYER_STATE_NONE;
    float rate = 1.0F;
    std::string uri;
    std::string subtitle_path;
    bool looping = false;
    player_display_rotation_e rotation = PLAYER_DISPLAY_ROTATION_NONE;

    /** The preparation under way ends well. */
    void fire_prepared();
    /** The file has played to its end. */
    void fire_completed();
    /** A failed preparation, or an unplayable sound track. */
    void fire_error(int code);
    void fire_interrupted(player_interrupted_code_e code);
    void fire_subtitle(unsigned long duration, const char *text);

    bool preparing() const { return prepared_ != nullptr; }

    /** The file could not be prepared; it stays so until it is let go. */
    bool preparation_failed = false;

    /** Called inside player_unprepare(), before it takes effect: another thread's turn. */
    std::function<void()> before_unprepare;

    // Behind the C functions.
    int create(player_h *player);
    int destroy(player_h player);
    /** What a call returns: an ordered failure, or an error for a state that does not fit. */
    int result(const char *function, player_h player, std::initializer_list<player_state_e> states);
    int prepare(player_h player, player_prepared_cb callback, void *data);
    int unprepare(player_h player);

    player_completed_cb completed = nullptr;
    void *completed_data = nullptr;
    player_interrupted_cb interrupted = nullptr;
    void *interrupted_data = nullptr;
    player_error_cb error = nullptr;
    void *error_data = nullptr;
    player_subtitle_updated_cb_ex subtitle = nullptr;
    void *subtitle_data = nullptr;

  private:
    player_prepared_cb prepared_ = nullptr;
    void *prepared_data_ = nullptr;
    std::vector<std::unique_ptr<int>> handles_;
};

class Pictures {
  public:
    /** Value of a picture's fourth field before anybody wrote it. */
    static constexpr int FRESH = 77;

    /** What the library was asked for and has not told yet. */
    enum class Owed { Nothing, Parse, Decode };

    /** The picture that was made last, also after it was released. */
    _pictrel_s *last() const;
    std::string path() const { return pictures_.empty() ? "" : pictures_.back()->path; }
    Owed owed() const { return owed_; }

    /** The library reports on the picture made last. */
    void fire(pictrel_event_type_e type, pictrel_event_result_e result);
    void fire_parsed(pictrel_event_result_e result) { fire(PICTREL_EVENT_PARSE, result); }
    void fire_decoded(pictrel_event_result_e result) { fire(PICTREL_EVENT_DECODE, result); }
    void fire_conflict(int result)
    {
        fire(PICTREL_EVENT_RESOURCE_CONFLICT, static_cast<pictrel_event_result_e>(result));
    }

    // Behind the C functions.
    _pictrel_s *make(const char *path);
    void follow(_pictrel_s *picture, pictrel_event_type_e type, pictrel_event_cb callback,
                void *data);
    void owe(Owed what) { owed_ = what; }
    bool display_ready = false;

  private:
    struct Follower {
        pictrel_event_cb callback = nullptr;
        void *data = nullptr;
    };
    struct Picture {
        _pictrel_s record;
        std::string path;
        std::array<Follower, 5> followers;
    };

    std::vector<std::unique_ptr<Picture>> pictures_;
    Owed owed_ = Owed::Nothing;
};

} // namespace fake
