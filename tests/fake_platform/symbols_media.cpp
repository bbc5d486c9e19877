// The media player and the still-picture library.

#include "platform.h"

namespace {

using fake::Raw;

fake::Platform &the_fake()
{
    return fake::platform();
}

fake::MediaPlayer &media()
{
    return the_fake().media;
}

// A missing handle shows in the transcript; otherwise there is only the one player.
template <typename... Args> void call(const char *function, player_h player, const Args &...args)
{
    if (player == nullptr)
        the_fake().call(function, Raw{"null"}, args...);
    else
        the_fake().call(function, args...);
}

template <typename... Args> void query(const char *function, player_h player, const Args &...args)
{
    if (player == nullptr)
        the_fake().query(function, Raw{"null"}, args...);
    else
        the_fake().query(function, args...);
}

int result(const char *function, player_h player, std::initializer_list<player_state_e> states = {})
{
    return media().result(function, player, states);
}

// A call that the player takes in any state.
template <typename... Args> int told(const char *function, player_h player, const Args &...args)
{
    call(function, player, args...);
    return result(function, player);
}

template <typename Callback>
int follow(const char *function, player_h player, Callback callback, void *user_data,
           Callback &follower, void *&follower_data)
{
    const int failed = told(function, player, static_cast<const void *>(user_data));
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    follower = callback;
    follower_data = user_data;
    return PLAYER_ERROR_NONE;
}

// The player takes a file while it is idle and prepares none.
int take_file(const char *function, player_h player, const char *path, std::string &file)
{
    call(function, player, path);
    int failed = result(function, player, {PLAYER_STATE_IDLE});
    if (failed == PLAYER_ERROR_NONE && media().preparing())
        failed = PLAYER_ERROR_INVALID_STATE;
    if (failed == PLAYER_ERROR_NONE)
        file = path;
    return failed;
}

// What only a player with a file at hand does.
constexpr std::initializer_list<player_state_e> PREPARED = {
    PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED};

template <typename... Args>
int told_picture(const char *function, _pictrel_s *picture, const Args &...args)
{
    the_fake().call(function, static_cast<const void *>(picture), args...);
    const bool alive = the_fake().registry.check(function, picture);
    return the_fake().script.result(function, alive ? 0 : -1);
}

} // namespace

int player_create(player_h *player)
{
    the_fake().call("player_create");
    return media().create(player);
}

int player_destroy(player_h player)
{
    call("player_destroy", player);
    return media().destroy(player);
}

int player_set_completed_cb(player_h player, player_completed_cb callback, void *user_data)
{
    return follow("player_set_completed_cb", player, callback, user_data, media().completed,
                  media().completed_data);
}

int player_set_interrupted_cb(player_h player, player_interrupted_cb callback, void *user_data)
{
    return follow("player_set_interrupted_cb", player, callback, user_data, media().interrupted,
                  media().interrupted_data);
}

int player_set_error_cb(player_h player, player_error_cb callback, void *user_data)
{
    return follow("player_set_error_cb", player, callback, user_data, media().error,
                  media().error_data);
}

int player_set_subtitle_updated_cb_ex(player_h player, player_subtitle_updated_cb_ex callback,
                                      void *user_data)
{
    return follow("player_set_subtitle_updated_cb_ex", player, callback, user_data,
                  media().subtitle, media().subtitle_data);
}

int player_set_uri(player_h player, const char *uri)
{
    return take_file("player_set_uri", player, uri, media().uri);
}

int player_set_subtitle_path(player_h player, const char *path)
{
    return take_file("player_set_subtitle_path", player, path, media().subtitle_path);
}

int player_set_display(player_h player, player_display_type_e type, Evas_Object *window)
{
    return told("player_set_display", player, type, static_cast<const void *>(window));
}

int player_set_display_rotation(player_h player, player_display_rotation_e rotation)
{
    const int failed = told("player_set_display_rotation", player, rotation);
    if (failed == PLAYER_ERROR_NONE)
        media().rotation = rotation;
    return failed;
}

int player_resize_video_render_rect(player_h player, int x, int y, int width, int height)
{
    return told("player_resize_video_render_rect", player, x, y, width, height);
}

int player_prepare_async(player_h player, player_prepared_cb callback, void *user_data)
{
    call("player_prepare_async", player, static_cast<const void *>(user_data));
    return media().prepare(player, callback, user_data);
}

int player_unprepare(player_h player)
{
    call("player_unprepare", player);
    return media().unprepare(player);
}

