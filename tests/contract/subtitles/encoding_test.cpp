// The same text is read from every encoding that subtitle files are written in.

#include <iconv.h>

#include "subtitle_fixture.h"

namespace {

std::string encoded(const std::string &utf8, const char *encoding)
{
    iconv_t handle = iconv_open(encoding, "UTF-8");
    if (handle == reinterpret_cast<iconv_t>(-1)) {
        ADD_FAILURE() << "iconv does not know " << encoding;
        return {};
    }
    std::string result(utf8.size() * 4 + 16, '\0');
    char *input = const_cast<char *>(utf8.data());
    char *output = result.data();
    size_t left = utf8.size();
    size_t room = result.size();
    const size_t status = iconv(handle, &input, &left, &output, &room);
    iconv_close(handle);
    EXPECT_NE(status, static_cast<size_t>(-1)) << encoding;
    result.resize(result.size() - room);
    return result;
}

struct EncodingCase {
    const char *title;
    const char *encoding; ///< iconv's name
    const char *mark;     ///< byte order mark, without zero bytes
    const char *text;
};

void PrintTo(const EncodingCase &encoding, std::ostream *stream)
{
    *stream << encoding.title;
}

const EncodingCase ENCODING_CASES[] = {
    {"Utf8", "UTF-8", "", "Größe – schön 안녕하세요"},
    {"Utf8WithMark", "UTF-8", "\xEF\xBB\xBF", "Größe – schön 안녕하세요"},
    {"Utf16LittleEndian", "UTF-16LE", "\xFF\xFE", "Größe – schön 안녕하세요"},
    {"Utf16BigEndian", "UTF-16BE", "\xFE\xFF", "Größe – schön 안녕하세요"},
    {"Utf16LittleEndianWithoutMark", "UTF-16LE", "", "Größe – schön"},
    {"Utf16BigEndianWithoutMark", "UTF-16BE", "", "Größe – schön"},
    {"WesternEuropean", "CP1252", "",
     "Größe und Schönheit – für alle, die es schöner mögen. Überall hören und fühlen."},
    {"Cyrillic", "CP1251", "",
     "Добро пожаловать! Здесь вы увидите самые яркие цвета и услышите прекрасный звук."},
    {"CyrillicKoi8", "KOI8-R", "",
     "Добро пожаловать! Здесь вы увидите самые яркие цвета и услышите прекрасный звук."},
    {"Korean", "UHC", "",
     "안녕하세요. 이 화면에서는 가장 밝은 색상과 아름다운 소리를 느낄 수 있습니다."},
    {"Japanese", "CP932", "", "ようこそ。この画面で最も鮮やかな色と美しい音をお楽しみください。"},
    {"ChineseSimplified", "GB18030", "", "欢迎光临。请在这里欣赏最鲜艳的色彩和最优美的声音。"},
    {"ChineseTraditional", "CP950", "", "歡迎光臨。請在這裡欣賞最鮮豔的色彩和最優美的聲音。"},
    {"Greek", "CP1253", "",
     "Καλώς ήρθατε. Εδώ θα δείτε τα πιο λαμπερά χρώματα και θα ακούσετε όμορφο ήχο."},
    {"Hebrew", "CP1255", "", "ברוכים הבאים. כאן תראו את הצבעים הבהירים ביותר ותשמעו צליל נפלא."},
    {"Arabic", "CP1256", "", "مرحبا بكم. هنا سترون أجمل الألوان وتسمعون أروع الأصوات في العالم."},
    {"Thai", "CP874", "", "ยินดีต้อนรับ ที่นี่คุณจะได้เห็นสีสันที่สดใสที่สุดและได้ยินเสียงที่ไพเราะ"},
    {"Turkish", "CP1254", "",
     "Hoş geldiniz. Burada en parlak renkleri görecek ve güzel sesi duyacaksınız. Işık şöleni."},
};

class SubtitleEncoding : public SubtitleTest, public testing::WithParamInterface<EncodingCase> {};

TEST_P(SubtitleEncoding, IsRecognised)
{
    const EncodingCase &encoding = GetParam();
    const std::string content =
        encoding.mark + encoded(one_cue_srt(encoding.text), encoding.encoding);
    const auto track = load("a.srt", content);
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), encoding.text);
}

INSTANTIATE_TEST_SUITE_P(Each, SubtitleEncoding, testing::ValuesIn(ENCODING_CASES),
                         [](const auto &test) { return std::string(test.param.title); });

TEST_F(SubtitleTest, OneLetterBeyondAsciiMakesUtf8WhereverItStands)
{
    for (const char *text : {"é", "né", "né."}) {
        const auto track = load("a.srt", one_cue_srt(text));
        ASSERT_NE(track, nullptr) << text;
        EXPECT_EQ(text_at(*track, 2000), text);
    }
}

TEST_F(SubtitleTest, OneBadByteDoesNotTurnUtf8IntoSomethingElse)
{
    std::string text = "안녕하세요 여러분 반갑습니다";
    const auto track = load("a.srt", one_cue_srt(text + "\xFF"));
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), text + "\xEF\xBF\xBD");
}

TEST_F(SubtitleTest, Utf16WithABrokenCharacterKeepsTheOthers)
{
    const std::string lone_surrogate("\x00\xD8", 2);
    const std::string start = encoded("1\n00:00:01,000 --> 00:00:03,000\nbefore ", "UTF-16LE");
    const auto track =
        load("a.srt", "\xFF\xFE" + start + lone_surrogate + encoded(" after\n", "UTF-16LE"));
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), "before \xEF\xBF\xBD after");
}

TEST_F(SubtitleTest, LinesMayEndInCarriageReturnsAlone)
{
    const auto track = load("a.srt", "1\r00:00:01,000 --> 00:00:03,000\rOld\rcomputer\r");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), "Old\ncomputer");
}

} // namespace
