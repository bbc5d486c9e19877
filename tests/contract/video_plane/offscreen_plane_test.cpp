#include <vector>

#include <gtest/gtest.h>

#include "video_plane/video_plane.h"

namespace platform {
namespace {

TEST(OffscreenPlane, ShowsEachPresentedPictureToItsListener)
{
    std::vector<int> seen;
    const auto plane = VideoPlane::offscreen(
        8, 4, [&seen](const PlaneBuffer &picture) { seen.push_back(picture.width()); });

    const PlaneBufferPtr picture = plane->acquire();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->height(), 4);
    EXPECT_EQ(picture->stride(), 32);
    EXPECT_EQ(picture->size(), 128u);
    EXPECT_TRUE(plane->present(picture));
    EXPECT_TRUE(plane->present(plane->acquire()));

    EXPECT_EQ(seen, (std::vector<int>{8, 8}));
}

TEST(OffscreenPlane, CountsWhatWasPresentedDroppedAndLate)
{
    const auto plane = VideoPlane::offscreen(2, 2);

    plane->present(plane->acquire());
    plane->count_dropped();
    plane->count_dropped();
    plane->count_late();
    plane->count_late();
    plane->count_late();

    EXPECT_EQ(plane->statistics().presented, 1u);
    EXPECT_EQ(plane->statistics().dropped, 2u);
    EXPECT_EQ(plane->statistics().late, 3u);
}

TEST(OffscreenPlane, ShowsAStandInWhereNoPictureHasComeMeanwhileAndCountsNone)
{
    int shown = 0;
    const auto plane = VideoPlane::offscreen(2, 2, [&shown](const PlaneBuffer &) { ++shown; });

    EXPECT_TRUE(plane->present_stand_in(plane->acquire(), 0));
    EXPECT_EQ(plane->statistics().presented, 0u);
    plane->present(plane->acquire());
    EXPECT_FALSE(plane->present_stand_in(plane->acquire(), 0));
    EXPECT_TRUE(plane->present_stand_in(plane->acquire(), 1));

    EXPECT_EQ(shown, 3);
    EXPECT_EQ(plane->statistics().presented, 1u);
}

TEST(OffscreenPlane, KeepsTheLastPictureOnly)
{
    const auto plane = VideoPlane::offscreen(2, 2);

    std::weak_ptr<PlaneBuffer> first;
    std::weak_ptr<PlaneBuffer> second;
    {
        const PlaneBufferPtr picture = plane->acquire();
        first = picture;
        plane->present(picture);
    }
    EXPECT_FALSE(first.expired());
    {
        const PlaneBufferPtr picture = plane->acquire();
        second = picture;
        plane->present(picture);
    }

    EXPECT_TRUE(first.expired());
    EXPECT_FALSE(second.expired());
}

TEST(OffscreenPlane, RefusesToPresentNothing)
{
    EXPECT_FALSE(VideoPlane::offscreen(2, 2)->present(nullptr));
}

} // namespace
} // namespace platform
