// Files as large as are taken, made to be slow. Where the work grew with the square of the size, as
// it did for each of these, a test would run for many minutes and into the test runner's time
// limit.

#include "subtitle_fixture.h"
#include "subtitles/ass_text.h"
#include "subtitles/cue_reader.h"
#include "subtitles/native_formats.h"
#include "subtitles/subtitle_file.h"

namespace {

using platform::MAX_SUBTITLE_FILE_SIZE;

std::string repeated(const std::string &pattern, size_t size)
{
    std::string text;
    text.reserve(size + pattern.size());
    while (text.size() < size)
        text += pattern;
    return text;
}

std::string ass_script(const std::string &events)
{
    return "[Script Info]\nScriptType: v4.00+\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize\n"
           "Style: Default,Noto Sans,40\n[Events]\nFormat: Layer, Start, End, Style, Name, "
           "MarginL, MarginR, MarginV, Effect, Text\n" +
           events;
}

std::string ass_event(const std::string &start, const std::string &end, const std::string &text)
{
    return "Dialogue: 0," + start + "," + end + ",Default,,0,0,0,," + text + "\n";
}

TEST(HugeSubtitle, BracketsThatNothingClosesAreTextAndAreLookedThroughOnce)
{
    const std::string brackets = repeated("{", MAX_SUBTITLE_FILE_SIZE);
    EXPECT_EQ(platform::ass_to_plain(brackets), brackets);
    EXPECT_EQ(platform::ass_to_plain("a{\\b1}b" + brackets), "ab" + brackets);
    EXPECT_EQ(platform::ass_to_plain("a{\\b1}b{c"), "ab{c");
    EXPECT_EQ(platform::ass_to_plain("a}b{c}d"), "a}bd");
}

TEST(HugeSubtitle, LinesInAttributesAreTakenApartInOneGo)
{
    const auto sample = [](const std::string &lines) {
        return platform::read_ttxt("<TextSample sampleTime=\"00:00:01.000\" text=\"" + lines +
                                   "\"></TextSample>");
    };
    const auto cues = sample("'" + repeated("''", MAX_SUBTITLE_FILE_SIZE) + "'");
    ASSERT_EQ(cues.size(), 1u);
    EXPECT_EQ(cues[0].text, std::string(MAX_SUBTITLE_FILE_SIZE / 2, '\n'));
    EXPECT_EQ(sample("'a''b'").at(0).text, "a\nb");
    EXPECT_EQ(sample("'it's'''").at(0).text, "it's\n");
}

TEST(HugeSubtitle, TagsThatNothingClosesAreLookedThroughOnce)
{
    const std::string openings = repeated("<TextSample ", MAX_SUBTITLE_FILE_SIZE / 2);
    const auto cues = platform::read_ttxt(
        openings + "<TextSample sampleTime=\"00:00:01.000\">Hello</TextSample>" + openings);
    ASSERT_EQ(cues.size(), 1u);
    EXPECT_EQ(cues[0].text, "Hello");
}

TEST(HugeSubtitle, StyledTextsAtTheSameTimeAreBoundedInBytesToo)
{
    constexpr size_t SIZE = 60000;
    const std::string text = "{" + repeated("\\t(", SIZE) + "}x";
    std::string crowd;
    for (int i = 0; i < 100; ++i)
        crowd += ass_event("0:00:01.00", "0:00:03.00", text);
    std::string error;
    const auto at_once = platform::read_script(ass_script(crowd), "ass", error);
    ASSERT_TRUE(at_once) << error;
    EXPECT_EQ(at_once->events.size(), 1u);

    const auto in_turn =
        platform::read_script(ass_script(ass_event("0:00:01.00", "0:00:02.00", text) +
                                         ass_event("0:00:02.00", "0:00:03.00", text) +
                                         ass_event("0:00:02.50", "0:00:03.00", "small")),
                              "ass", error);
    ASSERT_TRUE(in_turn) << error;
    EXPECT_EQ(in_turn->events.size(), 3u);
}

TEST_F(SubtitleTest, LoadCanBeStoppedWhereverItIs)
{
    std::string events;
    for (int i = 0; i < 5; ++i)
        events += ass_event("0:00:01.00", "0:00:03.00", "Hello");
    const std::string path = write("a.ass", ass_script(events));
    int asked = 0;
    for (int stopped_at = 1;; ++stopped_at) {
        asked = 0;
        std::string error;
        const auto stop = [&] { return ++asked >= stopped_at; };
        const auto track = platform::SubtitleTrack::load(path, error, stop);
        if (asked < stopped_at) {
            ASSERT_NE(track, nullptr) << error;
            break;
        }
        EXPECT_EQ(track, nullptr) << "stopped at " << stopped_at;
        EXPECT_EQ(error, platform::LOAD_STOPPED);
        EXPECT_LT(asked, stopped_at + 5) << "it goes on after it was told to stop";
    }
    // While the file, the packets and the texts are read.
    EXPECT_GT(asked, 10);
}

TEST_F(SubtitleTest, StoppedLoadTriesNoMoreFormats)
{
    const std::string path = write("a.srt", repeated("1\n", size_t{1} << 20));
    int asked = 0;
    std::string error;
    EXPECT_EQ(platform::SubtitleTrack::load(path, error, [&] { return ++asked > 30; }), nullptr);
    EXPECT_EQ(error, platform::LOAD_STOPPED);
    EXPECT_LT(asked, 40);
}

} // namespace
