#include <gmock/gmock.h>

#include <atomic>

#include "base/bands.h"

namespace platform {
namespace {

/** How often each of so many rows was worked on, in bands that begin where the last one ends. */
std::vector<int> worked_on(Bands &bands, int rows, int wanted)
{
    std::vector<std::atomic<int>> times(static_cast<size_t>(rows));
    bands.run(rows, wanted, [&](int band, int first, int count) {
        EXPECT_LT(band, bands.count(wanted));
        for (int row = first; row < first + count; ++row)
            ++times[static_cast<size_t>(row)];
    });
    return {times.begin(), times.end()};
}

TEST(Bands, CoverEachRowOnce)
{
    Bands bands(4);
    for (int rows : {1, 2, 3, 7, 1080}) {
        for (int wanted : {0, 1, 2, 3, 100})
            EXPECT_THAT(worked_on(bands, rows, wanted), testing::Each(1))
                << rows << " rows, " << wanted << " bands";
    }
}

TEST(Bands, AreWorkedOnAtOnce)
{
    Bands bands(2);
    std::promise<void> first_came;
    std::promise<void> second_came;
    bands.run(2, 2, [&](int band, int, int) {
        std::promise<void> &own = band == 0 ? first_came : second_came;
        std::promise<void> &other = band == 0 ? second_came : first_came;
        own.set_value();
        EXPECT_EQ(other.get_future().wait_for(std::chrono::seconds(40)), std::future_status::ready);
    });
}

TEST(Bands, OfWhichOneIsEnoughAreTheCallersOwn)
{
    Bands bands(4);
    const auto caller = std::this_thread::get_id();
    bands.run(9, 1, [&](int band, int first, int count) {
        EXPECT_EQ(band, 0);
        EXPECT_EQ(first, 0);
        EXPECT_EQ(count, 9);
        EXPECT_EQ(std::this_thread::get_id(), caller);
    });
}

} // namespace
} // namespace platform
