#include "subtitle_fixture.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string_view>

#include "log/platform_log.h"

namespace {

struct LogLine {
    int priority;
    std::string text;
};
std::mutex log_mutex;
std::vector<LogLine> log_lines;

} // namespace

int __dlog_print(int, int priority, const char *, const char *format, ...)
{
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(log_mutex);
    log_lines.push_back({priority, line});
    return length;
}

Picture::Picture(int width, int height, uint32_t colour)
    : width_(width), height_(height), colour_(colour),
      pixels_(static_cast<size_t>(width) * static_cast<size_t>(height), colour)
{
}

bool Picture::draw(platform::SubtitleTrack &track, int64_t position_ms, int degrees)
{
    return track.draw(position_ms, reinterpret_cast<uint8_t *>(pixels_.data()), width_, height_,
                      width_ * 4, degrees);
}

uint32_t Picture::at(int x, int y) const
{
    return pixels_[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)];
}

int Picture::brightness(int x, int y) const
{
    const uint32_t pixel = at(x, y);
    return static_cast<int>((pixel >> 16 & 0xFF) + (pixel >> 8 & 0xFF) + (pixel & 0xFF));
}

int Picture::changed_count() const
{
    return static_cast<int>(std::count_if(pixels_.begin(), pixels_.end(),
                                          [this](uint32_t pixel) { return pixel != colour_; }));
}

int Picture::changed_in_column(int x) const
{
    int count = 0;
    for (int y = 0; y < height_; ++y)
        count += at(x, y) != colour_;
    return count;
}

Picture::Box Picture::changed_box() const
{
    Box box = {width_, height_, 0, 0};
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            if (at(x, y) == colour_)
                continue;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                   std::max(box.bottom, y + 1)};
        }
    }
    return box;
}

int Picture::bright_count(int brightness) const
{
    int count = 0;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x)
            count += this->brightness(x, y) >= brightness;
    }
    return count;
}

Picture Picture::turned_back(int degrees) const
{
    const bool lying = degrees == 90 || degrees == 270;
    Picture upright(lying ? height_ : width_, lying ? width_ : height_, colour_);
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            // A clockwise quarter turn carries the top left corner to the top right one.
            const int ux = degrees == 90    ? y
                           : degrees == 180 ? width_ - 1 - x
                           : degrees == 270 ? height_ - 1 - y
                                            : x;
            const int uy = degrees == 90    ? width_ - 1 - x
                           : degrees == 180 ? height_ - 1 - y
                           : degrees == 270 ? x
                                            : y;
            upright.pixels_[static_cast<size_t>(uy) * static_cast<size_t>(upright.width_) +
                            static_cast<size_t>(ux)] = at(x, y);
        }
    }
    return upright;
}

size_t Picture::fingerprint() const
{
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char *>(pixels_.data()), pixels_.size() * sizeof(uint32_t)});
}

SubtitleTest::SubtitleTest()
{
    char name[] = "/tmp/subtitles-XXXXXX";
    if (mkdtemp(name))
        folder_ = name;
    const std::lock_guard<std::mutex> lock(log_mutex);
    log_lines.clear();
}

SubtitleTest::~SubtitleTest()
{
    std::error_code ignored;
    if (!folder_.empty())
        std::filesystem::remove_all(folder_, ignored);
}

std::string SubtitleTest::write(const std::string &name, const std::string &content) const
{
    const std::string path = folder_ + "/" + name;
    std::ofstream file(path, std::ios::binary);
    file << content;
    EXPECT_TRUE(file.flush().good()) << path;
    return path;
}

std::unique_ptr<platform::SubtitleTrack> SubtitleTest::load(const std::string &name,
                                                            const std::string &content) const
{
    std::string error;
    auto track = platform::SubtitleTrack::load(write(name, content), error);
    EXPECT_NE(track, nullptr) << name << ": " << error;
    return track;
}

std::string SubtitleTest::refusal(const std::string &path) const
{
    std::string error;
    const auto track = platform::SubtitleTrack::load(path, error);
    EXPECT_EQ(track, nullptr) << path << " was taken";
    EXPECT_FALSE(error.empty()) << path << " was refused without a word";
    return error;
}

std::string SubtitleTest::text_at(const platform::SubtitleTrack &track, int64_t position_ms)
{
    const auto *cue = track.cue_at(position_ms);
    return cue ? cue->text : "(none)";
}

int SubtitleTest::log_lines_with(const std::string &text)
{
    const std::lock_guard<std::mutex> lock(log_mutex);
    return static_cast<int>(
        std::count_if(log_lines.begin(), log_lines.end(), [&text](const LogLine &line) {
            return line.text.find(text) != std::string::npos;
        }));
}

std::vector<std::string> SubtitleTest::complaints()
{
    const std::lock_guard<std::mutex> lock(log_mutex);
    std::vector<std::string> result;
    for (const LogLine &line : log_lines) {
        if (line.priority > DLOG_INFO)
            result.push_back(line.text);
    }
    return result;
}

std::string one_cue_srt(const std::string &text)
{
    return "1\n00:00:01,000 --> 00:00:03,000\n" + text + "\n";
}
