#include "still_picture/profile_maker.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include <lcms2.h>

namespace platform_test {

namespace {

struct Closer {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, Closer>;
using Curve = std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve *)>;

constexpr cmsCIExyY D65 = {0.3127, 0.3290, 1};
constexpr cmsCIExyY D50 = {0.3457, 0.3585, 1};

Bytes saved(const Profile &profile, const char *name)
{
    cmsMLU *text = cmsMLUalloc(nullptr, 1);
    cmsMLUsetASCII(text, "en", "US", name);
    cmsWriteTag(profile.get(), cmsSigProfileDescriptionTag, text);
    cmsMLUfree(text);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &size);
    Bytes bytes(size);
    if (size == 0 || !cmsSaveProfileToMem(profile.get(), bytes.data(), &size))
        std::abort();
    return bytes;
}

Bytes of_primaries(const char *name, const cmsCIExyY &white, const cmsCIExyYTRIPLE &primaries,
                   const Curve &curve)
{
    cmsToneCurve *const curves[] = {curve.get(), curve.get(), curve.get()};
    return saved(Profile(cmsCreateRGBProfile(&white, &primaries, curves)), name);
}

/** Light of the sRGB primaries as the profile's colours are told, in Lab. */
void put_lab(double red, double green, double blue, cmsUInt16Number out[])
{
    const cmsCIEXYZ xyz = {0.4360747 * red + 0.3850649 * green + 0.1430804 * blue,
                           0.2225045 * red + 0.7168786 * green + 0.0606169 * blue,
                           0.0139322 * red + 0.0971045 * green + 0.7141733 * blue};
    cmsCIELab lab;
    cmsXYZ2Lab(nullptr, &lab, &xyz);
    cmsFloat2LabEncoded(out, &lab);
}

/** A profile that is a table of colours in Lab, `points` along each of its axes. */
Bytes of_table(const char *name, cmsColorSpaceSignature space, cmsUInt32Number channels,
               cmsUInt32Number points, cmsSAMPLER16 sample)
{
    const Profile profile(cmsCreateProfilePlaceholder(nullptr));
    cmsSetProfileVersion(profile.get(), 4.3);
    cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
    cmsSetColorSpace(profile.get(), space);
    cmsSetPCS(profile.get(), cmsSigLabData);
    cmsPipeline *steps = cmsPipelineAlloc(nullptr, channels, 3);
    cmsStage *table = cmsStageAllocCLut16bit(nullptr, points, channels, 3, nullptr);
    cmsStageSampleCLut16bit(table, sample, nullptr, 0);
    cmsPipelineInsertStage(steps, cmsAT_END, cmsStageAllocToneCurves(nullptr, channels, nullptr));
    cmsPipelineInsertStage(steps, cmsAT_END, table);
    cmsPipelineInsertStage(steps, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsWriteTag(profile.get(), cmsSigAToB0Tag, steps);
    cmsLinkTag(profile.get(), cmsSigAToB1Tag, cmsSigAToB0Tag); // else it has no black point
    cmsPipelineFree(steps);
    return saved(profile, name);
}

} // namespace

Bytes display_p3()
{
    constexpr cmsFloat64Number SRGB_CURVE[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return of_primaries("Display P3", D65,
                        {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}},
                        {cmsBuildParametricToneCurve(nullptr, 4, SRGB_CURVE), cmsFreeToneCurve});
}

Bytes adobe_rgb()
{
    return of_primaries("Adobe RGB (1998)", D65,
                        {{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}},
                        {cmsBuildGamma(nullptr, 563.0 / 256), cmsFreeToneCurve});
}

Bytes prophoto_rgb()
{
    std::array<cmsUInt16Number, 1024> table = {};
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<cmsUInt16Number>(
            std::lround(65535 * std::pow(static_cast<double>(i) / 1023, 1.8)));
    return of_primaries(
        "ProPhoto RGB", D50, {{0.7347, 0.2653, 1}, {0.1596, 0.8404, 1}, {0.0366, 0.0001, 1}},
        {cmsBuildTabulatedToneCurve16(nullptr, table.size(), table.data()), cmsFreeToneCurve});
}

Bytes srgb()
{
    const Profile profile(cmsCreate_sRGBProfile());
    constexpr std::pair<cmsTagSignature, cmsCIEXYZ> COLORANTS[] = {
        {cmsSigRedColorantTag, {0.43585, 0.22238, 0.01392}},
        {cmsSigGreenColorantTag, {0.38533, 0.71704, 0.09714}},
        {cmsSigBlueColorantTag, {0.14302, 0.06059, 0.71384}}};
    for (const auto &[tag, colorant] : COLORANTS)
        cmsWriteTag(profile.get(), tag, &colorant);
    return saved(profile, "sRGB");
}

Bytes rgb_table()
{
    return of_table("Table of colours", cmsSigRgbData, 3, 17,
                    [](const cmsUInt16Number in[], cmsUInt16Number out[], void *) {
                        const double red = std::pow(in[0] / 65535.0, 2);
                        const double green = std::pow(in[1] / 65535.0, 2);
                        const double blue = std::pow(in[2] / 65535.0, 2);
                        // The more green there is, the more of the others is left. White is white,
                        // because Little CMS takes it for granted; black has some light.
                        const auto hazy = [](double light) { return 0.02 + 0.98 * light; };
                        put_lab(hazy(red * (0.5 + 0.5 * green)), hazy(green),
                                hazy(blue * (0.7 + 0.3 * green)), out);
                        return cmsInt32Number{1};
                    });
}

Bytes grey_of_gamma_1_8()
{
    const Curve curve(cmsBuildGamma(nullptr, 1.8), cmsFreeToneCurve);
    return saved(Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get())), "Grey of gamma 1.8");
}

Bytes ink()
{
    return of_table(
        "Ink", cmsSigCmykData, 4, 9, [](const cmsUInt16Number in[], cmsUInt16Number out[], void *) {
            const double left = 1 - in[3] / 65535.0;
            put_lab(InkLight::red(in[0] / 65535.0) * left, InkLight::green(in[1] / 65535.0) * left,
                    InkLight::blue(in[2] / 65535.0) * left, out);
            return cmsInt32Number{1};
        });
}

Bytes chunk(uint8_t number, uint8_t count, const Bytes &part)
{
    constexpr char MARK[] = "ICC_PROFILE";
    Bytes payload(std::begin(MARK), std::end(MARK));
    payload.push_back(number);
    payload.push_back(count);
    payload.insert(payload.end(), part.begin(), part.end());
    return payload;
}

std::vector<Bytes> in_chunks(const Bytes &profile, size_t most)
{
    const size_t count = (profile.size() + most - 1) / most;
    std::vector<Bytes> chunks;
    for (size_t i = 0; i < count; ++i) {
        const auto begin = profile.begin() + static_cast<ptrdiff_t>(i * most);
        const auto end =
            profile.begin() + static_cast<ptrdiff_t>(std::min((i + 1) * most, profile.size()));
        chunks.push_back(
            chunk(static_cast<uint8_t>(i + 1), static_cast<uint8_t>(count), Bytes(begin, end)));
    }
    return chunks;
}

} // namespace platform_test
