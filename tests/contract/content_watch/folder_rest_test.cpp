// When a folder that has changed is at rest.

#include <gtest/gtest.h>

#include "content_watch/folder_rest.h"

namespace {

using namespace std::chrono_literals;
using platform::FolderRest;
using platform::FolderState;
using Watch = FolderRest::Watch;

constexpr FolderState BEFORE{2, 20};
constexpr FolderState AFTER{3, 30};
constexpr FolderState LATER{4, 40};

class FolderRestTest : public testing::Test {
  protected:
    void SetUp() override { EXPECT_FALSE(look(Watch::New, BEFORE)); }

    bool look(Watch watch, const std::optional<FolderState> &state)
    {
        return rest_.on_look(now_, watch, state);
    }

    /** From now to the next look. */
    std::optional<std::chrono::nanoseconds> until_look() const
    {
        const auto next = rest_.next_look();
        return next ? std::optional<std::chrono::nanoseconds>(*next - now_) : std::nullopt;
    }

    FolderRest::Time now_{1h};
    FolderRest rest_{{}};
};

TEST_F(FolderRestTest, AFolderInWhichNothingHappensIsNotLookedAt)
{
    EXPECT_FALSE(rest_.next_look());
}

TEST_F(FolderRestTest, IsLookedAtTenSecondsAfterTheLastEvent)
{
    for (int event = 0; event < 3; ++event) {
        now_ += 9s;
        rest_.on_event(now_);
        EXPECT_EQ(until_look(), 10s);
    }
    now_ += 10s;
    EXPECT_TRUE(look(Watch::Same, AFTER));
    EXPECT_FALSE(rest_.next_look());
}

TEST_F(FolderRestTest, EventsThatLeaveItAsItWasMakeNoDifference)
{
    rest_.on_event(now_);
    EXPECT_FALSE(look(Watch::Same, BEFORE));
    EXPECT_FALSE(rest_.next_look());
}

TEST_F(FolderRestTest, AnotherFolderInItsPlaceIsGivenTheSameTimeToComeToRest)
{
    rest_.on_event(now_);
    EXPECT_FALSE(look(Watch::New, AFTER));
    EXPECT_EQ(until_look(), 10s);
    EXPECT_TRUE(look(Watch::Same, AFTER));
}

TEST_F(FolderRestTest, AFolderThatIsAwayIsLookedForUntilItIsBack)
{
    for (int absence = 0; absence < 2; ++absence) {
        EXPECT_FALSE(look(Watch::Nobody, std::nullopt));
        EXPECT_EQ(until_look(), 10s);
    }
    EXPECT_FALSE(look(Watch::New, BEFORE));
    EXPECT_EQ(until_look(), 10s);
    EXPECT_FALSE(look(Watch::Same, BEFORE));
    EXPECT_FALSE(rest_.next_look());
}

TEST_F(FolderRestTest, AFolderThatCannotBeReadHasNotChanged)
{
    rest_.on_event(now_);
    EXPECT_FALSE(look(Watch::Same, std::nullopt));
    EXPECT_EQ(until_look(), 10s);
    EXPECT_TRUE(look(Watch::Same, AFTER));
}

TEST_F(FolderRestTest, AFolderThatWasNotThereAtFirstHasChangedWhenItComes)
{
    FolderRest rest{{}};
    EXPECT_FALSE(rest.on_look(now_, Watch::Nobody, std::nullopt));
    EXPECT_FALSE(rest.on_look(now_, Watch::New, AFTER));
    EXPECT_TRUE(rest.on_look(now_, Watch::Same, AFTER));
}

TEST_F(FolderRestTest, WithNobodyToTellItIsLookedAtEachMinuteUntilItIsTheSameTwice)
{
    EXPECT_FALSE(look(Watch::Nobody, BEFORE));
    EXPECT_EQ(until_look(), 60s);
    EXPECT_FALSE(look(Watch::Nobody, AFTER));
    EXPECT_FALSE(look(Watch::Nobody, LATER));
    EXPECT_EQ(until_look(), 60s);
    EXPECT_TRUE(look(Watch::Nobody, LATER));
}

} // namespace
