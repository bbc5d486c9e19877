// When a process has grown too much.

#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "base/worker_thread.h"
#include "lookahead/memory_growth.h"

namespace {

using platform::MemoryGrowth;
using platform::private_memory_kb;

constexpr int64_t MB = 1024;

TEST(MemoryGrowth, ItIsHeldAgainstTheDearestChangeOfTheFirstLap)
{
    MemoryGrowth growth;
    EXPECT_FALSE(growth.on_change("", "a", 60 * MB));
    EXPECT_FALSE(growth.on_change("a", "b", 400 * MB));
    EXPECT_FALSE(growth.on_change("b", "a", 150 * MB));

    EXPECT_FALSE(growth.on_change("a", "b", 600 * MB));
    EXPECT_TRUE(growth.on_change("b", "a", 600 * MB + 1));
    EXPECT_EQ(growth.level_kb(), 400 * MB);
}

TEST(MemoryGrowth, WhatComesForTheFirstTimeMayTakeWhatItTakes)
{
    MemoryGrowth growth;
    growth.on_change("a", "b", 60 * MB);

    EXPECT_FALSE(growth.on_change("b", "c", 900 * MB));
    EXPECT_FALSE(growth.on_change("a", "c", 1000 * MB));
    EXPECT_FALSE(growth.on_change("a", "b", 1100 * MB));
}

TEST(MemoryGrowth, ThreadsThatHangAreTooManyOnceTheFirstLapIsOver)
{
    MemoryGrowth growth;
    EXPECT_FALSE(growth.on_change("a", "b", 60 * MB, 40));
    EXPECT_FALSE(growth.on_change("b", "a", 60 * MB, 40));

    EXPECT_FALSE(growth.on_change("a", "b", 60 * MB, 3));
    EXPECT_TRUE(growth.on_change("b", "a", 60 * MB, 4));
}

// A thread that has a child by vfork() waits for it as one in a read waits for its disk.
TEST(MemoryGrowth, ThreadsThatHangCountUnlessADiskDoesNotAnswer)
{
    using platform::hanging_threads;
    constexpr std::chrono::milliseconds AT_ONCE(0);
    std::promise<void> release;
    platform::WorkerThread::run_apart(
        "test", [wait = release.get_future().share()] { wait.wait(); }, AT_ONCE);
    EXPECT_EQ(hanging_threads(AT_ONCE), 1);
    EXPECT_EQ(hanging_threads(), 0) << "it may still end";
    int answer[2];
    ASSERT_EQ(pipe(answer), 0);

    std::thread reader([&answer] {
        if (vfork() == 0) {
            close(answer[1]);
            char byte = 0;
            _exit(static_cast<int>(read(answer[0], &byte, 1)));
        }
    });
    while (hanging_threads(AT_ONCE) > 0)
        std::this_thread::yield();
    close(answer[1]);
    reader.join();

    EXPECT_EQ(hanging_threads(AT_ONCE), 1);
    close(answer[0]);
    release.set_value();
}

TEST(MemoryGrowth, OfVeryManyItemsTheFirstLapNeedNotEnd)
{
    MemoryGrowth growth(2);
    growth.on_change("", "a", 60 * MB);
    growth.on_change("a", "b", 100 * MB);

    EXPECT_TRUE(growth.on_change("b", "c", 301 * MB));
}

TEST(MemoryGrowth, PrivateMemoryCountsWhatHasBeenTouchedAndNotWhatIsShared)
{
    constexpr size_t SIZE = size_t{64} * 1024 * 1024;
    constexpr int64_t SIZE_KB = SIZE / 1024;
    const int64_t before = private_memory_kb();
    ASSERT_GT(before, 0);

    const auto map = [](int sharing) {
        return mmap(nullptr, SIZE, PROT_READ | PROT_WRITE, MAP_ANONYMOUS | MAP_POPULATE | sharing,
                    -1, 0);
    };
    void *shared = map(MAP_SHARED);
    ASSERT_NE(shared, MAP_FAILED);
    EXPECT_LT(private_memory_kb(), before + SIZE_KB / 2);
    void *own = map(MAP_PRIVATE);
    ASSERT_NE(own, MAP_FAILED);
    EXPECT_GT(private_memory_kb(), before + SIZE_KB / 2);
    munmap(own, SIZE);
    munmap(shared, SIZE);
    EXPECT_LT(private_memory_kb(), before + SIZE_KB / 2);
}

} // namespace
