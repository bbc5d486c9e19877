#include "video_plane/video_plane.h"

#include <Elementary.h>

#include "log/platform_log.h"
#include "panel/panel_model.h"
#include "video_plane/wayland_plane.h"

namespace platform {

namespace {

constexpr const char *kDataKey = "platform-video-plane";

std::weak_ptr<VideoPlane> &latest()
{
    static std::weak_ptr<VideoPlane> plane;
    return plane;
}

/** What a window keeps of its plane. */
struct Attachment {
    std::shared_ptr<WaylandPlane> plane;
};

void on_window_deleted(void *data, Evas *, Evas_Object *window, void *)
{
    const std::unique_ptr<Attachment> attachment(static_cast<Attachment *>(data));
    evas_object_data_del(window, kDataKey);
    attachment->plane->close();
}

} // namespace

std::shared_ptr<VideoPlane> VideoPlane::for_window(Evas_Object *window)
{
    if (!window)
        return nullptr;
    if (auto *known = static_cast<Attachment *>(evas_object_data_get(window, kDataKey)))
        return known->plane;

    int width = PanelModel::get().width();
    int height = PanelModel::get().height();
    if (width <= 0 || height <= 0)
        elm_win_screen_size_get(window, nullptr, nullptr, &width, &height);
    auto plane = WaylandPlane::create(window, width, height);
    if (!plane)
        return nullptr;

    auto attachment = std::make_unique<Attachment>(Attachment{plane});
    evas_object_data_set(window, kDataKey, attachment.get());
    evas_object_event_callback_add(window, EVAS_CALLBACK_DEL, on_window_deleted,
                                   attachment.release());
    latest() = plane;
    PLATFORM_LOGI("video plane", "made, %d x %d", width, height);
    return plane;
}

std::shared_ptr<VideoPlane> VideoPlane::current()
{
    return latest().lock();
}

} // namespace platform
