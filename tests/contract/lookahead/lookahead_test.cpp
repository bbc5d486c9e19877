// Which item is opened ahead, and when it is let go of.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "lookahead/lookahead.h"
#include "store_support/scratch.h"
#include "store_support/thread_shortage.h"

namespace {

using platform::ContentKind;
using platform::Lookahead;
using platform::PlayedItem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int64_t PLENTY_KB = int64_t{8} * 1024 * 1024;
constexpr int64_t SHORT_KB =
    int64_t{300} * 1024; ///< for one more, but enough for one that is there
constexpr int64_t SCARCELY_ANY_KB = int64_t{50} * 1024;
constexpr std::chrono::hours FAR(1);
constexpr std::chrono::milliseconds MOMENT(10);

class LookaheadTest : public testing::Test {
  protected:
    void SetUp() override { record_openings(lookahead_); }

    void record_openings(Lookahead &lookahead)
    {
        lookahead.set_opener(ContentKind::Video, opener("video"));
        lookahead.set_opener(ContentKind::Photo, opener("photo"));
    }

    Lookahead::Opener opener(const std::string &kind)
    {
        return {[this, kind](const PlayedItem &item) {
                    record(kind + " " + item.path + " " + item.subtitle);
                },
                [this, kind] { record("drop " + kind); }};
    }

    void record(std::string call)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(std::move(call));
    }

    void begin(const std::string &path) { lookahead_.on_begun({path, {}}); }

    /** What was asked of the services since the last time. */
    std::vector<std::string> calls()
    {
        lookahead_.wait_until_done();
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(calls_, {});
    }

    bool wait_until(const std::function<bool()> &condition)
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > limit)
                return false;
            lookahead_.wait_until_done();
        }
        return true;
    }

    /** All that was asked of the services since the last time, when this is among it. */
    std::vector<std::string> calls_with(const std::string &call)
    {
        std::vector<std::string> all;
        wait_until([&] {
            for (std::string &one : calls())
                all.push_back(std::move(one));
            return std::find(all.begin(), all.end(), call) != all.end();
        });
        return all;
    }

    Lookahead::Environment environment()
    {
        Lookahead::Environment environment;
        environment.next_in_folder = [this](const std::string &) -> std::optional<PlayedItem> {
            if (in_folder_.empty())
                return std::nullopt;
            return PlayedItem{in_folder_, {}};
        };
        environment.available_memory_kb = [this] {
            while_looking_();
            looks_++;
            return memory_kb_.load();
        };
        environment.private_memory_kb = [this] { return private_kb_.load(); };
        environment.hanging_threads = [this] { return hanging_.load(); };
        environment.lead = MOMENT;
        environment.memory_interval = MOMENT;
        return environment;
    }

    std::string in_folder_ = "/b.mp4"; ///< what the folder has next
    std::atomic<int64_t> memory_kb_{PLENTY_KB};
    std::atomic<int64_t> private_kb_{int64_t{100} * 1024};
    std::atomic<int> hanging_{0};
    std::atomic<int> looks_{0}; ///< at the memory
    std::function<void()> while_looking_ = [] {};
    std::mutex mutex_;
    std::vector<std::string> calls_; ///< guarded
    Lookahead lookahead_{environment()};
};

TEST_F(LookaheadTest, TheNextOfTheFolderIsOpenedWhenAnItemIsNearlyOver)
{
    begin("/a.mp4");
    EXPECT_THAT(calls(), IsEmpty());

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 "));
}

TEST_F(LookaheadTest, WhatFollowedTheLastTimeGoesBeforeTheFolder)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    lookahead_.wait_until_done();
    lookahead_.on_begun({"/c.mp4", "/c.srt"});
    begin("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 ", "drop video"));

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /c.mp4 /c.srt"));
}

TEST_F(LookaheadTest, WhatBreaksInOnAnItemIsNotExpectedTheNextTime)
{
    begin("/a.mp4");
    begin("/c.mp4");
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    lookahead_.drop(); // held, and left from there
    begin("/d.mp4");
    begin("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 ", "drop video"));

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 "));
}

TEST_F(LookaheadTest, EachKindHasItsOwnService)
{
    in_folder_ = "/b.JPG";
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("photo /b.JPG "));
}

TEST_F(LookaheadTest, ItIsOpenedOnce)
{
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 "));
}

TEST_F(LookaheadTest, TheOneThatIsBegunIsItsServicesOwn)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 "));

    begin("/b.mp4");
    begin("/c.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, AWrongGuessIsDropped)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 "));

    begin("/c.jpg");

    EXPECT_THAT(calls(), ElementsAre("drop video"));
}

TEST_F(LookaheadTest, ItIsDroppedOnDemandAndOpenedAgain)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");

    lookahead_.drop();
    lookahead_.drop();
    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 ", "drop video", "video /b.mp4 "));
}

