/** The plane that pictures are shown on. Main-loop thread only. */
#pragma once

#include <memory>

#include "video_plane/video_plane.h"

namespace platform {

class PictureDisplay {
  public:
    /** The one display. */
    static PictureDisplay &get()
    {
        static PictureDisplay display;
        return display;
    }

    /** Takes a plane, or none; a picture that has chosen the display keeps the plane it got. */
    void use(std::shared_ptr<VideoPlane> plane) { plane_ = std::move(plane); }

    const std::shared_ptr<VideoPlane> &plane() const { return plane_; }

  private:
    std::shared_ptr<VideoPlane> plane_;
};

} // namespace platform
