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
    read_.clear();
    wanted_stamp_.reset();
    pending_ = reader_->post([path = path_, load = std::move(load), deliver = std::move(deliver),
                              &stopping = reader_->stopping()] {
        Result result;
        result.path = path;
        result.stamp = file_stamp(path);
        result.track = load(path, result.error, [&stopping] { return stopping.load(); });
        deliver(result);
    });
    return pending_;
}

bool SubtitleReading::accept(const Result &result)
{
    if (result.path != path_ || !std::exchange(pending_, false))
        return false;
    if (wanted_stamp_ && *wanted_stamp_ != result.stamp) {
        begun_.clear();
        return false;
    }
    read_ = result.path;
    stamp_ = result.stamp;
    return true;
}

bool SubtitleReading::is_outdated(const std::string &path, const std::optional<FileStamp> &stamp)
{
    if (pending_ && path == begun_)
        wanted_stamp_ = stamp;
    return !path.empty() && path == read_ && stamp_ != stamp;
}

void SubtitleReading::give_up()
{
    pending_ = false;
    limit_.reset();
    reader_->close();
}

} // namespace platform
