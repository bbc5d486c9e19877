#include "player_fixture.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include <Ecore.h>
#include <gst/gst.h>

#include "media_player/media_system.h"
#include "panel/panel_model.h"

namespace player_test {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

Eina_Bool wake_loop(void *)
{
    return ECORE_CALLBACK_RENEW;
}

} // namespace

char Picture::colour(int x, int y) const
{
    const uint32_t value = at(x, y);
    const bool red = ((value >> 16) & 0xff) > 128;
    const bool green = ((value >> 8) & 0xff) > 128;
    const bool blue = (value & 0xff) > 128;
    if (red && green && blue)
        return 'w';
    if (!red && !green && !blue)
        return 'k';
    if (red + green + blue > 1)
        return '?';
    return red ? 'r' : green ? 'g' : 'b';
}

std::string Picture::quarters(int x, int y, int area_width, int area_height) const
{
    const int left = x + area_width / 4;
    const int right = x + area_width * 3 / 4;
    const int top = y + area_height / 4;
    const int bottom = y + area_height * 3 / 4;
    return {colour(left, top), colour(right, top), colour(right, bottom), colour(left, bottom)};
}

void PlayerTest::SetUpTestSuite()
{
    setenv("OSTREL_DEMO_AUDIO_SINK", "fakesink", 1);
    // Ecore's modules for the machine's own services want a system bus, and complain without one.
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
    ecore_init();
    platform::start_media_system();
    ASSERT_TRUE(platform::wait_for_media_system(std::atomic<bool>(false)));
}

void PlayerTest::TearDownTestSuite()
{
    ecore_shutdown();
}

void PlayerTest::SetUp()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "player-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    platform::PanelModel::get().set_first_angle(0);
    make_player();
}

void PlayerTest::TearDown()
{
    if (player_)
        player_->destroy();
    player_.reset();
    platform::PanelModel::get().set_first_angle(0);
    std::filesystem::remove_all(folder_);
}

void PlayerTest::make_plane()
{
    plane_ = platform::VideoPlane::offscreen(
        plane_width_, plane_height_, [this](const platform::PlaneBuffer &shown) {
            auto &buffer = const_cast<platform::PlaneBuffer &>(shown);
            const std::lock_guard<std::mutex> lock(mutex_);
            picture_.width = buffer.width();
            picture_.height = buffer.height();
            picture_.pixels.resize(static_cast<size_t>(buffer.width()) * buffer.height());
            for (int y = 0; y < buffer.height(); y++) {
                const auto *row = reinterpret_cast<const uint32_t *>(
                    buffer.pixels() + static_cast<size_t>(y) * buffer.stride());
                std::copy_n(row, buffer.width(),
                            picture_.pixels.data() + static_cast<size_t>(y) * buffer.width());
            }
            if (on_picture_)
                on_picture_(picture_);
        });
}

platform::PlayerOptions PlayerTest::usual_options()
{
    platform::PlayerOptions options;
    options.first_frame_timeout = std::chrono::seconds(60);
    options.lookahead = nullptr;
    return options;
}

void PlayerTest::make_player(platform::PlayerOptions options)
{
    if (player_)
        player_->destroy();
    make_plane();
    player_ = platform::Player::create(std::move(options));
    player_->set_plane(plane_);
    player_->set_completed_cb(
        [](void *self) { static_cast<PlayerTest *>(self)->record("completed"); }, this);
    player_->set_interrupted_cb(
        [](player_interrupted_code_e code, void *self) {
            static_cast<PlayerTest *>(self)->record("interrupted " + std::to_string(code));
        },
        this);
    player_->set_error_cb(
        [](int code, void *self) {
            static_cast<PlayerTest *>(self)->record("error " + std::to_string(code));
        },
        this);
    player_->set_subtitle_cb(
        [](unsigned long duration, void *text, unsigned, unsigned, MMSubAttribute **, void *self) {
            static_cast<PlayerTest *>(self)->record("subtitle " + std::to_string(duration) + " " +
                                                    static_cast<const char *>(text));
        },
        this);
}

std::string PlayerTest::clip(const std::string &name, const Clip &facts) const
{
    make_clip(path(name), facts);
    return path(name);
}

void PlayerTest::record(const std::string &event)
{
    callback_thread_ = std::this_thread::get_id();
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(event);
    }
    told_.notify_all();
    if (on_event_)
        on_event_(event);
}

std::vector<std::string> PlayerTest::events() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return events_;
}

int PlayerTest::count(const std::string &event) const
{
    const std::vector<std::string> all = events();
    return static_cast<int>(std::count(all.begin(), all.end(), event));
}

Picture PlayerTest::picture() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return picture_;
}

int PlayerTest::prepare(const std::string &uri)
{
    if (const int result = player_->set_uri(uri))
        return result;
    return player_->prepare_async(
        [](void *self) { static_cast<PlayerTest *>(self)->record("prepared"); }, this);
}

bool PlayerTest::wait_for(const std::function<bool()> &condition, double seconds) const
{
    const auto start = Clock::now();
    Ecore_Timer *ticks = ecore_timer_add(0.005, wake_loop, nullptr);
    bool reached = condition();
    while (!reached && seconds_since(start) < seconds) {
        ecore_main_loop_iterate_may_block(1);
        reached = condition();
    }
    ecore_timer_del(ticks);
    return reached;
}

bool PlayerTest::wait_for_event(const std::string &event, double seconds) const
{
    return wait_for([&] { return count(event) > 0; }, seconds);
}

bool PlayerTest::told_without_main_loop(double seconds)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return told_.wait_for(lock, std::chrono::duration<double>(seconds),
                          [this] { return !events_.empty(); });
}

bool PlayerTest::stays(const std::function<bool()> &condition, double seconds) const
{
    return !wait_for([&] { return !condition(); }, seconds);
}

testing::AssertionResult PlayerTest::prepared(const std::string &uri)
{
    const int before = count("prepared");
    if (const int result = prepare(uri))
        return testing::AssertionFailure() << "preparing " << uri << " answers " << result;
    if (!wait_for([&] { return count("prepared") > before; }))
        return testing::AssertionFailure()
               << uri << " is not prepared; told: " << testing::PrintToString(events());
    return testing::AssertionSuccess();
}

testing::AssertionResult PlayerTest::playing(const std::string &uri)
{
    if (const testing::AssertionResult result = prepared(uri); !result)
        return result;
    const uint64_t before = shown();
    if (const int result = player_->start())
        return testing::AssertionFailure() << "starting " << uri << " answers " << result;
    if (!wait_for([&] { return shown() > before; }))
        return testing::AssertionFailure() << uri << " shows no frame";
    return testing::AssertionSuccess();
}

} // namespace player_test
