#include "widget_extension/image_box.h"

#include <unistd.h>

#include "log/platform_log.h"

namespace platform {

Evas_Object *create_image_box(Evas_Object *parent)
{
    Evas_Object *image = elm_image_add(parent);
    if (!image)
        return nullptr;
    // The overlay is on the screen with the very frame that shows it, not when a thread is done.
    elm_image_preload_disabled_set(image, EINA_TRUE);
    elm_image_smooth_set(image, EINA_TRUE);
    elm_image_resizable_set(image, EINA_TRUE, EINA_TRUE);
    elm_object_focus_allow_set(image, EINA_FALSE);
    evas_object_pass_events_set(image, EINA_TRUE);
    return image;
}

void set_image_file(Evas_Object *image_box, const char *path)
{
    if (path && access(path, R_OK) == 0 && elm_image_file_set(image_box, path, nullptr))
        return;
    PLATFORM_LOGW("widget_extension", "no picture at %s", path ? path : "(no path)");
    elm_image_file_set(image_box, nullptr, nullptr);
}

void set_image_proportional(Evas_Object *image_box, bool proportional)
{
    elm_image_aspect_fixed_set(image_box, proportional ? EINA_TRUE : EINA_FALSE);
}

} // namespace platform
