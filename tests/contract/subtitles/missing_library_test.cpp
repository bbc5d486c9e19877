#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "subtitles/cue_reader.h"

namespace {

bool libraries_are_missing = false;

} // namespace

// Stands before the C library's in this program.
extern "C" void *dlopen(const char *file, int mode)
{
    using Open = void *(*)(const char *, int);
    static const auto open = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    return open(libraries_are_missing ? "there-is-no-such-library.so" : file, mode);
}

namespace {

// In a process of its own, since the libraries are loaded once and for good.
TEST(SubtitleWithoutLibraries, IsRefusedWithTheReason)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto read = [] {
        libraries_are_missing = true;
        std::string error;
        const auto script =
            platform::read_script("1\n00:00:01,000 --> 00:00:02,000\nHello\n", "srt", error);
        std::fputs(error.c_str(), stderr);
        std::exit(script ? 1 : 0);
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(0),
                "nothing to read it with: there-is-no-such-library.so: cannot open");
}

} // namespace
