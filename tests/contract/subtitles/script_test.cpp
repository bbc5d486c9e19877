// Writing systems: the letters exist in the installed fonts and are laid out the right way round.

#include "subtitle_fixture.h"

namespace {

struct ScriptCase {
    const char *title;
    const char *text;
    const char *package; ///< Debian's package with the font
};

void PrintTo(const ScriptCase &script, std::ostream *stream)
{
    *stream << script.title;
}

const ScriptCase SCRIPT_CASES[] = {
    {"Latin", "Žluťoučký kůň, Größe, Ağaç", "fonts-noto-core"},
    {"Cyrillic", "Добро пожаловать", "fonts-noto-core"},
    {"Greek", "Καλώς ήρθατε", "fonts-noto-core"},
    {"Arabic", "مرحبا بكم في المتجر", "fonts-noto-core"},
    {"Persian", "به فروشگاه خوش آمدید", "fonts-noto-core"},
    {"Urdu", "دکان میں خوش آمدید", "fonts-noto-core"},
    {"Hebrew", "ברוכים הבאים", "fonts-noto-core"},
    {"Thai", "ยินดีต้อนรับ", "fonts-noto-core"},
    {"Hindi", "स्वागत है", "fonts-noto-core"},
    {"Bengali", "স্বাগতম", "fonts-noto-core"},
    {"Tamil", "நல்வரவு", "fonts-noto-core"},
    {"Amharic", "እንኳን ደህና መጡ", "fonts-noto-core"},
    {"Georgian", "კეთილი იყოს", "fonts-noto-core"},
    {"Armenian", "Բարի գալուստ", "fonts-noto-core"},
    {"Khmer", "សូមស្វាគមន៍", "fonts-noto-core"},
    {"Burmese", "ကြိုဆိုပါတယ်", "fonts-noto-core"},
    {"Korean", "어서 오세요", "fonts-noto-cjk"},
    {"Japanese", "いらっしゃいませ", "fonts-noto-cjk"},
    {"Chinese", "欢迎光临", "fonts-noto-cjk"},
};

class SubtitleScript : public SubtitleTest, public testing::WithParamInterface<ScriptCase> {};

TEST_P(SubtitleScript, HasAllItsLetters)
{
    const auto track = load("a.srt", one_cue_srt(GetParam().text));
    ASSERT_NE(track, nullptr);
    Picture picture(1280, 720);
    EXPECT_TRUE(picture.draw(*track, 2000));
    EXPECT_GT(picture.bright_count(740), 300);
    EXPECT_EQ(log_lines_with("failed to find any fallback"), 0)
        << "letters without a font; the package " << GetParam().package << " has them";
    EXPECT_TRUE(complaints().empty()) << complaints().front();
}

INSTANTIATE_TEST_SUITE_P(Each, SubtitleScript, testing::ValuesIn(SCRIPT_CASES),
                         [](const auto &test) { return std::string(test.param.title); });

TEST_F(SubtitleTest, LettersThatNoFontHasAreNoticed)
{
    // The counterpart of the tests above: U+10FFFF is in no font, and that can be seen.
    const auto track = load("a.srt", one_cue_srt("a\xF4\x8F\xBF\xBF"));
    ASSERT_NE(track, nullptr);
    Picture picture(640, 360);
    EXPECT_TRUE(picture.draw(*track, 2000));
    EXPECT_GT(log_lines_with("failed to find any fallback"), 0);
    EXPECT_TRUE(complaints().empty()) << "a missing letter is no error";
}

/** Widths of the words' pictures from left to right, parted at gaps wider than half a letter. */
std::vector<int> word_widths_in(const Picture &picture)
{
    const Picture::Box box = picture.changed_box();
    const int gap = picture.height() / 45;
    std::vector<int> widths;
    int start = -1;
    int last_ink = -1;
    for (int x = box.left; x <= box.right; ++x) {
        const bool ink = x < box.right && picture.changed_in_column(x) > 0;
        if (ink && start < 0)
            start = x;
        if (ink)
            last_ink = x;
        if (start >= 0 && (x == box.right || x - last_ink > gap)) {
            widths.push_back(last_ink - start + 1);
            start = -1;
        }
    }
    return widths;
}

/** Texts of a wide word and a narrow one, with room between them that no line is broken in. */
class SubtitleDirection : public SubtitleTest {
  protected:
    /** Draws a text. @return the widths of its words from left to right */
    std::vector<int> word_widths(const std::string &text) const
    {
        const auto track = load("a.srt", one_cue_srt(text));
        Picture picture(1920, 1080);
        if (track)
            picture.draw(*track, 2000);
        return word_widths_in(picture);
    }

    const std::string gap_ = "\xC2\xA0\xC2\xA0\xC2\xA0\xC2\xA0";
};

TEST_F(SubtitleDirection, LeftToRightTextBeginsAtTheLeft)
{
    const std::vector<int> widths = word_widths("WWWWWW" + gap_ + "I");
    ASSERT_EQ(widths.size(), 2u);
    EXPECT_GT(widths[0], widths[1] * 3);
}

TEST_F(SubtitleDirection, RightToLeftTextBeginsAtTheRight)
{
    const std::vector<int> widths = word_widths("שששששש" + gap_ + "ו");
    ASSERT_EQ(widths.size(), 2u);
    EXPECT_GT(widths[1], widths[0] * 3);
}

TEST_F(SubtitleDirection, ExclamationMarkOfRightToLeftTextStandsAtTheLeft)
{
    const std::vector<int> widths = word_widths("שששששש" + gap_ + "!");
    ASSERT_EQ(widths.size(), 2u);
    EXPECT_GT(widths[1], widths[0] * 3);
}

TEST_F(SubtitleTest, ArabicLettersAreJoined)
{
    // Zero-width non-joiners keep the same letters apart; joined they take less room.
    const auto joined = load("a.srt", one_cue_srt("ببببب"));
    const auto apart = load("b.srt", one_cue_srt("ب\u200Cب\u200Cب\u200Cب\u200Cب"));
    ASSERT_NE(joined, nullptr);
    ASSERT_NE(apart, nullptr);
    Picture joined_picture(1280, 720);
    Picture apart_picture(1280, 720);
    joined_picture.draw(*joined, 2000);
    apart_picture.draw(*apart, 2000);
    EXPECT_LT(joined_picture.changed_box().width(), apart_picture.changed_box().width() * 3 / 4);
}

TEST_F(SubtitleTest, TextWithoutSpacesIsBrokenIntoLines)
{
    for (const char *word : {"ยินดีต้อนรับเข้าสู่ร้านของเรา", "欢迎光临我们的商店",
                             "いらっしゃいませお客様", "សូម\u200Bស្វាគមន៍\u200B"}) {
        std::string sentence;
        while (sentence.size() < 300)
            sentence += word;
        const auto track = load("a.srt", one_cue_srt(sentence));
        ASSERT_NE(track, nullptr);
        EXPECT_EQ(text_at(*track, 2000), sentence);
        for (const auto &[width, height] : {std::pair(1920, 1080), std::pair(1080, 1920)}) {
            Picture picture(width, height);
            EXPECT_TRUE(picture.draw(*track, 2000));
            const Picture::Box box = picture.changed_box();
            EXPECT_GE(box.left, width / 20) << word;
            EXPECT_LE(box.right, width - width / 20) << word;
            EXPECT_GE(box.top, height / 2) << word;
        }
    }
}

} // namespace
