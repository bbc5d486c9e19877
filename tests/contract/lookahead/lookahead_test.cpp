// Which item is opened ahead, and when it is let go of.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "lookahead/lookahead.h"
#include "store_support/scratch.h"

namespace {

using platform::ContentKind;
using platform::Lookahead;
using platform::PlayedItem;
using testing::ElementsAre;
using testing::IsEmpty;

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
                    calls_.push_back(kind + " " + item.path + " " + item.subtitle);
                },
                [this, kind] { calls_.push_back("drop " + kind); }};
    }

    void begin(const std::string &path) { lookahead_.on_begun({path, {}}); }

    /** What was asked of the services since the last time. */
    std::vector<std::string> calls()
    {
        lookahead_.wait_until_done();
        return std::exchange(calls_, {});
    }

    std::string in_folder_ = "/b.mp4"; ///< what the folder has next
    bool memory_is_short_ = false;
    std::function<void()> while_looking_ = [] {};
    std::vector<std::string> calls_; ///< the look-ahead's thread's, until it is done
    Lookahead lookahead_{{[this](const std::string &) -> std::optional<PlayedItem> {
                              if (in_folder_.empty())
                                  return std::nullopt;
                              return PlayedItem{in_folder_, {}};
                          },
                          [this] {
                              while_looking_();
                              return memory_is_short_;
                          }}};
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
    lookahead_.on_begun({"/c.mp4", "/c.srt"});
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), ElementsAre("video /c.mp4 /c.srt"));
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

TEST_F(LookaheadTest, AnItemThatFollowsItselfIsLeftAlone)
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
    memory_is_short_ = true;
    begin("/a.mp4");

    lookahead_.on_nearly_over("/a.mp4");

    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(LookaheadTest, AServiceThatOpensNothingAheadIsNotAsked)
{
    lookahead_.set_opener(ContentKind::Video, {});
    begin("/a.mp4");
    lookahead_.on_nearly_over("/a.mp4");

    begin("/c.mp4");

    EXPECT_THAT(calls(), IsEmpty());
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

    EXPECT_THAT(calls_, ElementsAre("photo " + std::string(folder / "d.jpg") + " "));
    Lookahead::get().set_opener(ContentKind::Video, {});
    Lookahead::get().set_opener(ContentKind::Photo, {});
}

} // namespace
