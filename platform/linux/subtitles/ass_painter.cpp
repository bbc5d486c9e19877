#include "subtitles/ass_painter.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/orientation.h"
#include "log/platform_log.h"
#include "subtitles/ass_adjust.h"
#include "subtitles/ass_text.h"

namespace platform {

namespace {

constexpr int LAST_LOGGED_LEVEL = 4; // libass counts from 0, fatal, to 7; 4 is information
constexpr int GLYPH_CACHE_COUNT = 2000;
constexpr int BITMAP_CACHE_MEGABYTES = 32;

// What a script's coordinates count in when it does not say.
constexpr int DEFAULT_WIDTH = 384;
constexpr int DEFAULT_HEIGHT = 288;

void route_ass_log(int level, const char *format, va_list arguments, void *)
{
    if (level > LAST_LOGGED_LEVEL)
        return;
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    PLATFORM_LOGD("subtitles", "libass: %s", line);
}

} // namespace

std::unique_ptr<AssPainter> AssPainter::create(const AssScript &script, const StopRequest &stop)
{
    std::unique_ptr<AssPainter> painter(new AssPainter);
    return painter->start(script, stop) ? std::move(painter) : nullptr;
}

bool AssPainter::start(const AssScript &script, const StopRequest &stop)
{
    library_.reset(ass_library_init());
    if (!library_)
        return false;
    ass_set_message_cb(library_.get(), &route_ass_log, nullptr);
    renderer_.reset(ass_renderer_init(library_.get()));
    track_.reset(ass_new_track(library_.get()));
    if (!renderer_ || !track_)
        return false;
    ass_set_cache_limits(renderer_.get(), GLYPH_CACHE_COUNT, BITMAP_CACHE_MEGABYTES);
    ass_set_fonts(renderer_.get(), nullptr, "sans-serif", ASS_FONTPROVIDER_AUTODETECT, nullptr, 1);

    own_styles_ = script.own_styles;
    std::string header = script.header;
    ass_process_codec_private(track_.get(), header.data(), static_cast<int>(header.size()));
    ass_set_check_readorder(track_.get(), 0);
    // Brackets that face the right way in right-to-left text. Scripts with own styles were laid out
    // for players without that.
    if (!own_styles_)
        ass_track_set_feature(track_.get(), ASS_FEATURE_BIDI_BRACKETS, 1);
    const double largest_size = 2.0 * (track_->PlayResY > 0 ? track_->PlayResY : DEFAULT_HEIGHT);
    bound_style_sizes(*track_, largest_size);

    for (const AssEvent &event : script.events) {
        if (is_stopped(stop))
            return false;
        std::string chunk = with_bounded_sizes(event.chunk, largest_size);
        if (!own_styles_)
            chunk = with_break_places(chunk);
        ass_process_chunk(track_.get(), chunk.data(), static_cast<int>(chunk.size()),
                          event.start_ms, event.duration_ms);
        animated_ = animated_ || event.has_effect() || is_animated(event.chunk);
        changes_.push_back(event.start_ms);
        changes_.push_back(event.start_ms + event.duration_ms);
    }
    std::sort(changes_.begin(), changes_.end());
    return true;
}

const Overlay &AssPainter::overlay_at(int64_t position_ms, int width, int height, int degrees)
{
    const auto index =
        std::upper_bound(changes_.begin(), changes_.end(), position_ms) - changes_.begin();
    const bool same_picture = width == width_ && height == height_ && degrees == degrees_;
    if (same_picture && index == change_index_ && !animated_)
        return overlay_;

    if (!same_picture) {
        width_ = width;
        height_ = height;
        degrees_ = degrees;
        const Size upright = Orientation::clockwise(degrees).of({width, height});
        fit_to(upright.width, upright.height);
    }
    int changed = 0;
    const ASS_Image *images =
        ass_render_frame(renderer_.get(), track_.get(), position_ms, &changed);
    if (changed != 0 || !same_picture || change_index_ < 0)
        overlay_.compose(images, width, height, degrees);
    change_index_ = index;
    return overlay_;
}

void AssPainter::fit_to(int upright_width, int upright_height)
{
    ass_set_frame_size(renderer_.get(), upright_width, upright_height);
    ass_set_storage_size(renderer_.get(), upright_width, upright_height);
    if (own_styles_)
        fit_margins(upright_width, upright_height);
    else
        fit_plain_style(upright_width, upright_height);
}

/**
 * Sizes go by the picture's shorter side, so that a portrait panel has letters of the same size on
 * the wall as a landscape one, and lines that still hold a sentence.
 */
void AssPainter::fit_plain_style(int upright_width, int upright_height)
{
    // With coordinates of the picture's own shape the outline is as thick across as it is high.
    track_->PlayResY = DEFAULT_HEIGHT;
    track_->PlayResX =
        std::max(1, static_cast<int>(int64_t{DEFAULT_HEIGHT} * upright_width / upright_height));
    const double line = std::min(upright_width, upright_height) / 14.0;
    const double unit_y = static_cast<double>(upright_height) / track_->PlayResY;
    for (int i = 0; i < track_->n_styles; ++i) {
        ASS_Style &style = track_->styles[i];
        style.FontSize = line / unit_y;
        style.Outline = style.FontSize / 16;
        style.Shadow = style.FontSize / 32;
        style.MarginL = style.MarginR = static_cast<int>(track_->PlayResX * 0.06);
        style.MarginV = static_cast<int>(track_->PlayResY * 0.06);
    }
}

/**
 * A script made for landscape pictures goes, on an upright panel, where such a picture would be:
 * into the middle. Stretched over the panel, its places and sizes would not fit together.
 */
void AssPainter::fit_margins(int upright_width, int upright_height)
{
    const int script_width = track_->PlayResX > 0 ? track_->PlayResX : DEFAULT_WIDTH;
    const int script_height = track_->PlayResY > 0 ? track_->PlayResY : DEFAULT_HEIGHT;
    int margin = 0;
    if (upright_height > upright_width && script_width > script_height) {
        const auto picture_height =
            static_cast<int>(static_cast<int64_t>(upright_width) * script_height / script_width);
        margin = (upright_height - picture_height) / 2;
    }
    ass_set_margins(renderer_.get(), margin, margin, 0, 0);
}

} // namespace platform
