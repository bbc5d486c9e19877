#include "subtitles/subtitle_track.h"

#include <algorithm>
#include <vector>

#include "base/orientation.h"
#include "log/platform_log.h"
#include "subtitles/ass_painter.h"
#include "subtitles/ass_text.h"
#include "subtitles/cue_reader.h"
#include "subtitles/subtitle_file.h"
#include "subtitles/text_encoding.h"

namespace platform {

namespace {

constexpr int LARGEST_SIDE = 16384;

class AssSubtitleTrack final : public SubtitleTrack {
  public:
    AssSubtitleTrack(const AssScript &script, std::unique_ptr<AssPainter> painter)
        : painter_(std::move(painter))
    {
        for (const AssEvent &event : script.events) {
            std::string text = ass_to_plain(event.text());
            if (text.empty())
                continue;
            cues_.push_back({event.start_ms, event.duration_ms, std::move(text)});
            const int64_t end = event.start_ms + event.duration_ms;
            latest_ends_.push_back(latest_ends_.empty() ? end : std::max(latest_ends_.back(), end));
        }
    }

    bool draw(int64_t position_ms, uint8_t *pixels, int width, int height, int stride,
              int degrees) override
    {
        const bool good_size =
            width > 0 && height > 0 && width <= LARGEST_SIDE && height <= LARGEST_SIDE;
        if (!pixels || !is_quarter_turn(degrees) || !good_size || stride < width * 4)
            return false;
        const Overlay &overlay = painter_->overlay_at(position_ms, width, height, degrees);
        overlay.blend(pixels, stride);
        return !overlay.empty();
    }

    const Cue *cue_at(int64_t position_ms) const override
    {
        const auto after =
            std::upper_bound(cues_.begin(), cues_.end(), position_ms,
                             [](int64_t time, const Cue &cue) { return time < cue.start_ms; });
        auto index = static_cast<size_t>(after - cues_.begin());
        // The text that came last wins; the ends tell when no earlier one can still be up.
        while (index > 0 && latest_ends_[index - 1] > position_ms) {
            --index;
            if (cues_[index].start_ms + cues_[index].duration_ms > position_ms)
                return &cues_[index];
        }
        return nullptr;
    }

  private:
    std::unique_ptr<AssPainter> painter_;
    std::vector<Cue> cues_;            ///< by start
    std::vector<int64_t> latest_ends_; ///< the latest end among the cues up to each one
};

} // namespace

std::unique_ptr<SubtitleTrack> SubtitleTrack::load(const std::string &path, std::string &error,
                                                   const StopRequest &stop)
{
    const auto bytes = read_subtitle_file(path, error, stop);
    if (!bytes)
        return nullptr;
    std::string encoding;
    const auto text = text_to_utf8(*bytes, encoding);
    if (!text) {
        error = "The file is not a text file.";
        return nullptr;
    }
    const auto script = read_script(*text, lower_extension(path), error, stop);
    if (!script)
        return nullptr;
    auto painter = AssPainter::create(*script, stop);
    if (!painter) {
        error = is_stopped(stop) ? LOAD_STOPPED : "The subtitle renderer cannot be started.";
        return nullptr;
    }
    PLATFORM_LOGI("subtitles", "%zu texts read, format %s, encoding %s", script->events.size(),
                  script->format.c_str(), encoding.c_str());
    return std::make_unique<AssSubtitleTrack>(*script, std::move(painter));
}

} // namespace platform
