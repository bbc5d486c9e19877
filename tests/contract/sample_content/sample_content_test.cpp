// The files that make-sample-content makes: each is what its name and its table say.

#include <cmath>
#include <map>
#include <memory>

#include <gmock/gmock.h>
#include <gst/gst.h>

#include "media_probe.h"
#include "tool_runner.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const std::vector<std::string> VIDEO_NAMES = {"sunrise.mp4", "meadow.mkv", "portrait_tower.mp4"};
const std::vector<std::string> PHOTO_NAMES = {"harbour.jpg", "ridge.jpg", "portrait_garden.jpg"};
constexpr int CODEC_TOLERANCE = 12;

/** One folder of quick files for all the tests here. */
class SampleContent : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        gst_init(nullptr, nullptr);
        folder_ = std::make_unique<TemporaryFolder>();
        const ToolResult result = run_tool({"--quick", folder_->path()});
        ASSERT_EQ(result.status, 0) << result.output;
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static std::string path(const std::string &name) { return folder_->path() + "/" + name; }

    /** A photo as the viewer is to see it. */
    static Frame upright_photo(const std::string &name)
    {
        const std::string content = content_of(path(name));
        const Frame stored = decode_jpeg(content);
        return exif_orientation(content) == 6 ? stored.turned_clockwise() : stored;
    }

    /** The table in colors.json, read by its own simple form of one entry to a line. */
    static std::map<std::string, Rgb> colours()
    {
        std::map<std::string, Rgb> table;
        const std::string json = content_of(SAMPLE_COLOURS);
        for (size_t at = 0; at < json.size();) {
            const size_t end = std::min(json.find('\n', at), json.size());
            char name[64] = "";
            Rgb rgb = {};
            if (std::sscanf(json.substr(at, end - at).c_str(), " \"%63[^\"]\": [%d, %d, %d]", name,
                            &rgb[0], &rgb[1], &rgb[2]) == 4)
                table[name] = rgb;
            at = end + 1;
        }
        return table;
    }

    static std::unique_ptr<TemporaryFolder> folder_;
};
std::unique_ptr<TemporaryFolder> SampleContent::folder_;

void expect_flat_corners(const Frame &frame, const Rgb &colour, const std::string &name)
{
    for (const double depth : {0.0, 0.02, 0.04, 0.08}) {
        const double across = std::min(depth, 0.05);
        for (const double x : {across, 1 - across}) {
            for (const double y : {depth, 1 - depth})
                EXPECT_LE(difference(frame.at(x, y), colour), CODEC_TOLERANCE)
                    << name << " at " << x << ", " << y;
        }
    }
}

void expect_upright(const Frame &frame, const Rgb &colour, const std::string &name)
{
    EXPECT_LE(difference(frame.at(0.5, 1.0 / 12), {255, 255, 255}), 30) << name << ": no arrow";
    EXPECT_LE(difference(frame.at(0.5, 11.0 / 12), colour), CODEC_TOLERANCE) << name;
}

TEST_F(SampleContent, HoldsEveryItemAndNothingElse)
{
    EXPECT_THAT(names_in(folder_->path()),
                ElementsAre("harbour.jpg", "meadow.mkv", "portrait_garden.jpg",
                            "portrait_tower.mp4", "ridge.jpg", "sunrise.mp4", "sunrise_EngUS.srt",
                            "sunrise_Kor.srt"));
}

TEST_F(SampleContent, VideosDifferInSizeAndCodec)
{
    const VideoFacts sunrise = discover(path("sunrise.mp4"));
    EXPECT_EQ(sunrise.container, "video/quicktime");
    EXPECT_EQ(sunrise.video_codec, "video/x-h264");
    EXPECT_EQ(sunrise.audio_codec, "audio/mpeg");
    EXPECT_GT(sunrise.width, sunrise.height);

    const VideoFacts meadow = discover(path("meadow.mkv"));
    EXPECT_EQ(meadow.container, "video/x-matroska");
    EXPECT_EQ(meadow.video_codec, "video/x-vp8");
    EXPECT_EQ(meadow.audio_codec, "audio/x-vorbis");
    EXPECT_GT(meadow.width, meadow.height);

    const VideoFacts tower = discover(path("portrait_tower.mp4"));
    EXPECT_EQ(tower.video_codec, "video/x-h264");
    EXPECT_LT(tower.width, tower.height);

    for (const VideoFacts &facts : {sunrise, meadow, tower}) {
        EXPECT_DOUBLE_EQ(facts.frame_rate, 30);
        EXPECT_NEAR(facts.seconds, 2, 0.1);
        EXPECT_EQ(facts.audio_channels, 2);
    }
}

