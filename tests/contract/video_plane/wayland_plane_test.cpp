#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <wayland-client.h>

#include "panel/panel_model.h"
#include "store_support/captured_log.h"
#include "video_plane/video_plane.h"
#include "video_plane/wayland_plane.h"
#include "video_plane/weston.h"

namespace platform {
namespace {

using platform_test::SCREEN_HEIGHT;
using platform_test::SCREEN_WIDTH;
using platform_test::wait_until;

class WaylandPlaneMaking : public platform_test::WestonTest {
  protected:
    static PlaneBufferPtr picture(VideoPlane &plane, uint32_t color)
    {
        PlaneBufferPtr drawn = plane.acquire();
        color |= 0xff000000; // the compositor's screenshots take the unused byte for alpha
        if (drawn)
            std::fill_n(reinterpret_cast<uint32_t *>(drawn->pixels()), drawn->size() / 4, color);
        return drawn;
    }
};

/** The tests of a plane that has been made for a window. */
class WaylandPlaneTest : public WaylandPlaneMaking {
  protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(WaylandPlaneMaking::SetUp());
        plane_ = VideoPlane::for_window(window_);
        ASSERT_TRUE(plane_);
    }

    void TearDown() override
    {
        plane_.reset();
        WaylandPlaneMaking::TearDown();
    }

    /** The colour in the middle of the compositor's output. */
    uint32_t color_on_screen() { return colour_at(SCREEN_WIDTH / 2, SCREEN_HEIGHT / 2); }

    static std::filesystem::path plane_thread()
    {
        for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
            if (store_test::read_file(task.path() / "comm") == "video-plane\n")
                return task.path();
        }
        return {};
    }

    /** Whether the plane's thread sleeps on a lock, as libwayland has it do. */
    static bool plane_thread_waits_for_a_reader()
    {
        const auto call = store_test::read_file(plane_thread() / "syscall");
        return std::strtol(call.c_str(), nullptr, 10) == SYS_futex;
    }

    /** Descriptors of this process for the memory of pictures. */
    static long open_pictures()
    {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::count_if(begin(files), end(files), [](const auto &file) {
            std::error_code gone; // the folder's own descriptor
            return read_symlink(file.path(), gone).string().find("video-plane") !=
                   std::string::npos;
        });
    }

    static size_t buffers(const std::shared_ptr<VideoPlane> &plane)
    {
        return std::dynamic_pointer_cast<WaylandPlane>(plane)->buffer_count();
    }

    std::shared_ptr<VideoPlane> plane_;
};

TEST_F(WaylandPlaneTest, HasThePanelsSizeAndIsOneForItsWindow)
{
    EXPECT_EQ(plane_->width(), SCREEN_WIDTH);
    EXPECT_EQ(plane_->height(), SCREEN_HEIGHT);
    EXPECT_EQ(VideoPlane::for_window(window_), plane_);
}

TEST_F(WaylandPlaneTest, MakesABufferForTheFirstPictureAndThoseForTheNextWhenItIsThere)
{
    EXPECT_TRUE(wait_until([this] { return buffers(plane_) == 2; })) << "with the black one";
    EXPECT_FALSE(wait_until([this] { return buffers(plane_) > 2; }, 0.3));

    ASSERT_TRUE(plane_->present(picture(*plane_, 0x123456)));

    EXPECT_TRUE(wait_until([this] { return buffers(plane_) >= 4; })) << buffers(plane_);
}

/** Another plane that has a first picture. */
struct OtherPlane : VideoPlane {
    using VideoPlane::tell_shown;
};

TEST_F(WaylandPlaneTest, TellsOnceThatThereIsAFirstPicture)
{
    std::atomic<int> told{0};
    VideoPlane::call_when_shown([&told] { told++; });
    EXPECT_FALSE(wait_until([&] { return told > 0; }, 0.3)) << "of the black one";

    ASSERT_TRUE(plane_->present(picture(*plane_, 0x123456)));
    EXPECT_TRUE(run([&] { return told > 0; }));
    ASSERT_TRUE(plane_->present(picture(*plane_, 0x654321)));
    EXPECT_TRUE(run([this] { return color_on_screen() == 0x654321; }));
    OtherPlane::tell_shown();

    EXPECT_EQ(told, 1);
}

TEST_F(WaylandPlaneTest, ShowsWhatStandsInForAPictureUntilThereIsOne)
{
    std::atomic<int> told{0};
    VideoPlane::call_when_shown([&told] { told++; });
    ASSERT_TRUE(plane_->present_stand_in(picture(*plane_, 0x20c040), 0));
    EXPECT_TRUE(run([this] { return color_on_screen() == 0x20c040; }));
    EXPECT_EQ(told, 0);
    EXPECT_EQ(plane_->statistics().presented, 0u);

    ASSERT_TRUE(plane_->present(picture(*plane_, 0xd01030)));
    EXPECT_FALSE(plane_->present_stand_in(picture(*plane_, 0x20c040), 0)) << "it comes too late";
    EXPECT_TRUE(run([this] { return color_on_screen() == 0xd01030; }));
    EXPECT_EQ(told, 1);
}

