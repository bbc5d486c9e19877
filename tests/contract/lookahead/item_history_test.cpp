// What followed what.

#include <gtest/gtest.h>

#include "lookahead/item_history.h"

namespace {

using platform::ItemHistory;
using platform::PlayedItem;

TEST(ItemHistory, AfterOneRoundItKnowsWhatFollows)
{
    ItemHistory history;
    for (const char *path : {"/a.mp4", "/b.mp4", "/a.mp4"})
        history.on_begun({path, "/subtitle.srt"}, false);

    EXPECT_EQ(history.after("/a.mp4"), (PlayedItem{"/b.mp4", "/subtitle.srt"}));
    EXPECT_EQ(history.after("/b.mp4"), (PlayedItem{"/a.mp4", "/subtitle.srt"}));
    EXPECT_EQ(history.latest().path, "/a.mp4");
}

TEST(ItemHistory, WhatHasNotBeenFollowedYetIsNotKnown)
{
    ItemHistory history;
    EXPECT_EQ(history.latest().path, "");

    history.on_begun({"/a.mp4", {}}, false);

    EXPECT_FALSE(history.after("/a.mp4"));
    EXPECT_FALSE(history.after("/b.mp4"));
}

TEST(ItemHistory, TheLastTimeCounts)
{
    ItemHistory history;
    for (const char *path : {"/a.mp4", "/b.mp4", "/a.mp4", "/c.mp4"})
        history.on_begun({path, {}}, false);

    EXPECT_EQ(history.after("/a.mp4")->path, "/c.mp4");
}

TEST(ItemHistory, WhatBrokeInOnAnItemFollowsNoEnd)
{
    ItemHistory history;
    for (const char *path : {"/a.mp4", "/b.mp4", "/a.mp4"})
        history.on_begun({path, {}}, false);

    history.on_begun({"/c.mp4", {}}, true);

    EXPECT_EQ(history.after("/a.mp4")->path, "/b.mp4");
    EXPECT_EQ(history.latest().path, "/c.mp4");
}

TEST(ItemHistory, ItDoesNotGrowWithoutEnd)
{
    ItemHistory history(2);
    for (const char *path : {"/a.mp4", "/b.mp4", "/c.mp4", "/d.mp4"})
        history.on_begun({path, {}}, false);

    EXPECT_FALSE(history.after("/a.mp4")) << "forgotten";
    EXPECT_EQ(history.after("/c.mp4")->path, "/d.mp4");
}

} // namespace
