// What is set up before anything else of the process. Not with sanitizers, which have an allocator
// of their own.

#include <cstdlib>

#include <malloc.h>

#include <gtest/gtest.h>

#include "app_framework/early_start.h"

namespace platform {
namespace {

constexpr size_t PICTURE = 8 * 1024 * 1024;
constexpr size_t LARGE = 160 * 1024;

/** Leaves with status 0 when a block lies in a mapping of its own after a picture was freed. */
[[noreturn]] void leave_with_where_a_block_lies()
{
    prepare_process();
    void *volatile picture = std::malloc(PICTURE);
    std::free(picture);
    const size_t before = mallinfo2().hblkhd;
    void *volatile block = std::malloc(LARGE);
    const bool mapped = mallinfo2().hblkhd >= before + LARGE;
    std::free(block);
    std::_Exit(mapped ? 0 : 1);
}

TEST(EarlyStart, LargeBlocksGoBackToTheSystemAlsoAfterAPictureWasFreed)
{
    EXPECT_EXIT(leave_with_where_a_block_lies(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace platform
