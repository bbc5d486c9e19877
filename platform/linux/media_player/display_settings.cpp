#include "media_player/display_settings.h"

#include <cmath>
#include <utility>

#include "panel/panel_model.h"

namespace platform {
namespace {

Rect in_pixels(const Rect &area, double scale)
{
    const auto pixels = [scale](int units) { return static_cast<int>(std::lround(units * scale)); };
    return {pixels(area.x), pixels(area.y), pixels(area.width), pixels(area.height)};
}

} // namespace

void DisplaySettings::set_plane(std::shared_ptr<VideoPlane> plane)
{
    std::shared_ptr<VideoPlane> former;
    const std::lock_guard<std::mutex> lock(mutex_);
    former = std::exchange(plane_, std::move(plane));
}

bool DisplaySettings::has_plane() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return plane_ != nullptr;
}

void DisplaySettings::set_rotation(int degrees)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    rotation_ = degrees;
}

void DisplaySettings::set_area(const Rect &area)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    confined_ = true;
    area_ = area;
}

DisplayView DisplaySettings::view() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    DisplayView view;
    view.plane = plane_;
    view.rotation = rotation_;
    view.panel_angle = PanelModel::get().angle();
    if (!plane_)
        return view;
    const Size plane = {plane_->width(), plane_->height()};
    const Rect area = in_pixels(area_, PanelModel::get().scale());
    const bool unconfined =
        !confined_ || area.covers(whole(plane)) || area.covers(whole(plane.turned()));
    view.area = unconfined ? whole(plane) : clipped(area, plane);
    return view;
}

} // namespace platform
