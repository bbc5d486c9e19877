#include "colour/hdr_curves.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

// SMPTE ST 2084.
constexpr double PQ_LARGEST = 10000;
constexpr double PQ_M1 = 2610.0 / 16384;
constexpr double PQ_M2 = 2523.0 / 4096 * 128;
constexpr double PQ_C1 = 3424.0 / 4096;
constexpr double PQ_C2 = 2413.0 / 4096 * 32;
constexpr double PQ_C3 = 2392.0 / 4096 * 32;

// ITU-R BT.2100, table 5.
constexpr double HLG_A = 0.17883277;
constexpr double HLG_B = 0.28466892;
constexpr double HLG_C = 0.55991073;

constexpr double LEAST_PEAK = 300;
constexpr double USUAL_PEAK = 1000;
// No display that films are made on is darker; some encoders are told its peak in wrong units.
constexpr double LEAST_MASTERING = 100;

} // namespace

double light_of_pq(double code)
{
    const double power = std::pow(std::max(code, 0.0), 1 / PQ_M2);
    const double share = std::max(power - PQ_C1, 0.0) / (PQ_C2 - PQ_C3 * power);
    return PQ_LARGEST * std::pow(share, 1 / PQ_M1);
}

double pq_of_light(double light)
{
    const double power = std::pow(std::max(light, 0.0) / PQ_LARGEST, PQ_M1);
    return std::pow((PQ_C1 + PQ_C2 * power) / (1 + PQ_C3 * power), PQ_M2);
}

double scene_of_hlg(double code)
{
    if (code <= 0.5)
        return code * code / 3;
    return (std::exp((code - HLG_C) / HLG_A) + HLG_B) / 12;
}

double trusted_peak(double content, double mastering)
{
    double peak = USUAL_PEAK;
    if (content > 0)
        peak = content;
    else if (mastering >= LEAST_MASTERING)
        peak = mastering;
    return std::clamp(peak, LEAST_PEAK, PQ_LARGEST);
}

ToneCurve::ToneCurve(double peak, double white)
    : top_(pq_of_light(peak)), white_(pq_of_light(white) / top_),
      knee_(std::min(1.5 * white_ - 0.5, 1.0))
{
}

double ToneCurve::gain(double light) const
{
    const double code = std::min(pq_of_light(light) / top_, 1.0);
    if (code < knee_ || knee_ == 1)
        return 1;
    // A Hermite curve from the knee, at its slope of one, to the screen's white, where it is level.
    const double t = (code - knee_) / (1 - knee_);
    const double t2 = t * t;
    const double t3 = t2 * t;
    const double mapped = (2 * t3 - 3 * t2 + 1) * knee_ + (t3 - 2 * t2 + t) * (1 - knee_) +
                          (3 * t2 - 2 * t3) * white_;
    return light_of_pq(top_ * mapped) / light;
}

} // namespace platform
