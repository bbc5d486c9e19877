// A player that runs for weeks: nothing may be left behind by a file.

#include <filesystem>
#include <iterator>

#include <gmock/gmock.h>

#include "player_fixture.h"

namespace player_test {
namespace {

class Resources : public PlayerTest {
  protected:
    static size_t entries(const char *folder)
    {
        const std::filesystem::directory_iterator begin(folder);
        return static_cast<size_t>(std::distance(begin, std::filesystem::directory_iterator()));
    }

    static size_t descriptors() { return entries("/proc/self/fd"); }
    static size_t threads() { return entries("/proc/self/task"); }
};

TEST_F(Resources, FilesLeaveNoDescriptorAndNoThreadBehind)
{
    Clip facts;
    facts.frames = 10;
    const std::string file = clip("a.mp4", facts);
    for (int round = 0; round < 5; round++) {
        ASSERT_TRUE(playing(file));
        player_->unprepare();
    }
    ASSERT_TRUE(prepared(file));
    const size_t usual_descriptors = descriptors();
    const size_t usual_threads = threads();
    player_->unprepare();

    for (int round = 0; round < 45; round++) {
        // Every third one is let go of in the midst of its preparation.
        if (round % 3 == 0)
            ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
        else if (round % 3 == 1)
            ASSERT_TRUE(prepared(file));
        else
            ASSERT_TRUE(playing(file));
        player_->unprepare();
    }

    ASSERT_TRUE(prepared(file));
    EXPECT_TRUE(wait_for([&] { return descriptors() <= usual_descriptors + 2; }))
        << descriptors() << " open, " << usual_descriptors << " before";
    EXPECT_TRUE(wait_for([&] { return threads() <= usual_threads + 2; }))
        << threads() << " threads, " << usual_threads << " before";
}

} // namespace
} // namespace player_test
