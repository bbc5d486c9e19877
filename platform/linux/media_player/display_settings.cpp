#include "media_player/display_settings.h"

#include <algorithm>
#include <utility>

#include "panel/panel_model.h"

namespace platform {
namespace {

bool covers(const Rect &area, int width, int height)
{
    return area.x <= 0 && area.y <= 0 && area.x + area.width >= width &&
           area.y + area.height >= height;
}

Rect clipped(const Rect &area, int width, int height)
{
    const int left = std::clamp(area.x, 0, width);
    const int top = std::clamp(area.y, 0, height);
    const int right = std::clamp(area.x + area.width, left, width);
    const int bottom = std::clamp(area.y + area.height, top, height);
    return {left, top, right - left, bottom - top};
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
    const int width = plane_->width();
    const int height = plane_->height();
    const bool whole = !confined_ || covers(area_, width, height) || covers(area_, height, width);
    view.area = whole ? Rect{0, 0, width, height} : clipped(area_, width, height);
    return view;
}

} // namespace platform
