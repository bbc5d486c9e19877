// Pictures out of fields: full height where nothing moves, no comb where something does.

#include <functional>
#include <vector>

#include <gmock/gmock.h>

#include "colour/field_picture.h"

namespace platform {
namespace {

constexpr int HEIGHT = 36;
/** Not a number of whole vectors, and more than a stretch. */
constexpr int WIDTH = 601;

/** What a film shows at a place and a time, the number of a field. */
using Film = std::function<int(int x, int y, int field)>;

/** Frames of a film, in samples of 8 bits or of 16. */
template <typename Sample> class Woven {
  public:
    Woven(Film film, bool bottom_first, int largest)
        : film_(std::move(film)), bottom_first_(bottom_first), largest_(largest)
    {
    }

    /** A frame's rows from both of its fields. */
    std::vector<Sample> frame(int number) const
    {
        std::vector<Sample> samples;
        for (int y = 0; y < HEIGHT; y++)
            for (int x = 0; x < WIDTH; x++)
                samples.push_back(sample(x, y, 2 * number + ((y % 2 == 1) != bottom_first_)));
        return samples;
    }

    /** What the film shows in all rows. */
    std::vector<Sample> whole(int field) const
    {
        std::vector<Sample> samples;
        for (int y = 0; y < HEIGHT; y++)
            for (int x = 0; x < WIDTH; x++)
                samples.push_back(sample(x, y, field));
        return samples;
    }

    /** The picture of a field of frame 1, of three. @param alone nothing is there but that frame */
    std::vector<Sample> picture(bool first_field,
                                const field_rows::FieldVersion &version = best_field_rows(),
                                bool alone = false) const
    {
        const std::vector<Sample> frames[] = {frame(0), frame(1), frame(2)};
        const auto bytes = [](const std::vector<Sample> &samples) {
            return reinterpret_cast<const uint8_t *>(samples.data());
        };
        const ptrdiff_t stride = WIDTH * sizeof(Sample);
        const WovenPlanes planes = {bytes(frames[alone ? 1 : 0]),
                                    bytes(frames[1]),
                                    bytes(frames[alone ? 1 : 2]),
                                    {stride, stride, stride},
                                    WIDTH,
                                    HEIGHT,
                                    sizeof(Sample),
                                    largest_};
        std::vector<Sample> made(static_cast<size_t>(WIDTH) * HEIGHT);
        auto *to = reinterpret_cast<uint8_t *>(made.data());
        const Field field = {first_field, first_field == bottom_first_};
        // In two goes, as two threads do it.
        fill_field(planes, field, 0, HEIGHT / 3, to, stride, version);
        fill_field(planes, field, HEIGHT / 3, HEIGHT - HEIGHT / 3, to, stride, version);
        return made;
    }

  private:
    Sample sample(int x, int y, int field) const
    {
        return static_cast<Sample>(int64_t{film_(x, y, field)} * largest_ / 255);
    }

    const Film film_;
    const bool bottom_first_;
    const int largest_;
};

/** Calls for each order of fields and each field of the frame. */
template <typename Sample>
void for_each_field(const Film &film, int largest,
                    const std::function<void(const Woven<Sample> &, bool first)> &look)
{
    for (const bool bottom_first : {false, true}) {
        for (const bool first : {true, false}) {
            SCOPED_TRACE(testing::Message() << (bottom_first ? "bottom" : "top") << " first, the "
                                            << (first ? "first" : "second") << " field");
            look(Woven<Sample>(film, bottom_first, largest), first);
        }
    }
}

constexpr int MOST_NOISE = 6;

/** Lines of one row, as fine as a picture has them, with a little noise in each field. */
int fine_lines(int x, int y, int field)
{
    const int noise = (x * 7 + y * 5 + field) % (MOST_NOISE + 1);
    return (y % (x < WIDTH / 2 ? 2 : 4) == 1 ? 230 : 20) + noise;
}

/** A bar that moves by half its width with each field, so that no field is like another near it. */
int moving_bar(int x, int, int field)
{
    return x / 20 % 20 == field ? 235 : 16;
}

/** Strokes like those of letters, as far apart as they move from frame to frame. */
int passing_strokes(int x, int, int field)
{
    const int place = x - 8 * field - 200;
    return place >= 0 && place < 2 * 16 && place % 16 < 5 ? 235 : 16;
}

TEST(AFieldsPicture, HasFullHeightWhereNothingMoves)
{
    for_each_field<uint8_t>(fine_lines, 255, [](const Woven<uint8_t> &woven, bool first) {
        EXPECT_THAT(woven.picture(first), testing::Pointwise(testing::DoubleNear(MOST_NOISE),
                                                             woven.whole(first ? 2 : 3)));
    });
    for_each_field<uint16_t>(fine_lines, 1023, [](const Woven<uint16_t> &woven, bool first) {
        EXPECT_THAT(woven.picture(first),
                    testing::Pointwise(testing::DoubleNear(4 * MOST_NOISE + 1),
                                       woven.whole(first ? 2 : 3)));
    });
}

TEST(AFieldsPicture, ShowsWhatMovesWhereItIsAtThatTime)
{
    for (const auto &film : {moving_bar, passing_strokes}) {
        for_each_field<uint8_t>(film, 255, [](const Woven<uint8_t> &woven, bool first) {
            EXPECT_EQ(woven.picture(first), woven.whole(first ? 2 : 3));
        });
        for_each_field<uint16_t>(film, 65535, [](const Woven<uint16_t> &woven, bool first) {
            EXPECT_EQ(woven.picture(first), woven.whole(first ? 2 : 3));
        });
    }
}

TEST(AFieldsPicture, IsMadeOfTheFieldsOwnRowsWhereThereIsNoOtherFrame)
{
    for (const auto &film : {moving_bar, passing_strokes}) {
        for_each_field<uint8_t>(film, 255, [](const Woven<uint8_t> &woven, bool first) {
            EXPECT_EQ(woven.picture(first, best_field_rows(), true), woven.whole(first ? 2 : 3));
        });
        for_each_field<uint16_t>(film, 65535, [](const Woven<uint16_t> &woven, bool first) {
            EXPECT_EQ(woven.picture(first, best_field_rows(), true), woven.whole(first ? 2 : 3));
        });
    }
}

TEST(AFieldsPicture, TakesFieldsOnBothSidesForStillWhoseMeanIsNearEach)
{
    constexpr int BEFORE = 100;
    for (const int change : {2 * MOST_NOISE + 1, 2 * MOST_NOISE + 2}) {
        const Film film = [change](int, int y, int field) {
            return y % 2 == 0 ? 0 : field == 1 ? BEFORE : BEFORE + change;
        };
        const uint8_t filled =
            Woven<uint8_t>(film, false, 255).picture(true)[static_cast<size_t>(WIDTH) * 17];
        EXPECT_EQ(filled, change / 2 == MOST_NOISE ? BEFORE + change / 2 : 0) << change;
    }
}

TEST(AFieldsPicture, IsTheSameWhateverTheProcessor)
{
    const Film noise = [](int x, int y, int field) {
        return static_cast<int>((x * 7919U + y * 104729U + field * 1299709U) * 2654435761U >> 24);
    };
    for_each_field<uint8_t>(noise, 255, [](const Woven<uint8_t> &woven, bool first) {
        EXPECT_EQ(woven.picture(first), woven.picture(first, field_rows::BASE));
    });
    for_each_field<uint16_t>(noise, 65535, [](const Woven<uint16_t> &woven, bool first) {
        EXPECT_EQ(woven.picture(first), woven.picture(first, field_rows::BASE));
    });
}

TEST(AFieldsPicture, CanBeLowerThanAFilter)
{
    for (const int height : {1, 2, 3}) {
        const uint8_t frame[] = {10, 20, 30};
        const uint8_t next[] = {10, 20, 30};
        const WovenPlanes planes = {frame, frame, next, {1, 1, 1}, 1, height, 1, 255};
        uint8_t made[3] = {};
        fill_field(planes, {true, false}, 0, height, made, 1);
        EXPECT_TRUE(std::equal(made, made + height, frame)) << height;
    }
}

} // namespace
} // namespace platform
