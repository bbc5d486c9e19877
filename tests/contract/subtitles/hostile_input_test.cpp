// Files that are no good: refused with a sentence, or read as far as they go; never a crash, never
// an endless wait.

#include <filesystem>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

#include "subtitle_fixture.h"
#include "subtitles/ass_adjust.h"
#include "subtitles/subtitle_file.h"

namespace {

const char *const EXTENSIONS[] = {"smi", "srt", "sub", "ttxt", "txt",
                                  "ssa", "ass", "psb", "sami", "mpl"};

TEST_F(SubtitleTest, MissingFileIsRefused)
{
    EXPECT_NE(refusal(folder() + "/none.srt").find("No such file"), std::string::npos);
    EXPECT_FALSE(refusal("").empty());
}

TEST_F(SubtitleTest, EmptyFileIsRefused)
{
    EXPECT_EQ(refusal(write("a.srt", "")), "The file is empty.");
}

TEST_F(SubtitleTest, FolderIsRefused)
{
    std::filesystem::create_directory(folder() + "/a.srt");
    EXPECT_EQ(refusal(folder() + "/a.srt"), "This is not a regular file.");
}

TEST_F(SubtitleTest, FifoThatNobodyWritesIntoIsRefusedAtOnce)
{
    const std::string path = folder() + "/a.srt";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(refusal(path), "This is not a regular file.");
}

TEST_F(SubtitleTest, DeviceIsRefused)
{
    EXPECT_EQ(refusal("/dev/zero"), "This is not a regular file.");
}

TEST_F(SubtitleTest, HugeFileIsRefused)
{
    const std::string path = write("a.srt", one_cue_srt("Hello"));
    ASSERT_EQ(truncate(path.c_str(), off_t{200} << 20), 0);
    EXPECT_NE(refusal(path).find("larger than any subtitle"), std::string::npos);
}

TEST_F(SubtitleTest, UnreadableLinkIsRefused)
{
    std::filesystem::create_symlink("a.srt", folder() + "/a.srt");
    EXPECT_EQ(refusal(folder() + "/a.srt"),
              "The file cannot be read: Too many levels of symbolic links.");
}

TEST_F(SubtitleTest, TextThatIsNeverOnScreenIsNoSubtitle)
{
    const std::string path = write("a.srt", "1\n00:00:01,000 --> 00:00:01,000\nHello\n\n");
    EXPECT_FALSE(refusal(path).empty());
}

TEST_F(SubtitleTest, OrdinaryTextIsNoSubtitleUnderAnyExtension)
{
    for (const char *extension : EXTENSIONS) {
        const std::string path =
            write(std::string("readme.") + extension,
                  "Welcome to the demo stick.\n\n1. Copy the files.\n2. Start the demo.\n"
                  "Opening hours: 09:00 - 18:00, call 0800 123 456 (toll free) [sic] {really}.\n");
        EXPECT_EQ(refusal(path), "It holds no subtitle text in a known format.") << extension;
    }
}

TEST_F(SubtitleTest, BinaryFileIsRefusedUnderAnyExtension)
{
    std::mt19937 random(1);
    std::string noise(100000, '\0');
    for (char &byte : noise)
        byte = static_cast<char>(random());
    for (const char *extension : EXTENSIONS)
        EXPECT_FALSE(refusal(write(std::string("noise.") + extension, noise)).empty());
    EXPECT_EQ(refusal(write("zeros.srt", std::string(5000, '\0'))), "The file is not a text file.");
}

TEST_F(SubtitleTest, NameOfAnyBytesIsRead)
{
    for (const char *name : {"50% off #1?.srt", "new\nline.srt", "%n%s.srt", "\xFF\xFE bytes.srt",
                             "a:b.srt", "http:\\x.srt", "no extension"}) {
        const auto track = load(name, one_cue_srt("Hello"));
        ASSERT_NE(track, nullptr) << name;
        EXPECT_EQ(text_at(*track, 2000), "Hello");
    }
}

TEST_F(SubtitleTest, SmallestSubtitleIsRead)
{
    const auto track = load("a.srt", "1\n00:00:00,000 --> 00:00:01,000\nA");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 0), "A");
    Picture picture(640, 360);
    EXPECT_TRUE(picture.draw(*track, 0));
}