TEST_F(WaylandPlaneMaking, TakesItsSizeFromThePanelModelWhereThatKnowsIt)
{
    PanelModel::get().set_size(3840, 2160);
    const auto plane = VideoPlane::for_window(window_);
    PanelModel::get().set_size(0, 0);

    ASSERT_TRUE(plane);
    const PlaneBufferPtr buffer = picture(*plane, 0x123456);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->width(), 3840);
    EXPECT_EQ(buffer->height(), 2160);
    EXPECT_TRUE(plane->present(buffer));
}

TEST_F(WaylandPlaneMaking, IsNotMadeWithoutAWindowOrItsSurfaceOrASizeAndSaysWhy)
{
    EXPECT_FALSE(VideoPlane::for_window(nullptr));
    const store_test::CapturedLog log;
    EXPECT_FALSE(WaylandPlane::create(window_, {16, 0, 16, 16}));
    EXPECT_THAT(log.text(), testing::HasSubstr("the size of the panel is not known yet\n"));

    Ecore_Evas *memory = ecore_evas_buffer_new(16, 16);
    Evas_Object *no_window = evas_object_rectangle_add(ecore_evas_get(memory));
    EXPECT_FALSE(WaylandPlane::create(no_window, {16, 16, 16, 16}));
    EXPECT_THAT(log.text(), testing::HasSubstr("the window has no Wayland surface\n"));
    ecore_evas_free(memory);
}

TEST_F(WaylandPlaneTest, StartsBlackAndShowsThePictureThroughTheWindow)
{
    EXPECT_EQ(color_on_screen(), 0x000000u);

    ASSERT_TRUE(plane_->present(picture(*plane_, 0x20c040)));
    EXPECT_TRUE(run([&] { return color_on_screen() == 0x20c040; }));
    ASSERT_TRUE(plane_->present(picture(*plane_, 0xd01030)));
    EXPECT_TRUE(run([&] { return color_on_screen() == 0xd01030; }));
}

TEST_F(WaylandPlaneTest, GetsEveryPictureBackButTheLast)
{
    std::vector<std::weak_ptr<PlaneBuffer>> shown;
    std::atomic<bool> all_presented{false};
    std::thread streaming([&] {
        for (uint32_t frame = 0; frame < 200; ++frame) {
            PlaneBufferPtr buffer;
            if (!wait_until([&] { return (buffer = picture(*plane_, frame)) != nullptr; }))
                break;
            shown.emplace_back(buffer);
            plane_->present(buffer);
        }
        all_presented = true;
    });
    const bool presented = run([&] { return all_presented.load(); });
    streaming.join();

    ASSERT_TRUE(presented);
    ASSERT_EQ(shown.size(), 200u);
    const auto out = [&] {
        return std::count_if(shown.begin(), shown.end(), [](auto &one) { return !one.expired(); });
    };
    EXPECT_TRUE(run([&] { return out() <= 1; })) << out() << " pictures never came back";
    EXPECT_LE(buffers(plane_), 7u) << "six spare ones and the one on the screen";
    EXPECT_EQ(plane_->statistics().presented, 200u);
}

/** Shows a hundred pictures without a turn of the main loop. @return how many were shown */
int show_a_hundred(VideoPlane &plane)
{
    for (int frame = 0; frame < 100; ++frame) {
        PlaneBufferPtr buffer;
        if (!wait_until([&] { return (buffer = plane.acquire()) != nullptr; }, 3.0) ||
            !plane.present(buffer))
            return frame;
    }
    return 100;
}

struct BusyCallback {
    VideoPlane *plane;
    int shown = -1;

    void run() { shown = show_a_hundred(*plane); }
};

TEST_F(WaylandPlaneTest, GoesOnWhileTheMainLoopStandsStill)
{
    EXPECT_EQ(show_a_hundred(*plane_), 100);
}

TEST_F(WaylandPlaneTest, GoesOnWhileATimerKeepsTheMainLoopBusy)
{
    BusyCallback busy{plane_.get()};
    const auto on_timer = [](void *data) -> Eina_Bool {
        static_cast<BusyCallback *>(data)->run();
        return ECORE_CALLBACK_CANCEL;
    };
    ecore_timer_add(0.02, on_timer, &busy);
    EXPECT_TRUE(run([&] { return busy.shown >= 0; }));
    EXPECT_EQ(busy.shown, 100);
}

TEST_F(WaylandPlaneTest, GoesOnWhileAnEventKeepsTheMainLoopBusy)
{
    BusyCallback busy{plane_.get()};
    const auto on_event = [](void *data, void *, unsigned int) {
        static_cast<BusyCallback *>(data)->run();
    };
    Ecore_Pipe *pipe = ecore_pipe_add(on_event, &busy);
    ecore_pipe_write(pipe, "", 1);
    EXPECT_TRUE(run([&] { return busy.shown >= 0; }));
    EXPECT_EQ(busy.shown, 100);
    ecore_pipe_del(pipe);
}