TEST_F(LookaheadTest, AnItemThatIsOverAlreadyHasNothingOpened)
{
    begin("/a.mp4");
    begin("/b.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, AnItemThatIsBegunWhileItIsLookedForIsNotOpenedTwice)
{
    while_looking_ = [this] { begin("/b.mp4"); };
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 ", "drop video"));
}

TEST_F(LookaheadTest, AFilmThatFollowsItselfIsOpenedOnceMore)
{
    in_folder_ = "/a.mp4";
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /a.mp4 "));

    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /a.mp4 "));
}

TEST_F(LookaheadTest, APhotoThatFollowsItselfIsLeftAlone)
{
    in_folder_ = "/a.jpg";
    begin("/a.jpg");

    lookahead_.on_nearly_over("/a.jpg");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, NothingIsOpenedWhereNothingIsKnownToFollow)
{
    in_folder_.clear();
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, NothingIsOpenedWhileMemoryIsShort)
{
    memory_kb_ = SHORT_KB;
    begin("/a.mp4");
    testing::internal::CaptureStderr();

    for (int round = 0; round < 2; ++round)
        lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), IsEmpty());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.find("memory is short"), log.rfind("memory is short")) << log;
    EXPECT_THAT(log, HasSubstr("memory is short"));
}

TEST_F(LookaheadTest, ItIsDroppedWhenMemoryGetsShortMeanwhile)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 "));

    memory_kb_ = SCARCELY_ANY_KB;

    EXPECT_THAT(calls_with("drop video"), ElementsAre("drop video"));
}

TEST_F(LookaheadTest, TheMemoryThatItTakesItselfIsNotHeldAgainstIt)
{
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");
    ASSERT_THAT(calls(), ElementsAre("video /b.mp4 "));

    memory_kb_ = SHORT_KB;

    const int looks = looks_;
    ASSERT_TRUE(wait_until([&] { return looks_ > looks + 2; }));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, ItIsOpenedShortlyBeforeAnEndThatIsKnown)
{
    begin("/a.jpg");
    lookahead_.on_end_expected("/a.jpg", FAR);
    EXPECT_THAT(calls(), IsEmpty());

    begin("/b.mp4");
    begin("/a.jpg");
    lookahead_.on_end_expected("/a.jpg", 3 * MOMENT);

    EXPECT_THAT(calls_with("video /b.mp4 "), Contains("video /b.mp4 "));
}

TEST_F(LookaheadTest, ItIsLetGoOfWhereTheItemStaysPastItsEnd)
{
    begin("/a.jpg");

    lookahead_.on_end_expected("/a.jpg", MOMENT);

    EXPECT_THAT(calls_with("drop video"), ElementsAre("video /b.mp4 ", "drop video"));
}

TEST_F(LookaheadTest, AnEndThatIsKnownIsNotMissedWhereTheFirstThreadWasNotToBeHad)
{
    store_test::threads_left = 0;
    begin("/a.jpg");

    lookahead_.on_end_expected("/a.jpg", 10 * MOMENT);

    EXPECT_THAT(calls_with("video /b.mp4 "), Contains("video /b.mp4 "));
}

TEST_F(LookaheadTest, WhatBreaksInOnAPhotoThatIsHeldIsNotExpectedTheNextTime)
{
    begin("/a.jpg");
    lookahead_.on_end_expected("/a.jpg", MOMENT);
    ASSERT_THAT(calls_with("drop video"), ElementsAre("video /b.mp4 ", "drop video"));
    begin("/c.mp4");
    begin("/a.jpg");

    lookahead_.on_nearly_over("/a.jpg");

    EXPECT_THAT(calls(), ElementsAre("video /b.mp4 "));
}

TEST_F(LookaheadTest, AnEndThatIsKnownIsNotPutOff)
{
    begin("/a.jpg");
    lookahead_.on_end_expected("/a.jpg", MOMENT);
    lookahead_.on_end_expected("/a.jpg", FAR);

    EXPECT_THAT(calls_with("drop video"), ElementsAre("video /b.mp4 ", "drop video"));
}

TEST_F(LookaheadTest, ADropEndsTheWaitForAnEndAsWell)
{
    begin("/a.jpg");
    lookahead_.on_end_expected("/a.jpg", FAR);

    lookahead_.drop();
    lookahead_.on_end_expected("/a.jpg", MOMENT);

    EXPECT_THAT(calls_with("video /b.mp4 "), Contains("video /b.mp4 "));
}

