#include "text_painter.h"

#include <algorithm>
#include <cstdarg>
#include <stdexcept>

namespace sample {

namespace {

void ignore_message(int, const char *, va_list, void *) {}

std::string header(int width, int height)
{
    return "[Script Info]\nScriptType: v4.00+\nWrapStyle: 2\nScaledBorderAndShadow: "
           "yes\nPlayResX: " +
           std::to_string(width) + "\nPlayResY: " + std::to_string(height) +
           "\n[V4+ Styles]\n"
           "Format: Name, Fontname, Fontsize, PrimaryColour, OutlineColour, BackColour, Bold, "
           "BorderStyle, Outline, Shadow, Alignment\n"
           "Style: Default,sans-serif,40,&H00FFFFFF,&H40000000,&H80000000,-1,1,2,0,5\n"
           "[Events]\n"
           "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";
}

void blend(Image &image, const ASS_Image &mask)
{
    const uint32_t colour = mask.color >> 8;
    const uint32_t opacity = 255 - (mask.color & 0xFF);
    const int bottom = std::min(mask.dst_y + mask.h, image.height);
    const int right = std::min(mask.dst_x + mask.w, image.width);
    for (int y = std::max(mask.dst_y, 0); y < bottom; ++y) {
        const unsigned char *cover =
            mask.bitmap + static_cast<ptrdiff_t>(y - mask.dst_y) * mask.stride;
        uint32_t *row = image.row(y);
        for (int x = std::max(mask.dst_x, 0); x < right; ++x) {
            const uint32_t weight = cover[x - mask.dst_x] * opacity;
            if (weight != 0)
                row[x] = mixed(row[x], colour, weight / (255.0 * 255.0));
        }
    }
}

} // namespace

TextPainter::TextPainter(int width, int height) : library_(ass_library_init())
{
    if (!library_)
        throw std::runtime_error("The text renderer cannot be started.");
    ass_set_message_cb(library_.get(), &ignore_message, nullptr);
    renderer_.reset(ass_renderer_init(library_.get()));
    track_.reset(ass_new_track(library_.get()));
    if (!renderer_ || !track_)
        throw std::runtime_error("The text renderer cannot be started.");
    ass_set_frame_size(renderer_.get(), width, height);
    ass_set_storage_size(renderer_.get(), width, height);
    ass_set_fonts(renderer_.get(), nullptr, "sans-serif", ASS_FONTPROVIDER_AUTODETECT, nullptr, 1);
    std::string script = header(width, height);
    ass_process_codec_private(track_.get(), script.data(), static_cast<int>(script.size()));
    ass_set_check_readorder(track_.get(), 0);

    Image probe(width, height);
    const std::string letter =
        "{\\pos(" + std::to_string(width / 2) + "," + std::to_string(height / 2) + ")}A";
    draw(probe, {letter});
    if (std::all_of(probe.pixels.begin(), probe.pixels.end(), [](uint32_t p) { return p == 0; }))
        throw std::runtime_error("No font was found; Debian's package fonts-noto-core has one.");
}

void TextPainter::draw(Image &image, const std::vector<std::string> &texts)
{
    ass_flush_events(track_.get());
    for (size_t i = 0; i < texts.size(); ++i) {
        std::string chunk =
            std::to_string(i) + "," + std::to_string(i) + ",Default,,0,0,0,," + texts[i];
        ass_process_chunk(track_.get(), chunk.data(), static_cast<int>(chunk.size()), 0, 1000);
    }
    for (const ASS_Image *mask = ass_render_frame(renderer_.get(), track_.get(), 0, nullptr); mask;
         mask = mask->next)
        blend(image, *mask);
}

} // namespace sample