TEST_F(WaylandPlaneTest, HoldsNoFileOpenForAPictureThatTheCompositorKnows)
{
    const PlaneBufferPtr shown = picture(*plane_, 0x808080);
    ASSERT_TRUE(plane_->present(shown));
    // Until it is sent libwayland holds a copy.
    EXPECT_TRUE(wait_until([] { return open_pictures() == 0; }));
}

TEST_F(WaylandPlaneTest, LimitsItsBuffersWhenNoneComesBack)
{
    std::vector<PlaneBufferPtr> taken;
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (PlaneBufferPtr buffer = plane_->acquire())
            taken.push_back(std::move(buffer));
    }
    // The compositor may have the black picture of the beginning still, or give it back meanwhile.
    EXPECT_GE(taken.size(), 15u);
    EXPECT_LE(taken.size(), 16u);

    taken.clear();
    EXPECT_TRUE(plane_->acquire());
    EXPECT_LE(buffers(plane_), 7u);
}

TEST_F(WaylandPlaneTest, ShowsAPictureAgainThatTheCompositorStillHas)
{
    const PlaneBufferPtr red = picture(*plane_, 0xff0000);
    const PlaneBufferPtr blue = picture(*plane_, 0x0000ff);

    EXPECT_TRUE(plane_->present(red));
    EXPECT_TRUE(plane_->present(red));
    EXPECT_TRUE(plane_->present(blue));
    EXPECT_TRUE(plane_->present(red));

    EXPECT_TRUE(run([&] { return color_on_screen() == 0xff0000; }));
}

TEST_F(WaylandPlaneTest, RefusesAPictureOfAnotherPlane)
{
    EXPECT_FALSE(plane_->present(VideoPlane::offscreen(SCREEN_WIDTH, SCREEN_HEIGHT)->acquire()));
    EXPECT_FALSE(plane_->present(nullptr));
    EXPECT_EQ(plane_->statistics().presented, 0u);
}

TEST_F(WaylandPlaneTest, ClosesWithItsWindow)
{
    const PlaneBufferPtr shown = picture(*plane_, 0x808080);
    const PlaneBufferPtr kept = picture(*plane_, 0x808080);
    ASSERT_TRUE(plane_->present(shown));

    delete_window();

    EXPECT_FALSE(plane_->present(kept));
    EXPECT_FALSE(plane_->acquire());
    kept->pixels()[kept->size() - 1] = 1; // still memory
    EXPECT_EQ(shown.use_count(), 1) << "the plane let go of the picture";
}

TEST_F(WaylandPlaneTest, ClosesUnderAStreamingThread)
{
    std::atomic<bool> refused{false};
    std::thread streaming([&] {
        wait_until([&] {
            const PlaneBufferPtr buffer = plane_->acquire();
            refused = plane_->statistics().presented > 20 && !(buffer && plane_->present(buffer));
            if (!refused && buffer)
                plane_->present(buffer);
            return refused.load();
        });
    });
    EXPECT_TRUE(run([&] { return plane_->statistics().presented > 40; }));

    delete_window();
    streaming.join();

    EXPECT_TRUE(refused);
}

TEST_F(WaylandPlaneTest, ClosesWhileTheMainLoopOwesARead)
{
    wl_display *display = ecore_wl2_display_get(ecore_wl2_connected_display_get(nullptr));

    // As in the middle of the main loop's round: a read announced, not made yet, and the plane's
    // thread waiting for it with the answer to its picture.
    while (wl_display_prepare_read(display) != 0)
        wl_display_dispatch_pending(display);
    ASSERT_TRUE(plane_->present(picture(*plane_, 0x00ff00)));
    ASSERT_TRUE(plane_->present(picture(*plane_, 0x00ff00)));
    ASSERT_TRUE(wait_until([] { return plane_thread_waits_for_a_reader(); }));

    delete_window();
    EXPECT_FALSE(plane_->acquire());
    EXPECT_GT(plane_.use_count(), 1) << "the thread has not been left to the main loop";
    wl_display_cancel_read(display);

    EXPECT_TRUE(run([&] { return plane_.use_count() == 1; })) << "the thread never ended";
}

TEST_F(WaylandPlaneTest, RefusesPicturesQuietlyOnceTheCompositorIsGone)
{
    ASSERT_TRUE(plane_->present(picture(*plane_, 0x00ff00)));

    weston_.kill();

    // The main loop stands still: the plane has to find out by itself.
    EXPECT_TRUE(wait_until([&] {
        const PlaneBufferPtr buffer = plane_->acquire();
        return buffer && !plane_->present(buffer);
    }));
    EXPECT_TRUE(wait_until([] { return plane_thread().empty(); })) << "its thread goes on";
}

} // namespace
} // namespace platform
