#include "still_picture/colour_profile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <Eina.h>
#include <lcms2.h>

#include "log/log_line.h"

namespace platform {

namespace {

constexpr int CODES = 256;
constexpr double LAST_CODE = CODES - 1;
/** How far off, in codes, the tables may be; and sRGB, whose makers' profiles differ by 1.4. */
constexpr double TABLE_TOLERANCE = 1;
constexpr double SRGB_TOLERANCE = 2;
/** What is tried of each of the three numbers: more of the dark, where curves differ most. */
constexpr int TRIED[] = {0, 16, 48, 112, 184, CODES - 1};

// A sum of light has 16 of 64 bits, and white is this much: in the dark, where it matters most, the
// codes of sRGB are five such steps apart.
constexpr int SUM_BITS = 16;
constexpr double WHITE = 1 << 14;
/** How far the light may reach that tables are made for, in whites; of Adobe RGB it is 1.8. */
constexpr double MOST_LIGHT = 3.9;

constexpr int LONGEST_NAME = 128;

struct ProfileDeleter {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileDeleter>;

struct Formats {
    cmsColorSpaceSignature space;
    cmsUInt32Number pixels;
    cmsUInt32Number doubles;
};

Formats formats_of(ColourProfile::Content content)
{
    constexpr cmsUInt32Number GREY_8 =
        COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(3) | BYTES_SH(1);
    switch (content) {
    case ColourProfile::Content::Grey:
        return {cmsSigGrayData, GREY_8, TYPE_GRAY_DBL};
    case ColourProfile::Content::Rgb:
        break;
    case ColourProfile::Content::Ink:
        return {cmsSigCmykData, TYPE_CMYK_8, TYPE_CMYK_DBL};
    case ColourProfile::Content::Inverted:
        return {cmsSigCmykData, TYPE_CMYK_8_REV, TYPE_CMYK_DBL};
    }
    return {cmsSigRgbData, TYPE_BGRA_8, TYPE_RGB_DBL};
}

/** sRGB with light instead of its codes, so that what three numbers make can be added. */
Profile linear_srgb(cmsContext context)
{
    constexpr cmsCIExyY D65 = {0.3127, 0.3290, 1};
    constexpr cmsCIExyYTRIPLE PRIMARIES = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    const std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve *)> straight(
        cmsBuildGamma(context, 1), cmsFreeToneCurve);
    cmsToneCurve *const curves[] = {straight.get(), straight.get(), straight.get()};
    return Profile(cmsCreateRGBProfileTHR(context, &D65, &PRIMARIES, curves));
}

/** The light of a code of sRGB, both from 0 to 1, and back. */
double srgb_light(double code)
{
    return code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4);
}

double srgb_code(double light)
{
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

const uint8_t *bytes_of(const uint32_t &pixel)
{
    return reinterpret_cast<const uint8_t *>(&pixel);
}

std::string name_of(cmsHPROFILE profile)
{
    wchar_t wide[LONGEST_NAME] = L"";
    cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", wide, sizeof wide);
    const std::unique_ptr<char, void (*)(void *)> text(eina_unicode_unicode_to_utf8(wide, nullptr),
                                                       free);
    return text && *text ? visible_text(text.get()) : "without a name";
}

/** What light each number adds, [from][to][code], blue first. A grey pixel's blue is its grey. */
using Parts = std::array<std::array<std::array<double, CODES>, 3>, 3>;

/** @return false when light is told that is not finite */
bool read_parts(void *to_light, size_t channels, Parts &parts)
{
    std::array<double, 3> black = {};
    for (size_t from = 0; from < channels; ++from) {
        for (size_t code = 0; code < CODES; ++code) {
            double numbers[3] = {};
            numbers[channels - 1 - from] = static_cast<double>(code) / LAST_CODE;
            std::array<double, 3> made = {}; // red first
            cmsDoTransform(to_light, numbers, made.data(), 1);
            if (!std::all_of(made.begin(), made.end(), [](double x) { return std::isfinite(x); }))
                return false;
            for (size_t to = 0; to < 3; ++to)
                parts[from][to][code] = made[2 - to] - black[to];
        }
        // What is there without any number counts once.
        for (size_t to = 0; from == 0 && to < 3; ++to)
            black[to] = parts[from][to][0];
    }
    return true;
}

/** The least and the most light that the parts add up to. */
struct Reach {
    double low = 0;
    double high = 0;
    std::array<double, 3> lows = {}; ///< of blue, green and red
};

Reach reach_of(const Parts &parts)
{
    Reach reach;
    for (size_t to = 0; to < 3; ++to) {
        double sum = 0;
        for (const auto &from : parts) {
            const auto ends = std::minmax_element(from[to].begin(), from[to].end());
            reach.lows[to] += *ends.first;
            sum += *ends.second;
        }
        reach.low = std::min(reach.low, reach.lows[to]);
        reach.high = std::max(reach.high, sum);
    }
    return reach;
}

/** Each part begins at nothing, so that sums need no sign; together they begin at the lowest. */
std::array<std::array<uint64_t, CODES>, 3> side_by_side(const Parts &parts, const Reach &reach)
{
    std::array<std::array<uint64_t, CODES>, 3> light = {};
    for (size_t from = 0; from < 3; ++from) {
        for (size_t to = 0; to < 3; ++to) {
            const auto &part = parts[from][to];
            const double begin = *std::min_element(part.begin(), part.end()) -
                                 (from == 0 ? reach.lows[to] - reach.low : 0);
            for (size_t code = 0; code < CODES; ++code) {
                const auto steps = static_cast<uint64_t>(std::lround((part[code] - begin) * WHITE));
                light[from][code] |= steps << (to * SUM_BITS);
            }
        }
    }
    return light;
}

std::vector<uint8_t> codes_of_sums(const Reach &reach)
{
    // Three roundings can take a sum that far above the highest.
    std::vector<uint8_t> codes(static_cast<size_t>((reach.high - reach.low) * WHITE) + 4,
                               CODES - 1);
    auto at = codes.begin();
    for (int code = 0; code < CODES - 1; ++code) {
        const double end = (srgb_light((code + 0.5) / LAST_CODE) - reach.low) * WHITE;
        const auto past = codes.begin() + std::min<ptrdiff_t>(codes.size(), std::lround(end));
        std::fill(at, past, static_cast<uint8_t>(code));
        at = past;
    }
    return codes;
}

} // namespace

/** A pixel and what it is in sRGB, red, green and blue in codes of 0 to 255. */
struct ColourProfile::Sample {
    uint32_t pixel;
    std::array<double, 3> wanted;

