#include "video_plane/video_plane.h"

#include <mutex>
#include <utility>

#include <Elementary.h>

#include "log/platform_log.h"
#include "panel/panel_model.h"
#include "video_plane/wayland_plane.h"

namespace platform {

namespace {

constexpr const char *DATA_KEY = "platform-video-plane";

bool windows_cover = true;

struct Latest {
    std::mutex mutex;
    std::weak_ptr<VideoPlane> plane;
    std::shared_ptr<WaylandPlane> staying; ///< of a window that has been deleted
    std::function<void()> when_shown;
};

Latest &latest()
{
    // Never destroyed: at the end of the process the connection that a plane needs is gone.
    static auto &latest = *new Latest;
    return latest;
}

/** What a window keeps of its plane. */
struct Attachment {
    std::shared_ptr<WaylandPlane> plane;
    PanelModel::Subscription size;
};

PlaneSize panel_size()
{
    const PanelModel &panel = PanelModel::get();
    return {panel.pixel_width(), panel.pixel_height(), panel.width(), panel.height()};
}

/** The panel's size, or the screen's as the window knows it where there is no model of a panel. */
PlaneSize size_for(const Evas_Object *window)
{
    PlaneSize size = panel_size();
    if (size.width <= 0 || size.height <= 0) {
        elm_win_screen_size_get(window, nullptr, nullptr, &size.width, &size.height);
        size.pixel_width = size.width;
        size.pixel_height = size.height;
    }
    return size;
}

void on_window_deleted(void *data, Evas *, Evas_Object *window, void *)
{
    const std::unique_ptr<Attachment> attachment(static_cast<Attachment *>(data));
    evas_object_data_del(window, DATA_KEY);
    // What is drawn in another window is on the screen for as long as that one.
    if (!elm_win_inlined_image_object_get(window)) {
        attachment->plane->close();
        return;
    }
    const std::lock_guard<std::mutex> lock(latest().mutex);
    latest().staying = attachment->plane;
}

} // namespace

std::shared_ptr<VideoPlane> VideoPlane::for_window(Evas_Object *window)
{
    if (!window)
        return nullptr;
    if (auto *known = static_cast<Attachment *>(evas_object_data_get(window, DATA_KEY)))
        return known->plane;

    auto plane = WaylandPlane::create(window, size_for(window));
    if (!plane)
        return nullptr;
    plane->set_covered(windows_cover);

    auto attachment = std::make_unique<Attachment>(
        Attachment{plane, PanelModel::get().on_size([plane] { plane->resize(panel_size()); })});
    evas_object_data_set(window, DATA_KEY, attachment.get());
    evas_object_event_callback_add(window, EVAS_CALLBACK_DEL, on_window_deleted,
                                   attachment.release());
    {
        const std::lock_guard<std::mutex> lock(latest().mutex);
        latest().plane = plane;
    }
    PLATFORM_LOGI("video plane", "made, %d x %d", plane->width(), plane->height());
    return plane;
}

void VideoPlane::set_covered(bool covered)
{
    windows_cover = covered;
    if (const auto plane = std::dynamic_pointer_cast<WaylandPlane>(current()))
        plane->set_covered(covered);
}

void VideoPlane::outer_window_gone()
{
    std::shared_ptr<WaylandPlane> plane;
    {
        const std::lock_guard<std::mutex> lock(latest().mutex);
        plane = std::exchange(latest().staying, {});
    }
    if (plane)
        plane->close();
}

void VideoPlane::call_when_shown(std::function<void()> callback)
{
    const std::lock_guard<std::mutex> lock(latest().mutex);
    latest().when_shown = std::move(callback);
}

void VideoPlane::tell_shown()
{
    std::function<void()> callback;
    {
        const std::lock_guard<std::mutex> lock(latest().mutex);
        callback = std::exchange(latest().when_shown, {});
    }
    if (callback)
        callback();
}

std::shared_ptr<VideoPlane> VideoPlane::current()
{
    const std::lock_guard<std::mutex> lock(latest().mutex);
    return latest().plane.lock();
}

} // namespace platform
