// Charts of colours, converted by ffmpeg with the zimg library and tone mapping of its own, against
// reference.h and against the converter.

#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "colour/colour_converter.h"
#include "colour/picture.h"
#include "colour/reference.h"

namespace platform {
namespace {

constexpr int PATCHES = 256;
constexpr int COLUMNS = 16;
constexpr int PATCH_SIZE = 8; // what lies in its middle depends on no neighbour
constexpr Size CHART = {COLUMNS * PATCH_SIZE, PATCHES / COLUMNS *PATCH_SIZE};

/** Numbers of luma and chroma. */
struct Yuv {
    int y;
    int u;
    int v;
};

enum class Hues { GREYS, GREYS_AND_COLOURS };

/** 256 flat patches, none brighter than a code of 0 to 1; of two kinds, every other is a colour. */
std::vector<Yuv> chart(const ColourSpace &space, int depth, double brightest,
                       Hues hues = Hues::GREYS_AND_COLOURS)
{
    std::mt19937 random(19);
    std::uniform_real_distribution<double> code(0, brightest);
    const double unit = 1 << (depth - 8);
    const double range = space.full_range ? (1 << depth) - 1 : 219 * unit;
    const double span = space.full_range ? (1 << depth) - 1 : 224 * unit;
    std::vector<Yuv> patches;
    for (int i = 0; i < PATCHES; ++i) {
        const double grey = brightest * i / PATCHES;
        Rgb c = {grey, grey, grey};
        if (i % 2 && hues == Hues::GREYS_AND_COLOURS)
            c = {code(random), code(random), code(random)};
        const double y = space.kr * c.red + (1 - space.kr - space.kb) * c.green + space.kb * c.blue;
        const auto number = [](double x) { return static_cast<int>(std::lround(x)); };
        patches.push_back({number((space.full_range ? 0 : 16 * unit) + range * y),
                           number(128 * unit + span * (c.blue - y) / 2 / (1 - space.kb)),
                           number(128 * unit + span * (c.red - y) / 2 / (1 - space.kr))});
    }
    return patches;
}

class SecondOpinion : public testing::Test {
  protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "chart-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    /** What ffmpeg's filters make of patches, each in its middle. */
    std::vector<Rgb> by_ffmpeg(const std::vector<Yuv> &patches, int depth,
                               const std::string &filters) const
    {
        write(patches, depth);
        const std::string command =
            "ffmpeg -nostdin -loglevel error -f rawvideo -pix_fmt yuv420p" +
            std::string(depth > 8 ? "10le" : "") + " -video_size " + std::to_string(CHART.width) +
            "x" + std::to_string(CHART.height) + " -i " + folder_ + "/chart.yuv -vf " + filters +
            ",format=gbrp -f rawvideo -y " + folder_ + "/chart.rgb";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        std::ifstream file(folder_ + "/chart.rgb", std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        const auto plane = static_cast<size_t>(CHART.area());
        EXPECT_EQ(bytes.size(), 3 * plane);
        std::vector<Rgb> colours;
        for (int i = 0; bytes.size() == 3 * plane && i < PATCHES; ++i) {
            const auto at = [&](size_t part) {
                return double(static_cast<uint8_t>(bytes[part * plane + middle(i)]));
            };
            colours.push_back({at(2), at(0), at(1)});
        }
        return colours;
    }

    static std::vector<Rgb> by_converter(const std::vector<Yuv> &patches, int depth,
                                         const ColourConverter &converter)
    {
        Picture picture(depth > 8 ? YuvFormat::I420_10 : YuvFormat::I420, CHART);
        for (int y = 0; y < CHART.height; ++y) {
            for (int x = 0; x < CHART.width; ++x) {
                const Yuv &patch = at(patches, x, y);
                picture.set_luma(x, y, patch.y);
                picture.set_chroma(x / 2, y / 2, patch.u, patch.v);
            }
        }
        std::vector<uint32_t> pixels(static_cast<size_t>(CHART.area()));
        converter.convert(picture.image(), 0, CHART.height, pixels.data(), CHART.width);
        std::vector<Rgb> colours;
        for (int i = 0; i < PATCHES; ++i) {
            const uint32_t pixel = pixels[middle(i)];
            colours.push_back(
                {double(pixel >> 16 & 0xff), double(pixel >> 8 & 0xff), double(pixel & 0xff)});
        }
        return colours;
    }

    static std::vector<Rgb> by_reference(const std::vector<Yuv> &patches, int depth,
                                         const ColourSpace &space, const Tone &tone = {})
    {
        std::vector<Rgb> colours;
        for (const Yuv &patch : patches)
            colours.push_back(reference(space, depth, patch.y, patch.u, patch.v, tone));
        return colours;
    }

    /** @param exceptions how many of all parts may be farther away */
    static void expect_near(const std::vector<Rgb> &colours, const std::vector<Rgb> &wanted,
                            double distance, int exceptions = 0)
    {
        ASSERT_EQ(colours.size(), wanted.size());
        std::string far;
        int count = 0;
        for (size_t i = 0; i < colours.size(); ++i) {
            for (double Rgb::*part : {&Rgb::red, &Rgb::green, &Rgb::blue}) {
                if (std::fabs(colours[i].*part - wanted[i].*part) <= distance)
                    continue;
                ++count;
                far += "patch " + std::to_string(i) + ": " + std::to_string(colours[i].*part) +
                       " for " + std::to_string(wanted[i].*part) + "\n";
            }
        }
        EXPECT_LE(count, exceptions) << far;
    }

    std::string folder_;

  private:
    static size_t middle(int patch)
    {
        const int x = patch % COLUMNS * PATCH_SIZE + PATCH_SIZE / 2;
        const int y = patch / COLUMNS * PATCH_SIZE + PATCH_SIZE / 2;
        return static_cast<size_t>(y) * CHART.width + static_cast<size_t>(x);
    }

    static const Yuv &at(const std::vector<Yuv> &patches, int x, int y)
    {
        return patches[static_cast<size_t>(y / PATCH_SIZE * COLUMNS + x / PATCH_SIZE)];
    }

    void write(const std::vector<Yuv> &patches, int depth) const
    {
        std::ofstream file(folder_ + "/chart.yuv", std::ios::binary);
        const auto write_plane = [&](int Yuv::*part, int step) {
            for (int y = 0; y < CHART.height; y += step) {
                for (int x = 0; x < CHART.width; x += step) {
                    const int number = at(patches, x, y).*part;
                    file.put(static_cast<char>(number));
                    if (depth > 8)
                        file.put(static_cast<char>(number >> 8));
                }
            }
        };
        write_plane(&Yuv::y, 1);
        write_plane(&Yuv::u, 2);
        write_plane(&Yuv::v, 2);
    }
};

// Half a code is for each side's rounding; mapping light is less exact by as much again.
constexpr double EXACT = 0.6;
constexpr double BOTH_ROUNDED = 1.1;
constexpr double MAPPED = 1.6;

TEST_F(SecondOpinion, AgreesOnOrdinaryFilms)
{
    struct Film {
        const char *matrix;
        ColourSpace space;
        int depth;
    };
    ColourSpace wide = bt2020(); // in BT.709's primaries, which zimg changes in light
    wide.primaries = BT709_PRIMARIES;
    for (const Film &film :
         {Film{"170m", bt601(), 8}, {"709", in_full_range({}), 8}, {"2020_ncl", wide, 10}}) {
        SCOPED_TRACE(film.matrix);
        const ColourSpace &space = film.space;
        const auto patches = chart(space, film.depth, 1);
        const auto theirs = by_ffmpeg(patches, film.depth,
                                      std::string("zscale=min=") + film.matrix +
                                          ":rin=" + (space.full_range ? "full" : "limited") +
                                          ":pin=709:tin=709:m=gbr:r=full:p=709:t=709");
        expect_near(theirs, by_reference(patches, film.depth, space), EXACT);
        expect_near(by_converter(patches, film.depth, ColourConverter(space, film.depth)), theirs,
                    BOTH_ROUNDED);
    }
}

/** To linear light by zimg, the white being so many cd/m², through a tone mapper, and back. */
std::string through_light(const char *transfer, int white, const std::string &tone)
{
    return std::string("setparams=range=limited:color_primaries=bt2020:colorspace=bt2020nc:"
                       "color_trc=") +
           transfer + ",zscale=t=linear:npl=" + std::to_string(white) + ",format=gbrpf32le," +
           tone + "zscale=p=709,zscale=t=709:m=gbr:r=full";
}

// Up to its knee our curve changes nothing, so that any converter of the light is comparable.
TEST_F(SecondOpinion, AgreesOnLightBelowTheKnee)
{
    constexpr double KNEE = 0.495; // of a film of 1000 cd/m², as a code
    const ColourSpace space = bt2020(Transfer::PQ);
    const auto patches = chart(space, 10, KNEE);
    const auto theirs = by_ffmpeg(patches, 10, through_light("smpte2084", 203, ""));
    expect_near(theirs, by_reference(patches, 10, space), EXACT);
    // Where a part of BT.709 is next to nothing, one number of the film moves it as much.
    constexpr int ILL_CONDITIONED = 3 * PATCHES * 2 / 100;
    expect_near(by_converter(patches, 10, ColourConverter(space, 10)), theirs, MAPPED,
                ILL_CONDITIONED);
}

const char *const HABLE = "tonemap=hable:desat=0:peak=10,";

/** The tone mapper of that name of ffmpeg: for a peak of ten times the white, which is 100. */
double hable(double light)
{
    const auto curve = [](double x) {
        return (x * (x * 0.15 + 0.05) + 0.004) / (x * (x * 0.15 + 0.5) + 0.06) - 0.02 / 0.3;
    };
    return curve(light / 100) / curve(10) / light;
}

TEST_F(SecondOpinion, AgreesOnAllLightWithAnotherCurve)
{
    constexpr double PEAK = 0.7518; // of 1000 cd/m², as a code
    const ColourSpace space = bt2020(Transfer::PQ);
    const auto patches = chart(space, 10, PEAK);
    expect_near(by_ffmpeg(patches, 10, through_light("smpte2084", 100, HABLE)),
                by_reference(patches, 10, space, hable), EXACT);
}

// From scene to screen zimg has one gamma for each part of a colour instead of one for its
// luminance, which is the same for greys only.
TEST_F(SecondOpinion, AgreesOnTheGreysOfHlgWithAnotherCurve)
{
    const ColourSpace space = bt2020(Transfer::HLG);
    const auto patches = chart(space, 10, 1, Hues::GREYS);
    expect_near(by_ffmpeg(patches, 10, through_light("arib-std-b67", 100, HABLE)),
                by_reference(patches, 10, space, hable), EXACT);
}

} // namespace
} // namespace platform
