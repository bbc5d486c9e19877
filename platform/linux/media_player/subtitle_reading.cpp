#include "media_player/subtitle_reading.h"

#include <utility>

namespace platform {

void SubtitleReading::want(const std::string &path)
{
    path_ = path;
    // One that is still being read must not keep the reader.
    if (std::exchange(pending_, false))
        reader_.emplace(THREAD);
}

bool SubtitleReading::begin(SubtitleLoad load, Deliver deliver)
{
    if (path_.empty() || path_ == begun_)
        return true;
    begun_ = path_;
    stamp_ = file_stamp(path_);
    pending_ = reader_->post([path = path_, load = std::move(load), deliver = std::move(deliver),
                              &stopping = reader_->stopping()] {
        std::string error;
        const std::shared_ptr<SubtitleTrack> track =
            load(path, error, [&stopping] { return stopping.load(); });
        deliver(path, track, error);
    });
    return pending_;
}

bool SubtitleReading::accept(const std::string &path)
{
    return path == path_ && std::exchange(pending_, false);
}

bool SubtitleReading::has_changed(const std::string &path) const
{
    return !path.empty() && path == begun_ && stamp_ != file_stamp(path);
}

void SubtitleReading::give_up()
{
    pending_ = false;
    limit_.reset();
    reader_->close();
}

} // namespace platform
