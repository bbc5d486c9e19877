#include "app_framework/stand_in.h"

#include <memory>
#include <vector>

#include "base/orientation.h"
#include "panel/panel_model.h"
#include "standby_card/standby_card.h"
#include "unplayable_files/unplayable_files.h"
#include "video_plane/plane_drawing.h"
#include "video_plane/video_plane.h"

namespace platform {

namespace {

StandbyMessage message()
{
    StandbyMessage message;
    message.files = UnplayableFiles::get().all();
    if (!message.files.empty())
        message.kind = StandbyMessage::Kind::UnplayableFiles;
    return message;
}

} // namespace

bool StandIn::show(Evas_Object *window)
{
    const std::shared_ptr<VideoPlane> plane = VideoPlane::for_window(window);
    if (!plane)
        return false;
    const uint64_t presented = plane->statistics().presented;
    const PlaneBufferPtr buffer = plane->acquire();
    if (!buffer)
        return false;
    const Pixels out = pixels_of(*buffer);
    const int degrees = PanelModel::get().angle();
    const std::vector<uint32_t> picture =
        standby_picture(message(), Orientation::clockwise(degrees).of(out.size));
    if (picture.empty())
        return false;
    copy_turned(picture.data(), Orientation::clockwise(360 - degrees), out);
    if (!plane->present_stand_in(buffer, presented))
        return false;
    after_ = presented;
    return true;
}

void StandIn::refresh(Evas_Object *window)
{
    const std::shared_ptr<VideoPlane> plane = VideoPlane::current();
    if (plane && after_ == plane->statistics().presented)
        show(window);
}

} // namespace platform