TEST_F(SubtitleTest, FileCutInTheMiddleIsReadAsFarAsItGoes)
{
    std::string whole;
    for (int i = 0; i < 50; ++i) {
        char number[64];
        std::snprintf(number, sizeof number, "%d\n00:00:%02d,000 --> 00:00:%02d,900\n", i + 1, i,
                      i);
        whole += number + std::string("안녕하세요\n\n");
    }
    for (size_t length = whole.size() / 2; length < whole.size() / 2 + 40; ++length) {
        const auto track = load("cut.srt", whole.substr(0, length));
        ASSERT_NE(track, nullptr) << length;
        EXPECT_EQ(text_at(*track, 500), "안녕하세요");
        EXPECT_EQ(text_at(*track, 49500), "(none)");
    }
}

TEST_F(SubtitleTest, ImpossibleTimesAreLeftOut)
{
    const auto track = load("a.srt", "1\n00:00:05,000 --> 00:00:05,000\nNo time at all\n\n"
                                     "2\n999999999:00:00,000 --> 999999999:00:01,000\nNever\n\n"
                                     "3\n00:00:07,000 --> 00:00:08,000\nHello\n\n"
                                     "4\n-1:-1:-1,-1 --> 00:00:03,000\nBefore\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 5000), "(none)");
    EXPECT_EQ(text_at(*track, 7500), "Hello");
}

TEST_F(SubtitleTest, CrowdOfTextsAtTheSameTimeIsThinnedOut)
{
    std::string crowd;
    for (int i = 0; i < 20000; ++i)
        crowd += "{0}{100000}Everybody talks at once\n";
    const auto track = load("a.sub", crowd);
    ASSERT_NE(track, nullptr);
    Picture picture(1280, 720);
    EXPECT_TRUE(picture.draw(*track, 1000));
    EXPECT_EQ(text_at(*track, 1000), "Everybody talks at once");
}

TEST_F(SubtitleTest, TextOfManyMegabytesIsLeftOut)
{
    const auto track = load("a.srt", one_cue_srt(std::string(8 << 20, 'x')) +
                                         "\n2\n00:00:05,000 --> 00:00:06,000\nShort\n");
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(text_at(*track, 2000), "(none)");
    EXPECT_EQ(text_at(*track, 5500), "Short");
}

TEST_F(SubtitleTest, FilesFullOfOpenBracketsEndInTime)
{
    for (const char *pattern :
         {"<", "{", "[", "&", "<SYNC ", "<P ", "<TextSample ", "{1}{", "\n"}) {
        std::string content;
        while (content.size() < 256 * 1024)
            content += pattern;
        for (const char *extension : {"smi", "ttxt", "sub", "srt"})
            refusal(write(std::string("brackets.") + extension, content));
    }
}

TEST_F(SubtitleTest, DamagedFileDoesNotFloodTheLog)
{
    std::string content = "{25}{50}Hello\n";
    for (int i = 0; i < 5000; ++i)
        content += "nonsense\n";
    ASSERT_NE(load("a.sub", content), nullptr);
    EXPECT_LT(log_lines_with(""), 20);
}

TEST_F(SubtitleTest, MonstrousSizeIsDrawnAsTheLargestHoweverItIsWritten)
{
    // The first of a row is what the others have to look like.
    const std::vector<std::vector<std::string>> alike = {
        {"\\fs180", "\\fs5000", "\\ fs5000", "\\fs 5000", "\\fs(5000)", "\\fs ( 5000 )",
         "\\fs10(5000)", "\\fsx(5000)", "\\fs.5e4", "\\fs5000.5e99", "\\t(0,1,\\fs5000)",
         "\\t(0,1,\\fs(5000))", "a\\fs5000a"},
        {"", "\\fs+10", "\\fs(+10)", "\\fs +10", "\\fs-1\\fs+1e9", "\\t(0,1,\\fs+10)"},
        {"\\fscx1000\\fscy1000", "\\fscx9999\\fscy(9999)"},
        {"\\bord100\\xbord100\\ybord100", "\\bord9999\\xbord(9999)\\ ybord9999"}};
    std::string script = "[Script Info]\nScriptType: v4.00+\nPlayResX: 160\nPlayResY: 90\n"
                         "[V4+ Styles]\nFormat: Name, Fontname, Fontsize\n"
                         "Style: Default,Noto Sans,20\n[Events]\nFormat: Layer, Start, End, "
                         "Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";
    int second = 10;
    for (const auto &row : alike) {
        for (const std::string &tags : row) {
            script += "Dialogue: 0,0:00:" + std::to_string(second) +
                      ".00,0:00:" + std::to_string(second) + ".90,Default,,0,0,0,,{" + tags +
                      "}S\n";
            ++second;
        }
    }
    const auto track = load("a.ass", script);
    ASSERT_NE(track, nullptr);
    second = 10;
    for (const auto &row : alike) {
        size_t expected = 0;
        for (const std::string &tags : row) {
            Picture picture(160, 90);
            EXPECT_TRUE(picture.draw(*track, second++ * 1000 + 500)) << tags;
            if (&tags == &row.front())
                expected = picture.fingerprint();
            EXPECT_EQ(picture.fingerprint(), expected) << tags << ", unlike " << row.front();
        }
    }
}

TEST(BoundedSizes, LeaveAloneWhatIsNoSizeOrNotTooLarge)
{
    for (const char *ass :
         {"{\\fs40\\fscx120.5\\bord2}{\\fsp-3}x", "{\\fscx-20}", "C:\\fs is 5000 km",
          "{\\pos(5000,5000)\\fs9}5000", "{a 5000}", "{\\fs}", "\\fs5000", "{\\fs"})
        EXPECT_EQ(platform::with_bounded_sizes(ass, 100), ass);
}

TEST_F(SubtitleTest, ScriptWithMonstrousValuesIsDrawnWithoutHarm)
{
    const auto script = [](const char *resolution, const char *text) {
        return std::string("[Script Info]\nScriptType: v4.00+\nPlayResX: ") + resolution +
               "\nPlayResY: " + resolution +
               "\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize, Outline\n"
               "Style: Default,Noto Sans,40,2\n[Events]\nFormat: Layer, Start, End, Style, Name, "
               "MarginL, MarginR, MarginV, Effect, Text\n"
               "Dialogue: 0,0:00:01.00,0:00:03.00,Default,,0,0,0,," +
               text + "\n";
    };
    for (const char *resolution : {"0", "-5", "1", "2147483647", "99999999999999999999", "384"}) {
        for (const char *text : {"plain", "{\\fs100000}big", "{\\fscx1000000\\fscy1000000}wide",
                                 "{\\blur1000\\bord1000}soft", "{\\pos(1e30,-1e30)}far",
                                 "{\\p1}m 0 0 l 99999999 0 99999999 99999999 0 99999999",
                                 "{\\t(\\t(\\t(\\t(}deep", "{\\r\\r{{{{\\"}) {
            const auto track = load("a.ass", script(resolution, text));
            ASSERT_NE(track, nullptr) << resolution << " " << text;
            for (const int degrees : {0, 90}) {
                Picture picture(320, 180);
                picture.draw(*track, 2000, degrees);
                EXPECT_LE(picture.changed_count(), 320 * 180);
            }
        }
    }
}

TEST_F(SubtitleTest, DamagedFilesNeverHarm)
{
    const std::string samples[] = {
        one_cue_srt("<font color=red>Hello</font> {\\an8}there"),
        "{1}{1}25\n{25}{50}{c:$0000ff}Hello|there\n",
        "[10][20]/Hello|there\n",
        "<SAMI><BODY><SYNC Start=1000><P Class=A>Hello<br><font color=\"red\">x</font>\n",
        "{0:00:01}{0:00:02}Hello|there\n",
        "<TextStream><TextSample sampleTime=\"00:00:01.000\" text=\"'a''b'\">x&#65;</TextSample>",
        "[Script Info]\nPlayResX: 640\n[V4+ Styles]\nFormat: Name, Fontsize\nStyle: Default,20\n"
        "[Events]\nFormat: Layer, Start, End, Style, Text\n"
        "Dialogue: 0,0:00:01.00,0:00:03.00,Default,{\\pos(1,2)\\p1}m 0 0{\\p0} Hi\n",
    };
    std::mt19937 random(20);
    int taken = 0;
    for (int round = 0; round < 30; ++round) {
        for (const std::string &sample : samples) {
            std::string damaged = sample + sample;
            for (int i = 0; i < 1 + round / 6; ++i)
                damaged[random() % damaged.size()] = static_cast<char>(random());
            const std::string path =
                write(std::string("d.") + EXTENSIONS[random() % std::size(EXTENSIONS)], damaged);
            std::string error;
            const auto track = platform::SubtitleTrack::load(path, error);
            EXPECT_EQ(track == nullptr, !error.empty());
            Picture picture(160, 90);
            if (track) {
                ++taken;
                picture.draw(*track, 1500);
            }
        }
    }
    EXPECT_GT(taken, 50) << "most of these files still hold something readable";
}

} // namespace
