// Every subtitle format that a demo folder may hold is read with its times and its texts.

#include "subtitle_fixture.h"

namespace {

struct FormatCase {
    const char *title;
    const char *file;
    const char *content;
    int64_t first_at;   ///< a time at which "Good morning" is on screen
    int64_t between_at; ///< a time at which nothing is
    int64_t second_at;  ///< a time at which "Two / lines" is on screen
};

void PrintTo(const FormatCase &format, std::ostream *stream)
{
    *stream << format.title;
}

const FormatCase FORMAT_CASES[] = {
    {"SubRip", "a.srt",
     "1\n00:00:01,000 --> 00:00:02,000\nGood morning\n\n"
     "2\n00:00:04,000 --> 00:00:06,500\nTwo\nlines\n",
     1500, 3000, 5000},
    {"SubRipInUpperCaseWithCarriageReturns", "A.SRT",
     "1\r\n00:00:01,000 --> 00:00:02,000\r\n<i>Good</i> morning\r\n\r\n"
     "2\r\n00:00:04,000 --> 00:00:06,500\r\nTwo\r\nlines\r\n",
     1500, 3000, 5000},
    {"SubRipNamedAsPlainText", "a.txt",
     "1\n00:00:01,000 --> 00:00:02,000\nGood morning\n\n"
     "2\n00:00:04,000 --> 00:00:06,500\nTwo\nlines",
     1500, 3000, 5000},
    {"Sami", "a.smi",
     "<SAMI><HEAD><STYLE TYPE=\"text/css\"><!-- P { margin-left: 8pt; } "
     ".ENCC { Name: English; lang: en-US; } --></STYLE></HEAD><BODY>\n"
     "<SYNC Start=1000><P Class=ENCC>Good morning\n"
     "<SYNC Start=2000><P Class=ENCC>&nbsp;\n"
     "<SYNC Start=4000><P Class=ENCC>Two<br>lines\n"
     "<SYNC Start=6500><P Class=ENCC>&nbsp;\n</BODY></SAMI>\n",
     1500, 3000, 5000},
    {"SamiWithTheLongExtension", "a.sami",
     "<SAMI><BODY>\n<SYNC Start=1000><P>Good morning\n<SYNC Start=2000><P>&nbsp;\n"
     "<SYNC Start=4000><P>Two<br>lines\n<SYNC Start=6500><P>&nbsp;\n</BODY></SAMI>\n",
     1500, 3000, 5000},
    {"MicroDvdAtTwentyFiveFrames", "a.sub", "{25}{50}Good morning\n{100}{162}Two|lines\n", 1500,
     3000, 5000},
    {"MicroDvdWithItsOwnRate", "a.sub",
     "{1}{1}50.000\n{50}{100}Good morning\n{200}{325}{y:i}Two|lines\n", 1500, 3000, 5000},
    {"SubViewer", "a.sub",
     "[INFORMATION]\n[TITLE]\n[AUTHOR]\n[END INFORMATION]\n[SUBTITLE]\n"
     "00:00:01.00,00:00:02.00\nGood morning\n\n00:00:04.00,00:00:06.50\nTwo[br]lines\n",
     1500, 3000, 5000},
    {"Mpl2", "a.mpl", "[10][20]Good morning\n[40][65]Two|lines\n", 1500, 3000, 5000},
    {"Mpl2NamedAsPlainText", "a.txt", "[10][20]/Good morning\n[40][65]Two|lines\n", 1500, 3000,
     5000},
    {"PowerDivX", "a.psb", "{0:00:01}{0:00:02}Good morning\n{0:00:04}{0:00:06}Two|lines\n", 1500,
     3000, 5000},
    {"TimedText", "a.ttxt",
     "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<TextStream version=\"1.1\">\n"
     "<TextStreamHeader width=\"400\" height=\"60\"></TextStreamHeader>\n"
     "<TextSample sampleTime=\"00:00:01.000\" xml:space=\"preserve\">Good morning</TextSample>\n"
     "<TextSample sampleTime=\"00:00:02.000\" xml:space=\"preserve\"></TextSample>\n"
     "<TextSample sampleTime=\"00:00:04.000\" xml:space=\"preserve\">Two&#xA;lines"
     "<Style styles=\"Bold\"/></TextSample>\n"
     "<TextSample sampleTime=\"00:00:06.500\" text=\"\"/>\n</TextStream>\n",
     1500, 3000, 5000},
    {"TimedTextInAttributes", "a.ttxt",
     "<TextStream version=\"1.0\">\n"
     "<TextSample sampleTime=\"00:00:01.000\" text=\"Good morning\"/>\n"
     "<TextSample sampleTime=\"00:00:02.000\" text=\"\"/>\n"
     "<TextSample sampleTime=\"00:00:04.000\" text=\"'Two''lines'\"/>\n"
     "<TextSample sampleTime=\"00:00:06.500\" text=\"\"/>\n</TextStream>\n",
     1500, 3000, 5000},
    {"AdvancedSubStationAlpha", "a.ass",
     "[Script Info]\nScriptType: v4.00+\nPlayResX: 640\nPlayResY: 360\n\n[V4+ Styles]\n"
     "Format: Name, Fontname, Fontsize, PrimaryColour, Alignment\n"
     "Style: Default,Noto Sans,30,&H00FFFFFF,2\n\n[Events]\n"
     "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
     "Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,{\\i1}Good{\\i0} morning\n"
     "Comment: 0,0:00:02.50,0:00:03.50,Default,,0,0,0,,Not for the screen\n"
     "Dialogue: 0,0:00:04.00,0:00:06.50,Default,,0,0,0,,Two\\Nlines\n",
     1500, 3000, 5000},
    {"SubStationAlpha", "a.ssa",
     "[Script Info]\nScriptType: v4.00\nPlayResX: 640\nPlayResY: 360\n\n[V4 Styles]\n"
     "Format: Name, Fontname, Fontsize, PrimaryColour, Alignment\n"
     "Style: Default,Noto Sans,30,16777215,2\n\n[Events]\n"
     "Format: Marked, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
     "Dialogue: Marked=0,0:00:01.00,0:00:02.00,Default,,0000,0000,0000,,Good morning\n"
     "Dialogue: Marked=0,0:00:04.00,0:00:06.50,Default,,0000,0000,0000,,Two\\Nlines\n",
     1500, 3000, 5000},
    {"VPlayer", "a.txt", "00:00:01:Good morning\n00:00:02: \n00:00:04:Two|lines\n00:00:06: \n",
     1500, 3000, 5000},
    {"WebVttUnderAForeignName", "a.srt",
     "WEBVTT\n\n00:00:01.000 --> 00:00:02.000\nGood morning\n\n"
     "00:00:04.000 --> 00:00:06.500\nTwo\nlines\n",
     1500, 3000, 5000},
};

class SubtitleFormat : public SubtitleTest, public testing::WithParamInterface<FormatCase> {};

TEST_P(SubtitleFormat, IsReadAndDrawn)
{
    const FormatCase &format = GetParam();
    const auto track = load(format.file, format.content);
    ASSERT_NE(track, nullptr);

    EXPECT_EQ(text_at(*track, 500), "(none)");
    EXPECT_EQ(text_at(*track, format.first_at), "Good morning");
    EXPECT_EQ(text_at(*track, format.between_at), "(none)");
    EXPECT_EQ(text_at(*track, format.second_at), "Two\nlines");
    EXPECT_EQ(text_at(*track, 60000), "(none)");

    Picture one_line(640, 360);
    EXPECT_TRUE(one_line.draw(*track, format.first_at));
    EXPECT_GT(one_line.changed_box().top, 180) << "not in the lower half";
    Picture two_lines(640, 360);
    EXPECT_TRUE(two_lines.draw(*track, format.second_at));
    EXPECT_GT(two_lines.changed_box().height(), one_line.changed_box().height() * 3 / 2);
    Picture nothing(640, 360);
    EXPECT_FALSE(nothing.draw(*track, format.between_at));
    EXPECT_TRUE(nothing.untouched());
    EXPECT_TRUE(complaints().empty()) << complaints().front();
}

TEST_P(SubtitleFormat, IsKnownByItsContentUnderAForeignName)
{
    const FormatCase &format = GetParam();
    for (const char *foreign : {"a.smi", "a.psb"}) {
        const auto track = load(foreign, format.content);
        ASSERT_NE(track, nullptr) << foreign;
        EXPECT_EQ(text_at(*track, format.first_at), "Good morning") << foreign;
        EXPECT_EQ(text_at(*track, format.second_at), "Two\nlines") << foreign;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, SubtitleFormat, testing::ValuesIn(FORMAT_CASES),
                         [](const auto &test) { return std::string(test.param.title); });

TEST_F(SubtitleTest, CueTellsItsStartAndDuration)
{
    const auto track = load("a.srt", "1\n00:01:01,250 --> 00:01:03,500\nHello\n");
    ASSERT_NE(track, nullptr);
    const auto *cue = track->cue_at(62000);
    ASSERT_NE(cue, nullptr);
    EXPECT_EQ(cue->start_ms, 61250);
    EXPECT_EQ(cue->duration_ms, 2250);
    EXPECT_EQ(track->cue_at(61249), nullptr);
    EXPECT_EQ(track->cue_at(61250), cue);
    EXPECT_EQ(track->cue_at(63499), cue);
    EXPECT_EQ(track->cue_at(63500), nullptr);
}

TEST_F(SubtitleTest, TimesOfFormatsThatOnlyWeReadHaveHoursMinutesAndFractions)
{
    const std::pair<const char *, const char *> files[] = {
        {"a.psb", "{1:02:03.250}{1:02:05}Late\n"},
        {"a.ttxt", "<TextStream version=\"1.1\">\n"
                   "<TextSample sampleTime=\"01:02:03.250\" text=\"Late\"/>\n"
                   "<TextSample sampleTime=\"01:02:05.000\" text=\"\"/>\n</TextStream>\n"}};
    for (const auto &[name, content] : files) {
        const auto track = load(name, content);
        ASSERT_NE(track, nullptr) << name;
        const auto *cue = track->cue_at(3724000);
        ASSERT_NE(cue, nullptr) << name;
        EXPECT_EQ(cue->start_ms, 3723250) << name;
        EXPECT_EQ(cue->duration_ms, 1750) << name;
    }
}

TEST_F(SubtitleTest, LastTextWithoutAnEndStaysForSomeSeconds)
{
    const auto track = load("a.smi", "<SAMI><BODY>\n<SYNC Start=1000><P>The end\n</BODY></SAMI>\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 3000), "The end");
    EXPECT_EQ(text_at(*track, 30000), "(none)");
}

TEST_F(SubtitleTest, OverlappingTextsAreAllDrawnAndTheLatestIsTold)
{
    const auto track = load("a.srt", "1\n00:00:01,000 --> 00:00:09,000\nLong\n\n"
                                     "2\n00:00:03,000 --> 00:00:05,000\nShort\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), "Long");
    EXPECT_EQ(text_at(*track, 4000), "Short");
    EXPECT_EQ(text_at(*track, 7000), "Long");
    Picture alone(640, 360);
    Picture both(640, 360);
    alone.draw(*track, 2000);
    both.draw(*track, 4000);
    EXPECT_GT(both.changed_box().height(), alone.changed_box().height() * 3 / 2);
}

TEST_F(SubtitleTest, BracketsInAnAttributeDoNotEndItsTag)
{
    const auto track =
        load("a.ttxt", "<TextStream><TextSample sampleTime=\"00:00:01.000\" text=\"1 > 0\"/>\n"
                       "<TextSample text='\"2\" > 1' sampleTime='00:00:02.000'/>\n"
                       "<TextSample sampleTime=\"00:00:03.000\" note=\">Unclosed</TextSample>\n"
                       "</TextStream>\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 1500), "1 > 0");
    EXPECT_EQ(text_at(*track, 2500), "\"2\" > 1");
    EXPECT_EQ(text_at(*track, 3500), "Unclosed");
}

TEST_F(SubtitleTest, EntitiesOfTimedTextAreTheirLettersAndWhatIsNoneStays)
{
    const auto track = load(
        "a.ttxt", "<TextStream><TextSample sampleTime=\"00:00:01.000\">"
                  "&amp;&#126;&#xE9;&#8364;&#x1F600; &#xD800; &nothing;</TextSample></TextStream>");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 1500), "&~é€😀 &#xD800; &nothing;");
}

TEST_F(SubtitleTest, BilingualSamiShowsItsFirstLanguageOnly)
{
    const auto track = load("a.smi", "<SAMI><BODY>\n"
                                     "<SYNC Start=1000><P Class=KRCC>Annyeong\n"
                                     "<SYNC Start=1000><P Class=ENCC>Hello\n"
                                     "<SYNC Start=2000><P Class=KRCC>&nbsp;\n"
                                     "<SYNC Start=2000><P Class=ENCC>&nbsp;\n"
                                     "<SYNC Start=3000><P Class=krcc>Hana<P Class=encc>One\n"
                                     "<SYNC Start=4000><P Class=KRCC>&nbsp;\n</BODY></SAMI>\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 1500), "Annyeong");
    EXPECT_EQ(text_at(*track, 2500), "(none)");
    EXPECT_EQ(text_at(*track, 3500), "Hana");
}

TEST_F(SubtitleTest, TextIsToldWithoutMarkup)
{
    const auto track = load(
        "a.srt", one_cue_srt("<font color=\"#ff0000\"><b>Bright</b></font> {\\an8}and {curly}"));
    ASSERT_NE(track, nullptr);
    const std::string text = text_at(*track, 2000);
    EXPECT_EQ(text.find('<'), std::string::npos) << text;
    EXPECT_EQ(text.find("an8"), std::string::npos) << text;
    EXPECT_EQ(text.find("Bright"), 0u) << text;
}

TEST_F(SubtitleTest, BracesAndBackslashesOfPlainTextReachTheScreen)
{
    const auto track = load("a.psb", "{0:00:01}{0:00:03}{a} \\N b\n");
    ASSERT_NE(track, nullptr);
    const std::string text = text_at(*track, 2000);
    EXPECT_EQ(text.find("{a} \\"), 0u) << text;
    EXPECT_NE(text.find("N b"), std::string::npos) << text;
}

} // namespace
