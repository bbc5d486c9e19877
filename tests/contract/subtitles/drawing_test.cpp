// Where and how texts are drawn: large, outlined, at the bottom, upright for the viewer.

#include "subtitle_fixture.h"

namespace {

using platform::SubtitleTrack;

class SubtitleDrawing : public SubtitleTest {
  protected:
    std::unique_ptr<SubtitleTrack> track_ = load("a.srt", one_cue_srt("Welcome"));
};

void expect_bottom_centre(const Picture &picture)
{
    const Picture::Box box = picture.changed_box();
    const int middle = (box.left + box.right) / 2;
    EXPECT_NEAR(middle, picture.width() / 2, picture.width() / 50);
    EXPECT_GT(box.top, picture.height() * 3 / 4);
    EXPECT_LT(box.bottom, picture.height() * 96 / 100) << "outside the safe area";
    EXPECT_GT(box.bottom, picture.height() * 88 / 100) << "needlessly high";
}

TEST_F(SubtitleDrawing, TextIsLargeAndAtTheBottomCentre)
{
    Picture picture(1920, 1080);
    EXPECT_TRUE(picture.draw(*track_, 2000));
    expect_bottom_centre(picture);
    // From the top of a capital letter to the foot of the line.
    EXPECT_GT(picture.changed_box().height(), 1080 / 24);
    EXPECT_LT(picture.changed_box().height(), 1080 / 10);
}

TEST_F(SubtitleDrawing, LetterSizeGrowsWithThePicture)
{
    Picture small(480, 270);
    Picture large(3840, 2160);
    small.draw(*track_, 2000);
    large.draw(*track_, 2000);
    EXPECT_NEAR(large.changed_box().width(), small.changed_box().width() * 8,
                small.changed_box().width());
}

TEST_F(SubtitleDrawing, LettersAreBrightWithADarkOutlineOnAnyColour)
{
    for (const uint32_t colour : {0xFFFFFFFFu, 0xFF000000u, 0xFFFFFF00u, Picture::BACKGROUND}) {
        Picture picture(1280, 720, colour);
        picture.draw(*track_, 2000);
        int bright = 0;
        int dark = 0;
        const Picture::Box box = picture.changed_box();
        for (int y = box.top; y < box.bottom; ++y) {
            for (int x = box.left; x < box.right; ++x) {
                bright += picture.brightness(x, y) > 740;
                dark += picture.brightness(x, y) < 60;
            }
        }
        EXPECT_GT(bright, 500) << std::hex << colour;
        EXPECT_GT(dark, 500) << std::hex << colour;
    }
}

TEST_F(SubtitleDrawing, OutlineSurroundsEveryLetter)
{
    Picture picture(1280, 720);
    picture.draw(*track_, 2000);
    const Picture::Box box = picture.changed_box();
    int neighbours = 0;
    for (int y = box.top + 1; y < box.bottom - 1; ++y) {
        for (int x = box.left + 1; x < box.right - 1; ++x) {
            if (picture.brightness(x, y) < 740)
                continue;
            for (const auto &[nx, ny] : {std::pair(x - 1, y), std::pair(x + 1, y),
                                         std::pair(x, y - 1), std::pair(x, y + 1)})
                neighbours += picture.at(nx, ny) == Picture::BACKGROUND;
        }
    }
    EXPECT_EQ(neighbours, 0) << "a letter's white touches the picture";
}

TEST_F(SubtitleDrawing, NothingIsDrawnWhereNoTextIsDue)
{
    for (const int64_t position : {int64_t{-5000}, int64_t{0}, int64_t{999}, int64_t{3000},
                                   int64_t{86400000}, INT64_MAX, INT64_MIN}) {
        Picture picture(640, 360);
        EXPECT_FALSE(picture.draw(*track_, position)) << position;
        EXPECT_TRUE(picture.untouched()) << position;
    }
}

TEST_F(SubtitleDrawing, EveryFrameOfATextLooksTheSame)
{
    Picture first(640, 360);
    first.draw(*track_, 1000);
    for (const int64_t position : {1033, 1500, 2999}) {
        Picture next(640, 360);
        EXPECT_TRUE(next.draw(*track_, position));
        EXPECT_EQ(next.fingerprint(), first.fingerprint()) << position;
    }
}

TEST_F(SubtitleDrawing, TextComesBackAfterASeekBackwards)
{
    Picture before(640, 360);
    before.draw(*track_, 2000);
    Picture after_the_end(640, 360);
    EXPECT_FALSE(after_the_end.draw(*track_, 4000));
    Picture again(640, 360);
    EXPECT_TRUE(again.draw(*track_, 2000));
    EXPECT_EQ(again.fingerprint(), before.fingerprint());
}

TEST_F(SubtitleDrawing, TurnedTextIsTheUprightTextTurned)
{
    for (const int degrees : {90, 180, 270}) {
        const bool lying = degrees != 180;
        Picture upright(lying ? 720 : 1280, lying ? 1280 : 720);
        upright.draw(*track_, 2000);
        Picture turned(1280, 720);
        EXPECT_TRUE(turned.draw(*track_, 2000, degrees)) << degrees;
        EXPECT_EQ(turned.turned_back(degrees).fingerprint(), upright.fingerprint()) << degrees;
    }
}

TEST_F(SubtitleDrawing, TurnPutsTheTextAtTheEdgeThatIsTheViewersBottom)
{
    Picture quarter(1280, 720);
    quarter.draw(*track_, 2000, 90);
    EXPECT_LT(quarter.changed_box().right, 1280 / 4);
    Picture half(1280, 720);
    half.draw(*track_, 2000, 180);
    EXPECT_LT(half.changed_box().bottom, 720 / 4);
    Picture three_quarters(1280, 720);
    three_quarters.draw(*track_, 2000, 270);
    EXPECT_GT(three_quarters.changed_box().left, 1280 * 3 / 4);
}

TEST_F(SubtitleDrawing, PortraitPictureHasLettersOfTheSameSize)
{
    Picture landscape(1920, 1080);
    Picture portrait(1080, 1920);
    landscape.draw(*track_, 2000);
    portrait.draw(*track_, 2000);
    expect_bottom_centre(portrait);
    EXPECT_NEAR(portrait.changed_box().width(), landscape.changed_box().width(), 8);
    EXPECT_NEAR(portrait.changed_box().height(), landscape.changed_box().height(), 4);
}

TEST_F(SubtitleDrawing, LongLinesAreBrokenInsideTheSafeArea)
{
    std::string sentence;
    for (int i = 0; i < 25; ++i)
        sentence += "brilliant ";
    const auto track = load("long.srt", one_cue_srt(sentence));
    ASSERT_NE(track, nullptr);
    for (const auto &[width, height] : {std::pair(1920, 1080), std::pair(1080, 1920)}) {
        Picture picture(width, height);
        EXPECT_TRUE(picture.draw(*track, 2000));
        const Picture::Box box = picture.changed_box();
        EXPECT_GE(box.left, width / 20);
        EXPECT_LE(box.right, width - width / 20);
        EXPECT_GE(box.top, height / 3);
        EXPECT_GT(box.height(), std::min(width, height) / 10);
    }
}

TEST_F(SubtitleDrawing, PixelsOutsideTheRowsAreLeftAlone)
{
    constexpr int WIDTH = 321;
    constexpr int HEIGHT = 181;
    constexpr int STRIDE = WIDTH * 4 + 60;
    std::vector<uint8_t> memory(static_cast<size_t>(STRIDE) * HEIGHT + 1, 0x55);
    // An odd start address and a stride with room to spare.
    EXPECT_TRUE(track_->draw(2000, memory.data() + 1, WIDTH, HEIGHT, STRIDE, 0));
    int changed = 0;
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < STRIDE; ++x) {
            const uint8_t byte = memory[static_cast<size_t>(y * STRIDE + x) + 1];
            if (x < WIDTH * 4)
                changed += byte != 0x55;
            else
                EXPECT_EQ(byte, 0x55) << x << "," << y;
        }
    }
    EXPECT_GT(changed, 1000);
}

