#include <gmock/gmock.h>

#include "colour/hdr_curves.h"

namespace platform {
namespace {

TEST(PqCurve, HasTheLightOfTheStandard)
{
    EXPECT_NEAR(light_of_pq(0), 0, 1e-9);
    EXPECT_NEAR(light_of_pq(1), 10000, 1e-6);
    // ITU-R BT.2408, table 1: reference white, and 1000 cd/m².
    EXPECT_NEAR(pq_of_light(203), 0.58, 0.001);
    EXPECT_NEAR(pq_of_light(1000), 0.75, 0.002);
}

TEST(PqCurve, GoesBackAndForth)
{
    for (double light : {0.01, 1.0, 100.0, 4000.0})
        EXPECT_NEAR(light_of_pq(pq_of_light(light)), light, light * 1e-9);
}

TEST(HlgCurve, HasTheLightOfTheRecommendation)
{
    EXPECT_NEAR(scene_of_hlg(0), 0, 1e-9);
    EXPECT_NEAR(scene_of_hlg(0.5), 1.0 / 12, 1e-9);
    EXPECT_NEAR(scene_of_hlg(1), 1, 1e-6);
    EXPECT_NEAR(scene_of_hlg(0.5 + 1e-9), scene_of_hlg(0.5), 1e-6) << "its two halves meet";
}

TEST(AFilmsPeak, IsThatOfItsContentBeforeThatOfItsDisplay)
{
    EXPECT_EQ(trusted_peak(800, 4000), 800);
    EXPECT_EQ(trusted_peak(0, 4000), 4000);
    EXPECT_EQ(trusted_peak(0, 0), 1000);
}

TEST(AFilmsPeak, IsNotBelievedWhenItIsNonsense)
{
    EXPECT_EQ(trusted_peak(3, 0), 300);
    EXPECT_EQ(trusted_peak(65535, 0), 10000);
    EXPECT_EQ(trusted_peak(0, 0.1), 1000) << "a display's, told in wrong units";
    EXPECT_EQ(trusted_peak(0, 99.9), 1000);
    EXPECT_EQ(trusted_peak(0, 100), 300);
}

TEST(AToneCurve, LeavesWhatIsDarkAndMakesThePeakWhite)
{
    for (double peak : {300.0, 1000.0, 4000.0, 10000.0}) {
        const ToneCurve curve(peak, REFERENCE_WHITE);
        EXPECT_EQ(curve.gain(1), 1);
        EXPECT_NEAR(peak * curve.gain(peak), REFERENCE_WHITE, 0.01) << peak;
        double last = 0;
        for (double light = 1; light <= peak; light *= 1.01) {
            EXPECT_GT(light * curve.gain(light), last) << light << " of " << peak;
            last = light * curve.gain(light);
        }
    }
}

TEST(AToneCurve, ChangesNothingOfAFilmThatTheScreenCanShow)
{
    const ToneCurve curve(300, 400);
    EXPECT_EQ(curve.gain(300), 1);
}

} // namespace
} // namespace platform
