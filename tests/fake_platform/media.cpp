#include "media.h"

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "platform.h"

namespace fake {
namespace {

int checked(const char *function, player_h player)
{
    return platform().registry.check(function, player) ? PLAYER_ERROR_NONE
                                                       : PLAYER_ERROR_INVALID_PARAMETER;
}

} // namespace

void MediaPlayer::fire_prepared()
{
    ASSERT_NE(prepared_, nullptr) << "no preparation is under way";
    const player_prepared_cb callback = std::exchange(prepared_, nullptr);
    state = PLAYER_STATE_READY;
    callback(prepared_data_);
}

void MediaPlayer::fire_completed()
{
    ASSERT_NE(completed, nullptr) << "nobody follows the end of a file";
    state = PLAYER_STATE_READY;
    completed(completed_data);
}

void MediaPlayer::fire_error(int code)
{
    ASSERT_NE(error, nullptr) << "nobody follows errors";
    if (preparing() && code != PLAYER_ERROR_NOT_SUPPORTED_AUDIO_CODEC)
        preparation_failed = true;
    error(code, error_data);
}

void MediaPlayer::fire_interrupted(player_interrupted_code_e code)
{
    ASSERT_NE(interrupted, nullptr) << "nobody follows interruptions";
    interrupted(code, interrupted_data);
}

void MediaPlayer::fire_subtitle(unsigned long duration, const char *text)
{
    ASSERT_NE(subtitle, nullptr) << "nobody follows subtitles";
    std::string copy = text;
    subtitle(duration, copy.data(), 0, 0, nullptr, subtitle_data);
}

int MediaPlayer::create(player_h *player)
{
    const int failed = platform().script.result("player_create");
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    handles_.push_back(std::make_unique<int>());
    *player = reinterpret_cast<player_h>(handles_.back().get());
    platform().registry.add(*player, "player");
    state = PLAYER_STATE_IDLE;
    return PLAYER_ERROR_NONE;
}

int MediaPlayer::destroy(player_h player)
{
    const int failed =
        platform().script.result("player_destroy", checked("player_destroy", player));
    platform().registry.kill("player_destroy", player);
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    state = PLAYER_STATE_NONE;
    prepared_ = nullptr;
    preparation_failed = false;
    completed = nullptr;
    interrupted = nullptr;
    error = nullptr;
    subtitle = nullptr;
    return PLAYER_ERROR_NONE;
}

int MediaPlayer::result(const char *function, player_h player,
                        std::initializer_list<player_state_e> states)
{
    const bool fits =
        states.size() == 0 || std::find(states.begin(), states.end(), state) != states.end();
    int ok = checked(function, player);
    if (ok == PLAYER_ERROR_NONE && !fits)
        ok = PLAYER_ERROR_INVALID_STATE;
    return platform().script.result(function, ok);
}

int MediaPlayer::prepare(player_h player, player_prepared_cb callback, void *data)
{
    const int failed = result("player_prepare_async", player, {PLAYER_STATE_IDLE});
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    if (uri.empty() || preparing())
        return PLAYER_ERROR_INVALID_OPERATION;
    prepared_ = callback;
    prepared_data_ = data;
    return PLAYER_ERROR_NONE;
}

int MediaPlayer::unprepare(player_h player)
{
    if (before_unprepare)
        std::exchange(before_unprepare, nullptr)();
    const int failed = result("player_unprepare", player, {});
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    prepared_ = nullptr;
    preparation_failed = false;
    uri.clear();
    subtitle_path.clear();
    rate = 1.0F;
    state = PLAYER_STATE_IDLE;
    return PLAYER_ERROR_NONE;
}

_pictrel_s *Pictures::last() const
{
    return pictures_.empty() ? nullptr : &pictures_.back()->record;
}

void Pictures::fire(pictrel_event_type_e type, pictrel_event_result_e result)
{
    ASSERT_FALSE(pictures_.empty()) << "there is no picture";
    Picture &picture = *pictures_.back();
    ASSERT_TRUE(platform().registry.alive(&picture.record)) << "the picture was released";
    const Follower follower = picture.followers[type];
    ASSERT_NE(follower.callback, nullptr) << "nobody follows events of kind " << type;
    owed_ = Owed::Nothing;
    void *data = follower.data == nullptr ? picture.record.user_data : follower.data;
    follower.callback(data, type, result);
}

_pictrel_s *Pictures::make(const char *path)
{
    pictures_.push_back(std::make_unique<Picture>());
    Picture &picture = *pictures_.back();
    picture.record = {nullptr, 0, 0, FRESH};
    owed_ = Owed::Nothing;
    picture.path = path;
    platform().registry.add(&picture.record, "picture");
    return &picture.record;
}

void Pictures::follow(_pictrel_s *picture, pictrel_event_type_e type, pictrel_event_cb callback,
                      void *data)
{
    for (const auto &entry : pictures_) {
        if (&entry->record == picture)
            entry->followers[type] = {callback, data};
    }
}

} // namespace fake