TEST_F(SubtitleDrawing, ImpossiblePicturesAreRefused)
{
    uint32_t pixel = 7;
    auto *pixels = reinterpret_cast<uint8_t *>(&pixel);
    EXPECT_FALSE(track_->draw(2000, nullptr, 640, 360, 2560, 0));
    EXPECT_FALSE(track_->draw(2000, pixels, 0, 360, 2560, 0));
    EXPECT_FALSE(track_->draw(2000, pixels, 640, -1, 2560, 0));
    EXPECT_FALSE(track_->draw(2000, pixels, 640, 360, 2559, 0));
    EXPECT_FALSE(track_->draw(2000, pixels, 640, 360, 2560, 45));
    EXPECT_FALSE(track_->draw(2000, pixels, INT32_MAX, INT32_MAX, INT32_MAX, 0));
    EXPECT_EQ(pixel, 7u);
}

TEST_F(SubtitleDrawing, TinyPicturesAreDrawnIntoWithoutHarm)
{
    for (int size = 1; size < 20; ++size) {
        Picture picture(size, size);
        picture.draw(*track_, 2000);
        Picture wide(size * 40, size);
        wide.draw(*track_, 2000, 90);
        EXPECT_LE(picture.changed_count(), size * size);
    }
}

std::string styled(const std::string &style, const std::string &text)
{
    return "[Script Info]\nScriptType: v4.00+\nPlayResX: 640\nPlayResY: 360\n\n[V4+ Styles]\n"
           "Format: Name, Fontname, Fontsize, PrimaryColour, OutlineColour, BackColour, "
           "BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV\nStyle: " +
           style +
           "\n\n[Events]\n"
           "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
           "Dialogue: 0,0:00:01.00,0:00:03.00,Loud,,0,0,0,," +
           text + "\n";
}

