// Pictures on a disk that does not answer.

#include <future>
#include <thread>

#include <unistd.h>

#include "still_picture/picture.h"
#include "still_picture/picture_ahead.h"
#include "still_picture/picture_test.h"
#include "store_support/captured_log.h"
#include "store_support/thread_shortage.h"

namespace platform_test {
namespace {

/** Holds up whoever reads on behind the first so many pieces of a file, until it is over. */
struct Hang {
    std::mutex mutex;
    std::condition_variable changed;
    int pieces = -1; ///< negative: nothing hangs
    int hanging = 0;

    void pass()
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (pieces < 0 || pieces-- > 0)
            return;
        pieces = 0;
        ++hanging;
        changed.notify_all();
        changed.wait(lock, [this] { return pieces < 0; });
        --hanging;
        changed.notify_all();
    }
};

Hang &hang()
{
    static Hang only;
    return only;
}

bool is_picture(int descriptor)
{
    std::error_code none;
    const auto path =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
    return path.extension() == ".jpg";
}

} // namespace
} // namespace platform_test

// The linker sends the calls of this program's own objects here.
extern "C" ssize_t __wrap_read(int descriptor, void *buffer, size_t size);
extern "C" ssize_t __real_read(int descriptor, void *buffer, size_t size);

ssize_t __wrap_read(int descriptor, void *buffer, size_t size)
{
    if (platform_test::is_picture(descriptor))
        platform_test::hang().pass();
    return __real_read(descriptor, buffer, size);
}

namespace platform_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::chrono::milliseconds PATIENCE{300};

class AHangingDisk : public PictureTest {
  protected:
    void SetUp() override
    {
        PictureTest::SetUp();
        JpegOrder order{640, 480, [](int x, int y) {
                            return static_cast<uint32_t>((x * 7919 + y * 104729) * 2654435761u) &
                                   0xffffff;
                        }};
        write_jpeg(file("a.jpg"), order);
        ASSERT_GT(std::filesystem::file_size(file("a.jpg")), 3 * 65536u) << "a few pieces";
    }

    void TearDown() override
    {
        platform::PictureAhead::get().drop();
        answer();
        EXPECT_TRUE(all_answered());
        PictureTest::TearDown();
    }

    static void hang_after(int pieces)
    {
        const std::lock_guard<std::mutex> lock(hang().mutex);
        hang().pieces = pieces;
    }

    static void answer()
    {
        const std::lock_guard<std::mutex> lock(hang().mutex);
        hang().pieces = -1;
        hang().changed.notify_all();
    }

    /** Waits until no reading hangs any more. */
    static bool all_answered()
    {
        std::unique_lock<std::mutex> lock(hang().mutex);
        return hang().changed.wait_for(lock, std::chrono::seconds(10),
                                       [] { return hang().hanging == 0; });
    }

    /** Waits until no picture is being read any more. */
    static bool all_closed()
    {
        const auto any_open = [] {
            for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
                if (is_picture(std::stoi(entry.path().filename())))
                    return true;
            }
            return false;
        };
        const auto deadline = Clock::now() + std::chrono::seconds(10);
        while (any_open() && Clock::now() < deadline)
            std::this_thread::yield();
        return !any_open();
    }

    static int hanging()
    {
        const std::lock_guard<std::mutex> lock(hang().mutex);
        return hang().hanging;
    }

    void open_impatiently()
    {
        if (picture_)
            pictrel_destroy(&picture_);
        application_.forget();
        picture_ = platform::StillPicture::create(file("a.jpg"), PATIENCE);
        ASSERT_NO_FATAL_FAILURE(set_up());
    }
};

TEST_F(AHangingDisk, FailsToParse)
{
    hang_after(0);
    open_impatiently();
    const store_test::CapturedLog log;
    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
    EXPECT_THAT(log.text(), HasSubstr("a.jpg: its reading hangs"));
    EXPECT_EQ(why_unplayable(file("a.jpg")),
              std::pair(platform::UnplayableFile::Kind::TooSlow, std::string("its reading hangs")));
    EXPECT_LT(pictrel_decode(picture_, 0), 0);
}

TEST_F(AHangingDisk, IsNotReadWithoutAThreadThatWatches)
{
    hang_after(0);
    open_impatiently();
    store_test::threads_left = 0;
    EXPECT_LT(pictrel_parse(picture_), 0);

    EXPECT_EQ(pictrel_parse(picture_), 0);
    EXPECT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
}

TEST_F(AHangingDisk, FailsToDecodeAndTellsNothingWhenItAnswersAfterAll)
{
    hang_after(1);
    open_impatiently();
    ASSERT_EQ(pictrel_parse(picture_), 0);
    ASSERT_THAT(application_.events(1), ElementsAre(PARSED));
    ASSERT_EQ(pictrel_decode(picture_, 0), 0);
    ASSERT_THAT(application_.events(2), ElementsAre(PARSED, DECODE_FAILED));

    answer();
    ASSERT_TRUE(all_closed());
    EXPECT_LT(pictrel_render(picture_), 0);
    pictrel_destroy(&picture_);
    EXPECT_THAT(application_.events(2), ElementsAre(PARSED, DECODE_FAILED));
}

TEST_F(AHangingDisk, IsNotReadEverMoreOften)
{
    hang_after(0);
    const store_test::CapturedLog log;
    for (int i = 0; i < 6; ++i) {
        open_impatiently();
        ASSERT_EQ(pictrel_parse(picture_), 0);
        ASSERT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
    }
    EXPECT_EQ(hanging(), 4);
    EXPECT_THAT(log.text(), HasSubstr("a.jpg: Earlier readings of it hang"));

    answer();
    ASSERT_TRUE(all_closed());
    open(file("a.jpg"));
    EXPECT_NO_FATAL_FAILURE(decode());
}

TEST_F(AHangingDisk, IsGivenUpWhereThePictureWasOpenedAhead)
{
    hang_after(1);
    platform::PictureAhead::get().open(file("a.jpg"), {WIDTH, HEIGHT});
    open_impatiently();
    ASSERT_EQ(pictrel_parse(picture_), 0);
    EXPECT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
}

TEST_F(AHangingDisk, IsSeenToComeSoFarByWhoeverWaitsForAPictureThatWasOpenedAhead)
{
    hang_after(1);
    platform::PictureAhead::get().open(file("a.jpg"), {WIDTH, HEIGHT});
    std::atomic<bool> cancelled{false};
    platform::JpegReader::Progress progress{cancelled};
    auto picture = std::async(std::launch::async, [&] {
        return platform::PictureAhead::get().take(file("a.jpg"), {WIDTH, HEIGHT}, progress);
    });
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (progress.steps == 0 && Clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_GT(progress.steps, 0u);
    cancelled = true;
    EXPECT_EQ(picture.get(), nullptr);
}

TEST(StandstillWatch, TellsAStandstillFromSlowWork)
{
    constexpr int LOOKS = platform::StandstillWatch::LOOKS;
    platform::StandstillWatch watch;
    for (unsigned int steps = 0; steps < 3; ++steps) {
        for (int look = 0; look < LOOKS; ++look)
            EXPECT_FALSE(watch.look(steps)) << "step " << steps << ", look " << look;
    }
    EXPECT_TRUE(watch.look(2));
}

} // namespace
} // namespace platform_test
