// Pictures that are destroyed in the midst of their work.

#include <thread>

#include <poll.h>

#include "still_picture/picture_status.h"
#include "still_picture/picture_test.h"

namespace platform_test {
namespace {

using testing::ElementsAre;

class ADestroyedPicture : public PictureTest {
  protected:
    /** Waits for threads that may end a moment later. */
    static bool threads_gone()
    {
        const auto deadline = Clock::now() + std::chrono::seconds(10);
        while (picture_threads() > 0 && Clock::now() < deadline)
            poll(nullptr, 0, 2);
        return picture_threads() == 0;
    }

    static size_t open_files()
    {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return static_cast<size_t>(std::distance(begin(all), end(all)));
    }
};

TEST_F(ADestroyedPicture, StopsDecodingAtOnce)
{
    const JpegOrder order{
        6000, 6000, [](int x, int y) { return static_cast<uint32_t>(x * y) * 40503 & 0xffffff; }};
    open(order);
    auto begun = Clock::now();
    ASSERT_NO_FATAL_FAILURE(decode());
    const auto whole = Clock::now() - begun;

    open(file("picture.jpg"));
    ASSERT_EQ(pictrel_parse(picture_), 0);
    ASSERT_THAT(application_.events(1), ElementsAre(PARSED));
    ASSERT_EQ(pictrel_decode(picture_, 0), 0);
    begun = Clock::now();
    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    EXPECT_LT(Clock::now() - begun, whole / 2);

    EXPECT_TRUE(threads_gone());
    EXPECT_THAT(application_.events(1), ElementsAre(PARSED));
}

TEST_F(ADestroyedPicture, IsNoLongerWhatTheLibraryShows)
{
    using platform::current_picture_status;
    EXPECT_EQ(current_picture_status().path, "");
    open(JpegOrder{60, 40, [](int, int) { return 0x204060u; }});
    const std::string path = file("picture.jpg");
    EXPECT_EQ(current_picture_status().path, path);
    EXPECT_FALSE(current_picture_status().shown);
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_FALSE(current_picture_status().shown);
    ASSERT_EQ(pictrel_render(picture_), 0);
    EXPECT_TRUE(current_picture_status().shown);
    EXPECT_EQ(current_picture_status().width, 60);
    EXPECT_EQ(current_picture_status().height, 40);
    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    EXPECT_EQ(current_picture_status().path, "");
    EXPECT_FALSE(current_picture_status().shown);
}

TEST_F(ADestroyedPicture, ReportsNoFailureThatWasStillToCome)
{
    open(file("none.jpg"));
    ASSERT_EQ(pictrel_parse(picture_), 0);
    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    EXPECT_TRUE(threads_gone());
    EXPECT_THAT(application_.events(0), ElementsAre());
}

/** Destroys its picture from inside the callback. */
struct Impatient {
    static void on_event(void *data, pictrel_event_type_e, pictrel_event_result_e)
    {
        auto *self = static_cast<Impatient *>(data);
        const int result = pictrel_destroy(&self->picture);
        const std::lock_guard<std::mutex> lock(self->mutex);
        self->result = result;
        self->changed.notify_all();
    }
    bool wait()
    {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [this] { return result == 0; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    _pictrel_s *picture = nullptr;
    int result = -1;
};

TEST_F(ADestroyedPicture, MayBeDestroyedByItsOwnCallback)
{
    open({64, 64, plain(RED)});
    Impatient impatient;
    std::swap(impatient.picture, picture_);
    pictrel_add_event_callback(impatient.picture, PICTREL_EVENT_PARSE, Impatient::on_event,
                               &impatient);
    ASSERT_EQ(pictrel_parse(impatient.picture), 0);
    EXPECT_TRUE(impatient.wait());
    EXPECT_EQ(impatient.picture, nullptr);
    EXPECT_TRUE(threads_gone());
}

/** Holds its callback up until told otherwise. */
struct Slow {
    static void on_event(void *data, pictrel_event_type_e, pictrel_event_result_e)
    {
        auto *self = static_cast<Slow *>(data);
        std::unique_lock<std::mutex> lock(self->mutex);
        self->entered = true;
        self->changed.notify_all();
        self->changed.wait(lock, [self] { return self->may_leave; });
        self->left = true;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool entered = false;
    bool may_leave = false;
    bool left = false;
};

TEST_F(ADestroyedPicture, WaitsForACallbackUnderWay)
{
    open({64, 64, plain(RED)});
    Slow slow;
    pictrel_add_event_callback(picture_, PICTREL_EVENT_PARSE, Slow::on_event, &slow);
    ASSERT_EQ(pictrel_parse(picture_), 0);
    {
        std::unique_lock<std::mutex> lock(slow.mutex);
        ASSERT_TRUE(
            slow.changed.wait_for(lock, std::chrono::seconds(10), [&] { return slow.entered; }));
    }
    bool destroying = false;
    std::thread releaser([&] {
        std::unique_lock<std::mutex> lock(slow.mutex);
        slow.changed.wait(lock, [&] { return destroying; });
        slow.may_leave = true;
        slow.changed.notify_all();
    });
    {
        const std::lock_guard<std::mutex> lock(slow.mutex);
        destroying = true;
        slow.changed.notify_all();
    }
    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    {
        const std::lock_guard<std::mutex> lock(slow.mutex);
        EXPECT_TRUE(slow.left);
    }
    releaser.join();
}

TEST_F(ADestroyedPicture, LeavesNothingBehindAThousandTimes)
{
    write_jpeg(file("good.jpg"), {64, 64, plain(RED)});
    const size_t files_before = open_files();
    for (int i = 0; i < 1000; ++i) {
        const std::string path = i % 5 == 4 ? "none.jpg" : "good.jpg";
        ASSERT_NO_FATAL_FAILURE(open(file(path)));
        if (i % 5 >= 1) {
            ASSERT_EQ(pictrel_parse(picture_), 0);
        }
        if (i % 5 == 2 || i % 5 == 3) {
            ASSERT_THAT(application_.events(1), ElementsAre(PARSED));
            ASSERT_EQ(pictrel_decode(picture_, 0), 0);
        }
        if (i % 5 == 3) {
            ASSERT_THAT(application_.events(2), ElementsAre(PARSED, DECODED));
            ASSERT_EQ(pictrel_render(picture_), 0);
        }
        ASSERT_EQ(pictrel_destroy(&picture_), 0);
        // A machine that is too busy to end them would take more of them for a disk that hangs.
        if (i % 5 == 4) {
            ASSERT_TRUE(threads_gone());
        }
    }
    EXPECT_EQ(open_files(), files_before);
}

} // namespace
} // namespace platform_test
