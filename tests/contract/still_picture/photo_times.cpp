/*
 * Prints what a photo costs on a panel of 1920x1080, in milliseconds of processor time from its
 * file to its pixels on the plane, beside the same photo without its colour profile, in turns. A
 * line for each kind of photo: its name, the time without, the time with.
 */
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "still_picture/compose.h"
#include "still_picture/jpeg_maker.h"
#include "still_picture/jpeg_reader.h"
#include "still_picture/profile_maker.h"
#include "store_support/scratch.h"

namespace {

using namespace platform;
using namespace platform_test;

constexpr int ROUNDS = 15;
constexpr Size PANEL = {1920, 1080};
constexpr Size CAMERA = {4000, 3000};

double processor_ms()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/** Large soft shapes, fine ones, and the noise of a camera, so that a file has 2.7 bits a pixel. */
uint32_t photo_color(int x, int y)
{
    static uint32_t noise = 1;
    noise = noise * 1664525 + 1013904223;
    const int grain = static_cast<int>(noise >> 29) - 4;
    const double fine = 20 * std::sin(x * 0.3 + y * 0.2) + grain;
    const auto number = [fine](double soft) {
        return static_cast<uint32_t>(std::clamp(128 + 100 * soft + fine, 0.0, 255.0));
    };
    // Black ink is where the photo is dark.
    return number(std::sin(x * 0.01)) / 4 << 24 | number(std::sin(x * 0.01)) << 16 |
           number(std::sin(y * 0.013 + x * 0.002)) << 8 | number(std::sin(x * 0.004 - y * 0.01));
}

struct Kind {
    const char *name;
    Size size;
    J_COLOR_SPACE space;
    Bytes profile;
};

void show(const std::string &path, PlaneBuffer &buffer)
{
    const std::atomic<bool> go_on{false};
    JpegReader::Progress progress{go_on};
    JpegReader reader(progress);
    Image image;
    if (!reader.open(path) || !reader.decode(size_to_keep(reader.size(), PANEL), image))
        std::abort();
    compose(image, reader.size(), reader.orientation(), buffer);
}

void measure(const Kind &kind, const std::string &folder)
{
    const std::string paths[] = {folder + "/without.jpg", folder + "/with.jpg"};
    JpegOrder order{kind.size.width, kind.size.height, photo_color};
    order.space = kind.space;
    write_jpeg(paths[0], order);
    order.app2 = in_chunks(kind.profile);
    write_jpeg(paths[1], order);

    // A plane on a screen keeps its buffers.
    const PlaneBufferPtr buffer = VideoPlane::offscreen(PANEL.width, PANEL.height)->acquire();
    double best[] = {1e9, 1e9};
    for (int round = 0; round < ROUNDS; ++round) {
        for (size_t i = 0; i < std::size(paths); ++i) {
            const double start = processor_ms();
            show(paths[i], *buffer);
            best[i] = std::min(best[i], processor_ms() - start);
        }
    }
    std::printf("%s %.2f %.2f\n", kind.name, best[0], best[1]);
}

} // namespace

int main()
{
    const store_test::ScratchDir folder;
    const Kind kinds[] = {
        {"p3-1080p", PANEL, JCS_YCbCr, display_p3()},
        {"p3-12mp", CAMERA, JCS_YCbCr, display_p3()},
        {"adobe-12mp", CAMERA, JCS_YCbCr, adobe_rgb()},
        {"srgb-12mp", CAMERA, JCS_YCbCr, srgb()},
        {"table-12mp", CAMERA, JCS_YCbCr, rgb_table()},
        {"cmyk-12mp", CAMERA, JCS_YCCK, ink()},
    };
    for (const Kind &kind : kinds)
        measure(kind, folder / "");
    return 0;
}