TEST_F(SampleContent, EveryColourIsItsOwn)
{
    const auto table = colours();
    ASSERT_EQ(table.size(), VIDEO_NAMES.size() + PHOTO_NAMES.size());
    for (const auto &[name, colour] : table) {
        for (const auto &[other_name, other] : table) {
            if (name >= other_name)
                continue;
            EXPECT_GT(difference(colour, other), 4 * CODEC_TOLERANCE)
                << name << " and " << other_name;
        }
    }
}

TEST_F(SampleContent, ColourTableForProgramsIsUpToDate)
{
    const ToolResult result = run_tool({"--colors"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, content_of(SAMPLE_COLOURS));
}

TEST_F(SampleContent, EveryFrameOfAVideoHasTheVideosColourInItsCorners)
{
    const auto table = colours();
    for (const std::string &name : VIDEO_NAMES) {
        const std::vector<Frame> frames = decode_video(path(name));
        EXPECT_EQ(frames.size(), 60u) << name;
        for (const Frame &frame : frames) {
            expect_flat_corners(frame, table.at(name), name);
            expect_upright(frame, table.at(name), name);
        }
    }
}

TEST_F(SampleContent, PhotosHaveTheirColourInTheirCorners)
{
    const auto table = colours();
    for (const std::string &name : PHOTO_NAMES) {
        const Frame photo = upright_photo(name);
        ASSERT_GT(photo.width, 0) << name;
        expect_flat_corners(photo, table.at(name), name);
        expect_upright(photo, table.at(name), name);
        EXPECT_EQ(photo.height > photo.width, name.find("portrait_") == 0) << name;
    }
}

TEST_F(SampleContent, RidgeIsUprightOnlyThroughItsExifOrientation)
{
    const std::string content = content_of(path("ridge.jpg"));
    EXPECT_EQ(exif_orientation(content), 6);
    const Frame stored = decode_jpeg(content);
    EXPECT_LT(stored.width, stored.height) << "stored lying on its side";
    EXPECT_EQ(exif_orientation(content_of(path("harbour.jpg"))), 0);
}

TEST_F(SampleContent, ClockRunsInEveryVideo)
{
    for (const std::string &name : VIDEO_NAMES) {
        const std::vector<Frame> frames = decode_video(path(name));
        ASSERT_GT(frames.size(), 2u) << name;
        for (size_t i = 1; i < frames.size(); ++i) {
            int changed = 0;
            for (double y = 0.5; y < 0.9; y += 0.01) {
                for (double x = 0.3; x < 0.7; x += 0.01)
                    changed += difference(frames[i].at(x, y), frames[i - 1].at(x, y)) > 60;
            }
            EXPECT_GT(changed, 0) << name << ", frame " << i;
        }
    }
}

double loudness(const std::vector<double> &samples, double from, double to)
{
    double sum = 0;
    const auto first = static_cast<size_t>(from * 48000);
    const auto last = std::min(samples.size(), static_cast<size_t>(to * 48000));
    for (size_t i = first; i < last; ++i)
        sum += samples[i] * samples[i];
    return last > first ? std::sqrt(sum / static_cast<double>(last - first)) : 0;
}

TEST_F(SampleContent, EveryVideoHasASoftToneOfItsOwnThatFadesInAndOut)
{
    const std::map<std::string, double> pitches = {
        {"sunrise.mp4", 261.63}, {"meadow.mkv", 329.63}, {"portrait_tower.mp4", 392.00}};
    for (const std::string &name : VIDEO_NAMES) {
        const std::vector<double> samples = decode_sound(path(name));
        ASSERT_GT(samples.size(), 48000u * 19 / 10) << name;
        const double middle = loudness(samples, 0.8, 1.2);
        EXPECT_GT(middle, 0.03) << name;
        EXPECT_LT(middle, 0.2) << name;
        EXPECT_LT(loudness(samples, 0.0, 0.05), middle / 4) << name;
        EXPECT_LT(loudness(samples, 1.95, 2.0), middle / 4) << name;

        int rises = 0;
        for (size_t i = 48000 / 2; i < 48000 * 3 / 2; ++i)
            rises += samples[i - 1] < 0 && samples[i] >= 0;
        EXPECT_NEAR(rises, pitches.at(name), 4) << name;
    }
}

TEST_F(SampleContent, SubtitlesAreInTwoLanguagesAndPairWithTheirVideo)
{
    const std::string english = content_of(path("sunrise_EngUS.srt"));
    EXPECT_THAT(english, HasSubstr("1\n00:00:00,067 --> 00:00:00,600\nGood morning.\n\n"));
    EXPECT_THAT(english, HasSubstr("See you again tomorrow."));
    EXPECT_THAT(content_of(path("sunrise_Kor.srt")), HasSubstr("좋은 아침입니다."));
}

} // namespace
