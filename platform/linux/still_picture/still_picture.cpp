#include <new>

#include "base/orientation.h"
#include "log/platform_log.h"
#include "still_picture/picture.h"
#include "still_picture/picture_display.h"

using platform::PictureDisplay;
using platform::StillPicture;
using platform::VideoPlane;

namespace {

constexpr int DONE = 0;
constexpr int REFUSED = -1;
constexpr int THE_DISPLAY = 1;

StillPicture *of(_pictrel_s *picture)
{
    return static_cast<StillPicture *>(picture);
}

int result(bool done)
{
    return done ? DONE : REFUSED;
}

} // namespace

int pictrel_init_display(Evas_Object *window)
{
    std::shared_ptr<VideoPlane> plane = window ? VideoPlane::for_window(window) : nullptr;
    if (!plane)
        return REFUSED;
    PictureDisplay::get().use(std::move(plane));
    return DONE;
}

int pictrel_destroy_display(int *display)
{
    if (!display)
        return REFUSED;
    const bool known = *display == THE_DISPLAY && PictureDisplay::get().plane();
    PictureDisplay::get().use(nullptr);
    *display = 0;
    return result(known);
}

int pictrel_create_from_url(const char *path, _pictrel_s **picture)
{
    if (!picture)
        return REFUSED;
    *picture = nullptr;
    if (!path)
        return REFUSED;
    try {
        *picture = StillPicture::create(path);
    } catch (const std::bad_alloc &) {
        return REFUSED;
    }
    return DONE;
}

int pictrel_destroy(_pictrel_s **picture)
{
    if (!picture || !*picture)
        return REFUSED;
    of(*picture)->destroy();
    *picture = nullptr;
    return DONE;
}

int pictrel_set_window(_pictrel_s *picture, int display)
{
    const auto &plane = PictureDisplay::get().plane();
    if (!picture || display != THE_DISPLAY || !plane)
        return REFUSED;
    of(picture)->set_plane(plane);
    return DONE;
}

int pictrel_set_geometry_size(_pictrel_s *picture, int geometry)
{
    return result(picture && geometry == PICTREL_GEOMETRY_FIT);
}

int pictrel_add_event_callback(_pictrel_s *picture, pictrel_event_type_e type,
                               pictrel_event_cb callback, void *user_data)
{
    if (!picture || !callback || type < PICTREL_EVENT_PARSE ||
        type > PICTREL_EVENT_RESOURCE_CONFLICT)
        return REFUSED;
    of(picture)->set_callback(type, callback, user_data);
    return DONE;
}

int pictrel_parse(_pictrel_s *picture)
{
    return result(picture && of(picture)->parse());
}

int pictrel_decode(_pictrel_s *picture, int flags)
{
    return result(picture && flags == 0 && of(picture)->decode());
}

int pictrel_render(_pictrel_s *picture)
{
    return result(picture && of(picture)->render());
}

int pictrel_set_mixer_render(_pictrel_s *picture, int on)
{
    if (!picture || (on != 0 && on != 1))
        return REFUSED;
    of(picture)->set_mixer(on == 1);
    return DONE;
}

int pictrel_rotate(_pictrel_s *picture, int degrees)
{
    return result(picture && degrees != 0 && platform::is_quarter_turn(degrees) &&
                  of(picture)->rotate(degrees));
}
