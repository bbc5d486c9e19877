/** A display in memory and an application that notes every event, for the tests of one picture. */
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "still_picture.h"

#include "still_picture/jpeg_maker.h"
#include "still_picture/picture_display.h"
#include "store_support/scratch.h"
#include "unplayable_files/unplayable_files.h"
#include "video_plane/video_plane.h"

namespace platform_test {

using Clock = std::chrono::steady_clock;
using Event = std::pair<pictrel_event_type_e, pictrel_event_result_e>;

constexpr Event PARSED{PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSED};
constexpr Event PARSE_FAILED{PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSE_FAILED};
constexpr Event DECODED{PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODED};
constexpr Event DECODE_FAILED{PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODE_FAILED};
constexpr Event RENDERED{PICTREL_EVENT_RENDER, PICTREL_RESULT_DONE};
constexpr Event TURNED{PICTREL_EVENT_ROTATE, PICTREL_RESULT_DONE};
constexpr Event RESOURCE_LOST{PICTREL_EVENT_RESOURCE_CONFLICT, PICTREL_RESULT_RESOURCE_LOST};

/** Gets the events on whatever thread they come. */
class Application {
  public:
    void subscribe(_pictrel_s *picture)
    {
        for (int type = PICTREL_EVENT_PARSE; type <= PICTREL_EVENT_RESOURCE_CONFLICT; ++type)
            EXPECT_EQ(pictrel_add_event_callback(picture, static_cast<pictrel_event_type_e>(type),
                                                 on_event, this),
                      0);
    }

    /** Waits until this many events have come, ten seconds at most, and gives them all. */
    std::vector<Event> events(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(10), [&] { return events_.size() >= count; });
        return events_;
    }

    void forget()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.clear();
    }

    Clock::time_point last_event_time()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return last_;
    }

  private:
    static void on_event(void *data, pictrel_event_type_e type, pictrel_event_result_e result)
    {
        auto *self = static_cast<Application *>(data);
        const std::lock_guard<std::mutex> lock(self->mutex_);
        self->events_.emplace_back(type, result);
        self->last_ = Clock::now();
        self->changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Event> events_;
    Clock::time_point last_;
};

/** What the plane shows. */
struct Screen {
    int width = 0;
    std::vector<uint32_t> pixels;
    int pictures = 0;

    uint32_t at(int x, int y) const
    {
        return pixels.at(static_cast<size_t>(y) * width + x) & 0xffffff;
    }
};

/** Whether two colours are the same but for what JPEG loses. */
MATCHER_P(LooksLike, color, "")
{
    for (int shift = 0; shift <= 16; shift += 8) {
        const int difference =
            static_cast<int>(arg >> shift & 0xff) - static_cast<int>(color >> shift & 0xff);
        if (difference < -12 || difference > 12) {
            *result_listener << "the colour 0x" << std::hex << arg;
            return false;
        }
    }
    return true;
}

/** What the platform tells of a file that could not be shown: its kind and why, or nothing. */
inline std::optional<std::pair<platform::UnplayableFile::Kind, std::string>>
why_unplayable(const std::string &path)
{
    for (const platform::UnplayableFile &file : platform::UnplayableFiles::get().all()) {
        if (file.path == path)
            return std::pair(file.kind, file.why);
    }
    return std::nullopt;
}

class PictureTest : public testing::Test {
  protected:
    static constexpr int WIDTH = 160;
    static constexpr int HEIGHT = 90;

    void SetUp() override { use_panel(WIDTH, HEIGHT); }

    void TearDown() override
    {
        if (picture_)
            pictrel_destroy(&picture_);
        platform::PictureDisplay::get().use(nullptr);
    }

    void use_panel(int width, int height)
    {
        const auto on_present = [this](const platform::PlaneBuffer &buffer) {
            auto &shown = const_cast<platform::PlaneBuffer &>(buffer);
            const auto *pixels = reinterpret_cast<const uint32_t *>(shown.pixels());
            screen_.width = shown.width();
            screen_.pixels.assign(pixels, pixels + shown.size() / sizeof *pixels);
            ++screen_.pictures;
        };
        platform::PictureDisplay::get().use(
            platform::VideoPlane::offscreen(width, height, on_present));
    }

    std::string file(const std::string &name) const { return folder_ / name; }

    /** Sets a picture up as the player does. */
    void open(const std::string &path)
    {
        if (picture_)
            pictrel_destroy(&picture_);
        application_.forget();
        screen_ = {};
        ASSERT_EQ(pictrel_create_from_url(path.c_str(), &picture_), 0);
        set_up();
    }

    void set_up()
    {
        ASSERT_EQ(pictrel_set_window(picture_, 1), 0);
        ASSERT_EQ(pictrel_set_geometry_size(picture_, PICTREL_GEOMETRY_FIT), 0);
        application_.subscribe(picture_);
    }

    void open(const JpegOrder &order)
    {
        write_jpeg(file("picture.jpg"), order);
        open(file("picture.jpg"));
    }

    void decode()
    {
        ASSERT_EQ(pictrel_parse(picture_), 0);
        ASSERT_THAT(application_.events(1), testing::ElementsAre(PARSED));
        ASSERT_EQ(pictrel_decode(picture_, 0), 0);
        ASSERT_THAT(application_.events(2), testing::ElementsAre(PARSED, DECODED));
    }

    void show(const JpegOrder &order)
    {
        open(order);
        ASSERT_NO_FATAL_FAILURE(decode());
        ASSERT_EQ(pictrel_render(picture_), 0);
    }

    /** Renders with the mixer, as the player does on a turned panel. */
    void show_turned(const JpegOrder &order, int degrees)
    {
        open(order);
        ASSERT_NO_FATAL_FAILURE(decode());
        ASSERT_EQ(pictrel_set_mixer_render(picture_, 1), 0);
        ASSERT_EQ(pictrel_render(picture_), 0);
        ASSERT_EQ(pictrel_set_mixer_render(picture_, 0), 0);
        ASSERT_EQ(screen_.pictures, 0) << "seen before it was turned";
        ASSERT_EQ(pictrel_rotate(picture_, degrees), 0);
    }

    /**
     * The colours in the middle of the quarters of an area: upper left, upper right, lower left,
     * lower right, as initials.
     */
    std::string quarters_of(int left, int top, int width, int height) const
    {
        std::string seen;
        for (const int y : {top + height / 4, top + height * 3 / 4}) {
            for (const int x : {left + width / 4, left + width * 3 / 4})
                seen += initial(screen_.at(x, y));
        }
        return seen;
    }

    /** Threads of this process by name. */
    static int picture_threads()
    {
        int count = 0;
        for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
            const std::string name = store_test::read_file(task.path() / "comm");
            count += name == "still-picture\n" || name == "photo-watch\n";
        }
        return count;
    }

    const store_test::ScratchDir folder_;
    Application application_;
    Screen screen_;
    _pictrel_s *picture_ = nullptr;

  private:
    static char initial(uint32_t color)
    {
        if (testing::Value(color, LooksLike(RED)))
            return 'R';
        if (testing::Value(color, LooksLike(GREEN)))
            return 'G';
        if (testing::Value(color, LooksLike(BLUE)))
            return 'B';
        return testing::Value(color, LooksLike(WHITE)) ? 'W' : '?';
    }
};

} // namespace platform_test
