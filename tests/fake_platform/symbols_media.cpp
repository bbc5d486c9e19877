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

int picture_result(const char *function, const _pictrel_s *picture)
{
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
    call("player_set_completed_cb", player, static_cast<const void *>(user_data));
    const int failed = result("player_set_completed_cb", player);
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    media().completed = callback;
    media().completed_data = user_data;
    return PLAYER_ERROR_NONE;
}

int player_set_interrupted_cb(player_h player, player_interrupted_cb callback, void *user_data)
{
    call("player_set_interrupted_cb", player, static_cast<const void *>(user_data));
    const int failed = result("player_set_interrupted_cb", player);
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    media().interrupted = callback;
    media().interrupted_data = user_data;
    return PLAYER_ERROR_NONE;
}

int player_set_error_cb(player_h player, player_error_cb callback, void *user_data)
{
    call("player_set_error_cb", player, static_cast<const void *>(user_data));
    const int failed = result("player_set_error_cb", player);
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    media().error = callback;
    media().error_data = user_data;
    return PLAYER_ERROR_NONE;
}

int player_set_subtitle_updated_cb_ex(player_h player, player_subtitle_updated_cb_ex callback,
                                      void *user_data)
{
    call("player_set_subtitle_updated_cb_ex", player, static_cast<const void *>(user_data));
    const int failed = result("player_set_subtitle_updated_cb_ex", player);
    if (failed != PLAYER_ERROR_NONE)
        return failed;
    media().subtitle = callback;
    media().subtitle_data = user_data;
    return PLAYER_ERROR_NONE;
}

int player_set_uri(player_h player, const char *uri)
{
    call("player_set_uri", player, uri);
    int failed = result("player_set_uri", player, {PLAYER_STATE_IDLE});
    if (failed == PLAYER_ERROR_NONE && media().preparing())
        failed = PLAYER_ERROR_INVALID_STATE;
    if (failed == PLAYER_ERROR_NONE)
        media().uri = uri;
    return failed;
}

int player_set_subtitle_path(player_h player, const char *path)
{
    call("player_set_subtitle_path", player, path);
    int failed = result("player_set_subtitle_path", player, {PLAYER_STATE_IDLE});
    if (failed == PLAYER_ERROR_NONE && media().preparing())
        failed = PLAYER_ERROR_INVALID_STATE;
    if (failed == PLAYER_ERROR_NONE)
        media().subtitle_path = path;
    return failed;
}

int player_set_display(player_h player, player_display_type_e type, Evas_Object *window)
{
    call("player_set_display", player, type, static_cast<const void *>(window));
    return result("player_set_display", player);
}

int player_set_display_rotation(player_h player, player_display_rotation_e rotation)
{
    call("player_set_display_rotation", player, rotation);
    const int failed = result("player_set_display_rotation", player);
    if (failed == PLAYER_ERROR_NONE)
        media().rotation = rotation;
    return failed;
}

int player_resize_video_render_rect(player_h player, int x, int y, int width, int height)
{
    call("player_resize_video_render_rect", player, x, y, width, height);
    return result("player_resize_video_render_rect", player);
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
    const int failed = result("player_start", player,
                              {PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED});
    if (failed == PLAYER_ERROR_NONE)
        media().state = PLAYER_STATE_PLAYING;
    return failed;
}

int player_stop(player_h player)
{
    call("player_stop", player);
    const int failed = result("player_stop", player,
                              {PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED});
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
    call("player_set_looping", player, looping);
    const int failed = result("player_set_looping", player);
    if (failed == PLAYER_ERROR_NONE)
        media().looping = looping;
    return failed;
}

int player_set_playback_rate(player_h player, float rate)
{
    call("player_set_playback_rate", player, rate);
    if (rate == 0)
        return PLAYER_ERROR_INVALID_PARAMETER;
    const int failed = result("player_set_playback_rate", player,
                              {PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED});
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
    the_fake().call("pictrel_init_display", static_cast<const void *>(window));
    const int failed = the_fake().script.result("pictrel_init_display");
    if (failed == 0) {
        the_fake().pictures.display_ready = true;
        the_fake().hold("picture display");
    }
    return failed;
}

int pictrel_destroy_display(int *display)
{
    the_fake().call("pictrel_destroy_display", *display);
    const int failed = the_fake().script.result("pictrel_destroy_display");
    if (failed != 0)
        return failed;
    *display = 0;
    the_fake().pictures.display_ready = false;
    the_fake().release("picture display");
    return 0;
}

int pictrel_create_from_url(const char *path, _pictrel_s **picture)
{
    the_fake().call("pictrel_create_from_url", path);
    const int failed = the_fake().script.result("pictrel_create_from_url");
    if (failed == 0)
        *picture = the_fake().pictures.make(path);
    return failed;
}

int pictrel_destroy(_pictrel_s **picture)
{
    the_fake().call("pictrel_destroy", static_cast<const void *>(*picture));
    const int failed = the_fake().script.result("pictrel_destroy");
    the_fake().registry.kill("pictrel_destroy", *picture);
    if (*picture == the_fake().pictures.last())
        the_fake().pictures.owe(fake::Pictures::Owed::Nothing);
    *picture = nullptr;
    return failed;
}

int pictrel_set_window(_pictrel_s *picture, int display)
{
    the_fake().call("pictrel_set_window", static_cast<const void *>(picture), display);
    return picture_result("pictrel_set_window", picture);
}

int pictrel_set_geometry_size(_pictrel_s *picture, int geometry)
{
    the_fake().call("pictrel_set_geometry_size", static_cast<const void *>(picture), geometry);
    return picture_result("pictrel_set_geometry_size", picture);
}

int pictrel_add_event_callback(_pictrel_s *picture, pictrel_event_type_e type,
                               pictrel_event_cb callback, void *user_data)
{
    the_fake().call("pictrel_add_event_callback", static_cast<const void *>(picture), type,
                    static_cast<const void *>(user_data));
    const int failed = picture_result("pictrel_add_event_callback", picture);
    if (failed == 0)
        the_fake().pictures.follow(picture, type, callback, user_data);
    return failed;
}

int pictrel_parse(_pictrel_s *picture)
{
    the_fake().call("pictrel_parse", static_cast<const void *>(picture));
    const int failed = picture_result("pictrel_parse", picture);
    if (failed == 0)
        the_fake().pictures.owe(fake::Pictures::Owed::Parse);
    return failed;
}

int pictrel_decode(_pictrel_s *picture, int flags)
{
    the_fake().call("pictrel_decode", static_cast<const void *>(picture), flags);
    const int failed = picture_result("pictrel_decode", picture);
    if (failed == 0)
        the_fake().pictures.owe(fake::Pictures::Owed::Decode);
    return failed;
}

int pictrel_render(_pictrel_s *picture)
{
    the_fake().call("pictrel_render", static_cast<const void *>(picture));
    return picture_result("pictrel_render", picture);
}

int pictrel_set_mixer_render(_pictrel_s *picture, int on)
{
    the_fake().call("pictrel_set_mixer_render", static_cast<const void *>(picture), on);
    return picture_result("pictrel_set_mixer_render", picture);
}

int pictrel_rotate(_pictrel_s *picture, int degrees)
{
    the_fake().call("pictrel_rotate", static_cast<const void *>(picture), degrees);
    return picture_result("pictrel_rotate", picture);
}
