#include "media_player.h"

#include "log/platform_log.h"
#include "media_player/player.h"
#include "video_plane/video_plane.h"

struct player_s {
    std::shared_ptr<platform::Player> player;
};

int player_create(player_h *player)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    *player = new player_s{platform::Player::create()};
    return PLAYER_ERROR_NONE;
}

int player_destroy(player_h player)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->destroy();
    delete player;
    return PLAYER_ERROR_NONE;
}

int player_set_completed_cb(player_h player, player_completed_cb callback, void *user_data)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_completed_cb(callback, user_data);
    return PLAYER_ERROR_NONE;
}

int player_set_interrupted_cb(player_h player, player_interrupted_cb callback, void *user_data)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_interrupted_cb(callback, user_data);
    return PLAYER_ERROR_NONE;
}

int player_set_error_cb(player_h player, player_error_cb callback, void *user_data)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_error_cb(callback, user_data);
    return PLAYER_ERROR_NONE;
}

int player_set_subtitle_updated_cb_ex(player_h player, player_subtitle_updated_cb_ex callback,
                                      void *user_data)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_subtitle_cb(callback, user_data);
    return PLAYER_ERROR_NONE;
}

int player_set_uri(player_h player, const char *uri)
{
    if (!player || !uri || !*uri)
        return PLAYER_ERROR_INVALID_PARAMETER;
    return player->player->set_uri(uri);
}

int player_set_subtitle_path(player_h player, const char *path)
{
    if (!player || !path || !*path)
        return PLAYER_ERROR_INVALID_PARAMETER;
    return player->player->set_subtitle_path(path);
}

int player_set_display(player_h player, player_display_type_e type, Evas_Object *window)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    if (type == PLAYER_DISPLAY_TYPE_NONE) {
        player->player->set_plane(nullptr);
        return PLAYER_ERROR_NONE;
    }
    if (type != PLAYER_DISPLAY_TYPE_OVERLAY || !window)
        return PLAYER_ERROR_INVALID_PARAMETER;
    std::shared_ptr<platform::VideoPlane> plane = platform::VideoPlane::for_window(window);
    if (!plane) {
        PLATFORM_LOGW("player", "the window has no video plane yet");
        return PLAYER_ERROR_INVALID_OPERATION;
    }
    player->player->set_plane(std::move(plane));
    return PLAYER_ERROR_NONE;
}

int player_set_display_rotation(player_h player, player_display_rotation_e rotation)
{
    if (!player || rotation < PLAYER_DISPLAY_ROTATION_NONE ||
        rotation > PLAYER_DISPLAY_ROTATION_270)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_rotation(static_cast<int>(rotation) * 90);
    return PLAYER_ERROR_NONE;
}

int player_resize_video_render_rect(player_h player, int x, int y, int width, int height)
{
    constexpr int LARGEST = 1 << 20;
    if (!player || width <= 0 || height <= 0 || width > LARGEST || height > LARGEST ||
        x < -LARGEST || x > LARGEST || y < -LARGEST || y > LARGEST)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_area({x, y, width, height});
    return PLAYER_ERROR_NONE;
}

int player_prepare_async(player_h player, player_prepared_cb callback, void *user_data)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    return player->player->prepare_async(callback, user_data);
}

int player_unprepare(player_h player)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->unprepare();
    return PLAYER_ERROR_NONE;
}

int player_start(player_h player)
{
    return player ? player->player->start() : PLAYER_ERROR_INVALID_PARAMETER;
}

int player_stop(player_h player)
{
    return player ? player->player->stop() : PLAYER_ERROR_INVALID_PARAMETER;
}

int player_pause(player_h player)
{
    return player ? player->player->pause() : PLAYER_ERROR_INVALID_PARAMETER;
}

int player_get_state(player_h player, player_state_e *state)
{
    if (!player || !state)
        return PLAYER_ERROR_INVALID_PARAMETER;
    *state = player->player->state();
    return PLAYER_ERROR_NONE;
}

int player_set_looping(player_h player, bool looping)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    player->player->set_looping(looping);
    return PLAYER_ERROR_NONE;
}

int player_set_playback_rate(player_h player, float rate)
{
    if (!player)
        return PLAYER_ERROR_INVALID_PARAMETER;
    return player->player->set_rate(static_cast<double>(rate));
}

int player_get_playback_rate(player_h player, float *rate)
{
    if (!player || !rate)
        return PLAYER_ERROR_INVALID_PARAMETER;
    *rate = static_cast<float>(player->player->rate());
    return PLAYER_ERROR_NONE;
}