TEST_F(LookaheadTest, AServiceThatOpensNothingAheadIsNotAsked)
{
    lookahead_.set_opener(ContentKind::Video, {});
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");

    begin("/c.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, AFolderThatHangsHoldsUpNothingAndIsAskedAgainWhenItHasAnswered)
{
    std::promise<void> answer;
    const auto asked = std::make_shared<std::atomic<int>>(0);
    Lookahead::Environment with_hanging_folder = environment();
    with_hanging_folder.next_in_folder = [asked, answered = answer.get_future().share()](
                                             const std::string &) -> std::optional<PlayedItem> {
        ++*asked;
        answered.wait();
        return PlayedItem{"/b.mp4", {}};
    };
    with_hanging_folder.folder_patience = MOMENT;
    Lookahead lookahead(std::move(with_hanging_folder));
    record_openings(lookahead);
    std::promise<void> grown;
    lookahead.set_growth_listener([&] { grown.set_value(); });
    hanging_ = 4;

    lookahead.on_begun({"/a.mp4", {}});
    for (int round = 0; round < 3; ++round) {
        lookahead.on_nearly_over("/a.mp4");
        lookahead.on_round("/a.mp4");
    }
    EXPECT_EQ(grown.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(*asked, 1);

    answer.set_value();
    EXPECT_TRUE(wait_until([&] {
        lookahead.on_nearly_over("/a.mp4");
        lookahead.wait_until_done();
        return !calls().empty();
    }));
}

TEST_F(LookaheadTest, TheFolderIsReadAsThePlayerReadsIt)
{
    const store_test::ScratchDir folder;
    for (const char *name : {"a.mp4", "portrait_b.mp4", "c.txt", "d.jpg"})
        store_test::write_file(folder / name, "");
    record_openings(Lookahead::get());
    Lookahead::get().on_begun({folder / "a.mp4", {}});

    Lookahead::get().on_nearly_over(folder / "a.mp4");
    Lookahead::get().wait_until_done();

    EXPECT_THAT(calls(), ElementsAre("photo " + std::string(folder / "d.jpg") + " "));
    Lookahead::get().set_opener(ContentKind::Video, {});
    Lookahead::get().set_opener(ContentKind::Photo, {});
}

/** With a process whose own memory is what the test says. */
TEST_F(LookaheadTest, ChangesAreToldOnceEach)
{
    begin("/a.mp4");
    ASSERT_THAT(calls(), IsEmpty());
    lookahead_.call_at_change([this] { record("changed"); });
    lookahead_.on_nearly_over("/a.mp4");
    EXPECT_THAT(calls(), Not(Contains("changed")));
    begin("/b.mp4");
    begin("/c.mp4");
    EXPECT_THAT(calls_with("changed"), ElementsAre("changed"));
    lookahead_.call_at_change([this] { record("changed"); });
    lookahead_.on_round("/c.mp4");
    EXPECT_THAT(calls(), ElementsAre("changed"));
}

class GrowthTest : public LookaheadTest {
  protected:
    static constexpr int64_t TOO_MUCH_KB = int64_t{301} * 1024;

    void SetUp() override
    {
        lookahead_.set_growth_listener([this] { record("grown"); });
    }

    /** What was said when these were begun one after the other. */
    std::vector<std::string> after(const std::vector<std::string> &paths)
    {
        for (const std::string &path : paths)
            begin(path);
        return calls();
    }
};

TEST_F(GrowthTest, IsToldOnceAtAChangeThatHasBeenSeenBefore)
{
    ASSERT_THAT(after({"/a.mp4", "/b.mp4", "/a.mp4"}), IsEmpty());
    private_kb_ = TOO_MUCH_KB;
    EXPECT_THAT(calls(), IsEmpty()) << "in the middle of an item";

    EXPECT_THAT(after({"/b.mp4", "/a.mp4"}), ElementsAre("grown"));
}

TEST_F(GrowthTest, IsToldOfThreadsThatHangAsWell)
{
    ASSERT_THAT(after({"/a.mp4", "/b.mp4", "/a.mp4"}), IsEmpty());
    hanging_ = 4;

    EXPECT_THAT(after({"/b.mp4"}), ElementsAre("grown"));
}

TEST_F(GrowthTest, IsNotToldInTheFirstLap)
{
    ASSERT_THAT(after({"/a.mp4", "/b.mp4"}), IsEmpty());
    private_kb_ = TOO_MUCH_KB;

    EXPECT_THAT(after({"/a.mp4"}), IsEmpty());
}

TEST_F(GrowthTest, IsToldBetweenTheRoundsOfAnItemThatPlaysOverAndOver)
{
    begin("/a.mp4");
    lookahead_.on_round("/a.mp4");
    ASSERT_THAT(calls(), IsEmpty());
    private_kb_ = TOO_MUCH_KB;

    lookahead_.on_round("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("grown"));
}

TEST_F(GrowthTest, TheFirstRoundOfAnotherItemIsHeldAgainstNothing)
{
    begin("/a.mp4");
    lookahead_.on_round("/a.mp4");
    begin("/b.mp4");
    lookahead_.wait_until_done();
    private_kb_ = TOO_MUCH_KB;

    lookahead_.on_round("/b.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

} // namespace
