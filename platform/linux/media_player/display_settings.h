/**
 * How the caller wants the picture shown: plane, turn and rectangle. Shared by the player and by
 * every file it has in hand, so that a change holds for the next frame. Any thread.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "base/geometry.h"
#include "video_plane/video_plane.h"

namespace platform {

/** The settings at one moment. */
struct DisplayView {
    std::shared_ptr<VideoPlane> plane;
    int rotation = 0;    ///< clockwise, as the caller told
    int panel_angle = 0; ///< clockwise, as the panel stands
    Rect area;           ///< part of the plane the picture is confined to
};

inline bool operator==(const DisplayView &one, const DisplayView &other)
{
    return one.plane == other.plane && one.rotation == other.rotation &&
           one.panel_angle == other.panel_angle && one.area == other.area;
}

class DisplaySettings {
  public:
    void set_plane(std::shared_ptr<VideoPlane> plane);
    bool has_plane() const;

    /** @param degrees 0, 90, 180 or 270, clockwise */
    void set_rotation(int degrees);

    /**
     * Confines the picture, in the units of the window. A rectangle that covers the panel, as it
     * hangs or turned by a quarter, means the whole panel: a caller on a turned panel tells the
     * size of its turned window.
     */
    void set_area(const Rect &area);

    DisplayView view() const;

  private:
    mutable std::mutex mutex_;
    std::shared_ptr<VideoPlane> plane_;
    int rotation_ = 0;
    bool confined_ = false;
    Rect area_;
};

} // namespace platform
