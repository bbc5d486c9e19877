#include "media_player/display_settings.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "panel/panel_model.h"

namespace platform {
namespace {

bool covers(const Rect &area, int width, int height)
{
    return area.x <= 0 && area.y <= 0 && area.x + area.width >= width &&
           area.y + area.height >= height;
}

Rect in_pixels(const Rect &area, double scale)
{
    const auto pixels = [scale](int units) { return static_cast<int>(std::lround(units * scale)); };
    return {pixels(area.x), pixels(area.y), pixels(area.width), pixels(area.height)};
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
    const Rect area = in_pixels(area_, PanelModel::get().scale());
    const bool whole = !confined_ || covers(area, width, height) || covers(area, height, width);
    view.area = whole ? Rect{0, 0, width, height} : clipped(area, width, height);
    return view;
}

} // namespace platform