int player_start(player_h player)
{
    call("player_start", player);
    const int failed = result("player_start", player, PREPARED);
    if (failed == PLAYER_ERROR_NONE)
        media().state = PLAYER_STATE_PLAYING;
    return failed;
}

int player_stop(player_h player)
{
    call("player_stop", player);
    const int failed = result("player_stop", player, PREPARED);
    if (failed == PLAYER_ERROR_NONE) {
        media().state = PLAYER_STATE_READY;
        media().rate = 1.0F;
    }
    return failed;
}

int player_pause(player_h player)
{
    call("player_pause", player);
    const int failed = result("player_pause", player, {PLAYER_STATE_PLAYING});
    if (failed == PLAYER_ERROR_NONE)
        media().state = PLAYER_STATE_PAUSED;
    return failed;
}

int player_get_state(player_h player, player_state_e *state)
{
    query("player_get_state", player);
    const int failed = result("player_get_state", player);
    if (failed == PLAYER_ERROR_NONE)
        *state = media().state;
    return failed;
}

int player_set_looping(player_h player, bool looping)
{
    const int failed = told("player_set_looping", player, looping);
    if (failed == PLAYER_ERROR_NONE)
        media().looping = looping;
    return failed;
}

int player_set_playback_rate(player_h player, float rate)
{
    call("player_set_playback_rate", player, rate);
    if (rate == 0)
        return PLAYER_ERROR_INVALID_PARAMETER;
    const int failed = result("player_set_playback_rate", player, PREPARED);
    if (failed == PLAYER_ERROR_NONE)
        media().rate = rate;
    return failed;
}

int player_get_playback_rate(player_h player, float *rate)
{
    query("player_get_playback_rate", player);
    const int failed = result("player_get_playback_rate", player);
    if (failed == PLAYER_ERROR_NONE)
        *rate = media().rate;
    return failed;
}

int pictrel_init_display(Evas_Object *window)
{
    const int failed = the_fake().told("pictrel_init_display", static_cast<const void *>(window));
    if (failed == 0) {
        the_fake().pictures.display_ready = true;
        the_fake().hold("picture display");
    }
    return failed;
}

int pictrel_destroy_display(int *display)
{
    const int failed = the_fake().told("pictrel_destroy_display", *display);
    if (failed != 0)
        return failed;
    *display = 0;
    the_fake().pictures.display_ready = false;
    the_fake().release("picture display");
    return 0;
}

int pictrel_create_from_url(const char *path, _pictrel_s **picture)
{
    const int failed = the_fake().told("pictrel_create_from_url", path);
    if (failed == 0)
        *picture = the_fake().pictures.make(path);
    return failed;
}

int pictrel_destroy(_pictrel_s **picture)
{
    const int failed = the_fake().told("pictrel_destroy", static_cast<const void *>(*picture));
    the_fake().registry.kill("pictrel_destroy", *picture);
    if (*picture == the_fake().pictures.last())
        the_fake().pictures.owe(fake::Pictures::Owed::Nothing);
    *picture = nullptr;
    return failed;
}

int pictrel_set_window(_pictrel_s *picture, int display)
{
    return told_picture("pictrel_set_window", picture, display);
}

int pictrel_set_geometry_size(_pictrel_s *picture, int geometry)
{
    return told_picture("pictrel_set_geometry_size", picture, geometry);
}

int pictrel_add_event_callback(_pictrel_s *picture, pictrel_event_type_e type,
                               pictrel_event_cb callback, void *user_data)
{
    const int failed = told_picture("pictrel_add_event_callback", picture, type,
                                    static_cast<const void *>(user_data));
    if (failed == 0)
        the_fake().pictures.follow(picture, type, callback, user_data);
    return failed;
}

int pictrel_parse(_pictrel_s *picture)
{
    const int failed = told_picture("pictrel_parse", picture);
    if (failed == 0)
        the_fake().pictures.owe(fake::Pictures::Owed::Parse);
    return failed;
}

int pictrel_decode(_pictrel_s *picture, int flags)
{
    const int failed = told_picture("pictrel_decode", picture, flags);
    if (failed == 0)
        the_fake().pictures.owe(fake::Pictures::Owed::Decode);
    return failed;
}

int pictrel_render(_pictrel_s *picture)
{
    return told_picture("pictrel_render", picture);
}

int pictrel_set_mixer_render(_pictrel_s *picture, int on)
{
    return told_picture("pictrel_set_mixer_render", picture, on);
}

int pictrel_rotate(_pictrel_s *picture, int degrees)
{
    return told_picture("pictrel_rotate", picture, degrees);
}
