// The real services, with files that really play and show.

#include <memory>

#include <Ecore.h>
#include <gtest/gtest.h>

#include "config_store.h"
#include "media_player/clips.h"
#include "media_player/media_system.h"
#include "set_under_test.h"
#include "still_picture/jpeg_maker.h"
#include "still_picture/picture_display.h"
#include "store_support/scratch.h"
#include "usb_storage/usb_devices.h"
#include "video_plane/video_plane.h"

namespace set_under_test {
namespace {

/** Files and folders of the program; services read where they are once, at their first use. */
class Place {
  public:
    Place()
    {
        setenv("OSTREL_DEMO_STATE_DIR", (scratch_ / "state").c_str(), 1);
        setenv("OSTREL_DEMO_RUNTIME_DIR", (scratch_ / "run").c_str(), 1);
        store_test::write_file(scratch_ / "tv.conf", "");
        setenv("OSTREL_DEMO_TV_CONF", (scratch_ / "tv.conf").c_str(), 1);
        setenv("OSTREL_DEMO_AUDIO_SINK", "fakesink", 1);
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        platform::start_media_system();
        platform::wait_for_media_system(std::atomic<bool>(false));
        player_test::Clip short_clip;
        short_clip.frames = 15;
        player_test::make_clip(path("good.mp4"), short_clip);
        store_test::write_file(path("broken.mp4"), "this is no video");
        platform_test::JpegOrder photo;
        photo.width = 64;
        photo.height = 48;
        photo.color = platform_test::plain(platform_test::RED);
        platform_test::write_jpeg(path("good.jpg"), photo);
        store_test::write_file(path("broken.jpg"), "this is no photo");
    }

    ~Place() { ecore_shutdown(); }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;

    std::string path(const std::string &name) const { return scratch_ / name; }

  private:
    store_test::ScratchDir scratch_;
};

/** Has the place for as long as tests run, so that nothing of it is left when leaks are counted. */
class PlaceKeeper : public testing::Environment {
  public:
    void SetUp() override { place_ = std::make_unique<Place>(); }
    void TearDown() override { place_.reset(); }
    const Place &place() const { return *place_; }

  private:
    std::unique_ptr<Place> place_;
};

// Owned by GoogleTest.
const auto *const KEEPER =
    static_cast<PlaceKeeper *>(testing::AddGlobalTestEnvironment(new PlaceKeeper));

const Place &place()
{
    return KEEPER->place();
}

std::vector<std::string> plugged;

} // namespace

void begin()
{
    platform::PictureDisplay::get().use(platform::VideoPlane::offscreen(160, 90));
}

void end()
{
    plug_in(0);
    platform::PictureDisplay::get().use(nullptr);
}

bool goes_on_until(const std::function<bool()> &condition)
{
    // Callbacks from other threads do not wake the main loop.
    Ecore_Timer *ticks = ecore_timer_add(
        0.005, [](void *) -> Eina_Bool { return ECORE_CALLBACK_RENEW; }, nullptr);
    const bool reached = store_test::run_loop_until(condition, 30.0);
    ecore_timer_del(ticks);
    return reached;
}

std::string good_video()
{
    return place().path("good.mp4");
}

std::string broken_video()
{
    return place().path("broken.mp4");
}

std::string missing_video()
{
    return place().path("missing.mp4");
}

std::string good_photo()
{
    return place().path("good.jpg");
}

std::string broken_photo()
{
    return place().path("broken.jpg");
}

void another_process_writes(const char *key, int value)
{
    store_test::Child({CONFIG_STORE_PEER, "set", key, std::to_string(value)}).finish();
}

std::vector<std::string> plug_in(int sticks)
{
    for (const std::string &path : plugged)
        platform::usb_remove(path);
    plugged.clear();
    for (int i = 0; i < sticks; i++) {
        plugged.push_back(place().path("stick" + std::to_string(i)));
        std::filesystem::create_directory(plugged.back());
        platform::usb_add(plugged.back());
    }
    return plugged;
}

} // namespace set_under_test
