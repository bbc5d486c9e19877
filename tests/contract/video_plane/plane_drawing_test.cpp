#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "video_plane/plane_drawing.h"

namespace platform {
namespace {

constexpr uint32_t WHITE = 0xffffffff;
constexpr uint32_t BLACK = 0xff000000;
/** Of a picture as it is laid: more than one square of the copy each way, and not whole ones. */
constexpr Rect AREA = {5, 3, 70, 45};

PlaneBufferPtr white_buffer()
{
    PlaneBufferPtr buffer = VideoPlane::offscreen(80, 50)->acquire();
    std::fill_n(reinterpret_cast<uint32_t *>(buffer->pixels()), 80 * 50, WHITE);
    return buffer;
}

uint32_t pixel_of(PlaneBuffer &buffer, const Point &place)
{
    return pixels_of(buffer).row(place.y)[place.x];
}

void expect_everywhere(PlaneBuffer &buffer, const std::function<uint32_t(const Point &)> &expected)
{
    for (int y = 0; y < buffer.height(); ++y) {
        for (int x = 0; x < buffer.width(); ++x)
            ASSERT_EQ(pixel_of(buffer, {x, y}), expected({x, y})) << "at " << x << "," << y;
    }
}

bool is_inside(const Point &place)
{
    return AREA.covers({place.x, place.y, 1, 1});
}

TEST(PlaneDrawing, LaysAPictureEachWayIntoItsAreaAndNowhereElse)
{
    for (const bool transposed : {false, true}) {
        for (const bool mirrored_x : {false, true}) {
            for (const bool mirrored_y : {false, true}) {
                SCOPED_TRACE(testing::Message() << transposed << mirrored_x << mirrored_y);
                const Orientation orientation = {transposed, mirrored_x, mirrored_y};
                const Size stored = orientation.of(AREA.size());
                std::vector<uint32_t> pixels(static_cast<size_t>(stored.area()));
                for (uint32_t i = 0; i < pixels.size(); ++i)
                    pixels[i] = i;
                const PlaneBufferPtr buffer = white_buffer();
                copy_turned(pixels.data(), orientation, pixels_of(*buffer).part(AREA));
                expect_everywhere(*buffer, [&](const Point &place) -> uint32_t {
                    if (!is_inside(place))
                        return WHITE;
                    const Point pixel =
                        orientation.origin({place.x - AREA.x, place.y - AREA.y}, AREA.size());
                    return static_cast<uint32_t>(pixel.y * stored.width + pixel.x);
                });
            }
        }
    }
}

TEST(PlaneDrawing, BlacksOutWhatIsAroundAnArea)
{
    const PlaneBufferPtr buffer = white_buffer();
    black_out_around(AREA, *buffer);
    expect_everywhere(*buffer, [](const Point &place) { return is_inside(place) ? WHITE : BLACK; });
}

TEST(PlaneDrawing, BlacksOutEverythingAroundAnEmptyArea)
{
    const PlaneBufferPtr buffer = white_buffer();
    black_out_around({40, 25, 0, 0}, *buffer);
    expect_everywhere(*buffer, [](const Point &) { return BLACK; });
}

} // namespace
} // namespace platform