    bool is_near(uint32_t color, double tolerance) const
    {
        for (size_t i = 0; i < wanted.size(); ++i) {
            const double difference = (color >> (16 - 8 * i) & 0xff) - wanted[i];
            if (!(std::abs(difference) <= tolerance))
                return false;
        }
        return true;
    }
};

void ColourProfile::ContextDeleter::operator()(void *context) const
{
    cmsDeleteContext(static_cast<cmsContext>(context));
}

void ColourProfile::TransformDeleter::operator()(void *transform) const
{
    cmsDeleteTransform(transform);
}

ColourProfile::ColourProfile(const std::vector<uint8_t> &icc, Content content)
    : content_(content), context_(cmsCreateContext(nullptr, this))
{
    if (!context_)
        throw std::bad_alloc();
    const auto context = static_cast<cmsContext>(context_.get());
    cmsSetLogErrorHandlerTHR(context, [](cmsContext from, cmsUInt32Number, const char *text) {
        auto &self = *static_cast<ColourProfile *>(cmsGetContextUserData(from));
        if (!*self.complaint_)
            snprintf(self.complaint_, sizeof self.complaint_, "%s", text);
    });
    if (!read(icc))
        use_.fault = *complaint_ ? visible_text(complaint_) : "it cannot be read";
}

ColourProfile::~ColourProfile() = default;

/** @return whether the profile can be used; else complaint_ may say why not. */
bool ColourProfile::read(const std::vector<uint8_t> &icc)
{
    const auto context = static_cast<cmsContext>(context_.get());
    const Profile profile(
        cmsOpenProfileFromMemTHR(context, icc.data(), static_cast<cmsUInt32Number>(icc.size())));
    if (!profile)
        return false;
    const Formats formats = formats_of(content_);
    if (cmsGetColorSpace(profile.get()) != formats.space) {
        snprintf(complaint_, sizeof complaint_, "it is for another colour space than the picture");
        return false;
    }
    if (formats.space != cmsSigCmykData) {
        const Profile light = linear_srgb(context);
        const Transform to_light = between(profile.get(), formats.doubles, light.get(),
                                           TYPE_RGB_DBL, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
        if (!to_light)
            return false;
        const std::vector<Sample> tried = samples(to_light.get());
        const auto all_near = [&tried](double tolerance, const auto &converted) {
            return std::all_of(tried.begin(), tried.end(), [&](const Sample &sample) {
                return sample.is_near(converted(sample.pixel), tolerance);
            });
        };
        if (all_near(SRGB_TOLERANCE, [](uint32_t pixel) { return pixel; }))
            return true;
        if (!tabulate(to_light.get()) || !all_near(TABLE_TOLERANCE, [this](uint32_t pixel) {
                return looked_up(bytes_of(pixel));
            }))
            codes_.clear();
    }
    if (codes_.empty()) {
        const Profile srgb(cmsCreate_sRGBProfileTHR(context));
        transform_ = between(profile.get(), formats.pixels, srgb.get(), TYPE_BGRA_8, 0);
    }
    if (!differs())
        return false;
    use_.applied = name_of(profile.get());
    return true;
}

ColourProfile::Transform ColourProfile::between(void *from, uint32_t from_format, void *to,
                                                uint32_t to_format, uint32_t flags) const
{
    if (!from || !to)
        return nullptr;
    return Transform(cmsCreateTransformTHR(static_cast<cmsContext>(context_.get()), from,
                                           from_format, to, to_format, INTENT_RELATIVE_COLORIMETRIC,
                                           cmsFLAGS_BLACKPOINTCOMPENSATION | flags));
}

/** Colours of all kinds. @param to_light gives a colour's light, as linear_srgb() has it */
std::vector<ColourProfile::Sample> ColourProfile::samples(void *to_light) const
{
    std::vector<Sample> all;
    const auto add = [&](int red, int green, int blue) {
        const double numbers[] = {red / LAST_CODE, green / LAST_CODE, blue / LAST_CODE};
        Sample sample = {static_cast<uint32_t>(red << 16 | green << 8 | blue), {}};
        cmsDoTransform(to_light, numbers, sample.wanted.data(), 1);
        for (double &value : sample.wanted)
            value = srgb_code(std::clamp(value, 0.0, 1.0)) * LAST_CODE;
        all.push_back(sample);
    };
    if (content_ == Content::Grey) {
        for (int grey = 0; grey < CODES; ++grey)
            add(grey, grey, grey);
        return all;
    }
    for (const int red : TRIED) {
        for (const int green : TRIED) {
            for (const int blue : TRIED)
                add(red, green, blue);
        }
    }
    return all;
}

/**
 * Makes the tables. They hold what the profile says of each number by itself; whether that is all
 * it says remains to be tried.
 *
 * @return false when there can be no tables
 */
bool ColourProfile::tabulate(void *to_light)
{
    Parts parts = {};
    if (!read_parts(to_light, content_ == Content::Grey ? 1 : 3, parts))
        return false;
    const Reach reach = reach_of(parts);
    if (reach.high - reach.low > MOST_LIGHT)
        return false;
    light_ = side_by_side(parts, reach);
    codes_ = codes_of_sums(reach);
    return true;
}

/** @param pixel its bytes: blue, green, red */
inline uint32_t ColourProfile::looked_up(const uint8_t *pixel) const
{
    const uint8_t *codes = codes_.data();
    const uint64_t sums = light_[0][pixel[0]] + light_[1][pixel[1]] + light_[2][pixel[2]];
    return static_cast<uint32_t>(codes[sums >> 2 * SUM_BITS] << 16) |
           static_cast<uint32_t>(codes[static_cast<uint16_t>(sums >> SUM_BITS)] << 8) |
           codes[static_cast<uint16_t>(sums)];
}

void ColourProfile::convert(uint32_t *pixels, int count) const
{
    if (transform_)
        cmsDoTransform(transform_.get(), pixels, pixels, static_cast<cmsUInt32Number>(count));
    else
        std::transform(pixels, pixels + count, pixels,
                       [this](const uint32_t &pixel) { return looked_up(bytes_of(pixel)); });
}

} // namespace platform