TEST_F(SubtitleTest, ScriptKeepsItsOwnStyle)
{
    const auto track =
        load("a.ass",
             styled("Loud,Noto Sans,60,&H000000FF,&H00000000,&H00000000,1,0,0,7,20,20,20", "HH"));
    ASSERT_NE(track, nullptr);
    Picture picture(640, 360, 0xFF000000);
    EXPECT_TRUE(picture.draw(*track, 2000));
    const Picture::Box box = picture.changed_box();
    EXPECT_LT(box.right, 320) << "alignment 7 is the top left corner";
    EXPECT_LT(box.bottom, 180);
    int red = 0;
    for (int y = box.top; y < box.bottom; ++y) {
        for (int x = box.left; x < box.right; ++x)
            red += (picture.at(x, y) & 0x00FFFFFF) == 0x00FF0000;
    }
    EXPECT_GT(red, 200);
}

TEST_F(SubtitleTest, MovingTextOfAScriptMoves)
{
    const auto track =
        load("a.ass", styled("Loud,Noto Sans,40,&H00FFFFFF,&H00000000,&H00000000,1,1,0,7,0,0,0",
                             "{\\move(0,0,400,0)}Go"));
    ASSERT_NE(track, nullptr);
    Picture early(640, 360);
    Picture late(640, 360);
    early.draw(*track, 1100);
    late.draw(*track, 2900);
    EXPECT_GT(late.changed_box().left, early.changed_box().left + 250);
    EXPECT_EQ(text_at(*track, 2000), "Go");
}

TEST_F(SubtitleTest, DrawingOfAScriptIsShownButIsNoText)
{
    const auto track =
        load("a.ass", styled("Loud,Noto Sans,40,&H0000FF00,&H00000000,&H00000000,1,0,0,7,0,0,0",
                             "{\\p1}m 0 0 l 100 0 100 100 0 100{\\p0}"));
    ASSERT_NE(track, nullptr);
    Picture picture(640, 360);
    EXPECT_TRUE(picture.draw(*track, 2000));
    EXPECT_EQ(picture.at(50, 50) & 0x00FFFFFF, 0x0000FF00u);
    EXPECT_EQ(text_at(*track, 2000), "(none)");
}

TEST_F(SubtitleTest, LandscapeScriptStandsInTheMiddleOfAPortraitPicture)
{
    const auto track =
        load("a.ass",
             styled("Loud,Noto Sans,30,&H00FFFFFF,&H00000000,&H00000000,1,1,0,2,0,0,10", "Hello"));
    ASSERT_NE(track, nullptr);
    Picture picture(720, 1280);
    EXPECT_TRUE(picture.draw(*track, 2000));
    const Picture::Box box = picture.changed_box();
    EXPECT_GT(box.top, 1280 / 2);
    EXPECT_LT(box.bottom, 1280 / 2 + 720 * 9 / 16 / 2) << "below where the video would end";
}

} // namespace
