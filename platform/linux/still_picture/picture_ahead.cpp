#include "still_picture/picture_ahead.h"

#include <chrono>
#include <new>
#include <utility>

#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "still_picture/compose.h"
#include "video_plane/video_plane.h"

namespace platform {

namespace {

// How soon a wait for a picture notices that it is cancelled.
constexpr auto LOOK_AFTER_CANCEL = std::chrono::milliseconds(20);

} // namespace

PictureAhead &PictureAhead::get()
{
    // Never destroyed: a picture that is being decoded when the process ends is left to the system.
    static auto &ahead = *new PictureAhead;
    return ahead;
}

void PictureAhead::join_lookahead()
{
    Lookahead::Opener opener;
    opener.open = [this](const PlayedItem &item) {
        if (const std::shared_ptr<VideoPlane> plane = VideoPlane::current())
            open(item.path, {plane->width(), plane->height()});
    };
    opener.drop = [this] { drop(); };
    Lookahead::get().set_opener(ContentKind::Photo, std::move(opener));
}

void PictureAhead::open(const std::string &path, const Size &panel)
{
    auto work = std::make_shared<Work>();
    work->path = path;
    work->panel = panel;
    // The thread holds its work alive, and may outlive everybody else who knows it.
    if (work->thread.post([work] { work->decode(); }))
        exchange(work);
    else
        drop();
}

void PictureAhead::wait_until_done()
{
    std::shared_ptr<Work> work;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        work = work_;
    }
    if (work)
        work->result.wait();
}

void PictureAhead::drop()
{
    exchange(nullptr);
}

std::shared_ptr<PictureAhead::Work> PictureAhead::exchange(std::shared_ptr<Work> next)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::swap(work_, next);
    if (next)
        next->thread.close();
    return next;
}

std::unique_ptr<DecodedPicture> PictureAhead::take(const std::string &path, const Size &panel,
                                                   JpegReader::Progress &progress)
{
    std::shared_ptr<Work> work;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        work = std::move(work_);
    }
    if (!work)
        return nullptr;
    if (work->path == path && work->panel == panel) {
        while (!progress.cancelled &&
               work->result.wait_for(LOOK_AFTER_CANCEL) != std::future_status::ready)
            progress.steps = work->progress.steps.load();
        if (!progress.cancelled) {
            std::unique_ptr<DecodedPicture> picture = work->result.get();
            if (picture && work->stamp == file_stamp(path))
                return picture;
        }
    }
    work->thread.close();
    return nullptr;
}

// What is wrong with the file is told when somebody wants it.
void PictureAhead::Work::decode()
{
    stamp = file_stamp(path);
    auto picture = std::make_unique<DecodedPicture>();
    try {
        JpegReader reader(progress);
        if (reader.open(path)) {
            picture->stored = reader.size();
            picture->orientation = reader.orientation();
            if (reader.decode(size_to_keep(picture->stored, panel), picture->image))
                picture->profile = reader.profile_use();
            else
                picture.reset();
        } else {
            picture.reset();
        }
    } catch (const std::bad_alloc &) {
        picture.reset();
    }
    promise.set_value(std::move(picture));
}

} // namespace platform
