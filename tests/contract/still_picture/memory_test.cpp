#include <cstdio>
#include <fstream>

#include <unistd.h>

#include "still_picture/picture_test.h"

namespace platform_test {
namespace {

/** The most memory that this process has had, in kilobytes. */
long peak_memory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    long kilobytes = 0;
    while (status >> word) {
        if (word == "VmHWM:")
            status >> kilobytes;
    }
    return kilobytes;
}

using AHugePicture = PictureTest;

TEST_F(AHugePicture, OfAHundredMegapixelsCostsSixtyFourMegabytesAtMost)
{
    use_panel(1920, 1080);
    write_jpeg(file("huge.jpg"), {10000, 10000, quarters(10000, 10000)});

    int result[2];
    ASSERT_EQ(pipe(result), 0);
    const pid_t child = fork();
    if (child == 0) {
        // Only the peak of a process tells, and this one's may have been higher before.
        const long before = peak_memory();
        open(file("huge.jpg"));
        decode();
        pictrel_render(picture_);
        const long grown =
            HasFailure() || quarters_of(420, 0, 1080, 1080) != "RGBW" ? -1 : peak_memory() - before;
        const ssize_t written = write(result[1], &grown, sizeof grown);
        _exit(written == sizeof grown ? 0 : 1);
    }
    close(result[1]);
    long grown = 0;
    ASSERT_EQ(read(result[0], &grown, sizeof grown), static_cast<ssize_t>(sizeof grown));
    close(result[0]);
    waitpid(child, nullptr, 0);

    ASSERT_GT(grown, 0) << "the picture was not shown";
    // The decoded picture, the plane's buffer, and this test's own copy of it.
    const long results = (1080 * 1080 + 2 * 1920 * 1080) * 4 / 1024;
    EXPECT_LE(grown, 64 * 1024 + results);
    printf("grown by %ld KiB, %ld of them results\n", grown, results);
}

} // namespace
} // namespace platform_test
