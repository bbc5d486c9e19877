/**
 * The curves of high dynamic range, in doubles: what the codes of a film mean in light, and what an
 * ordinary screen makes of more light than it has. Any thread.
 */
#pragma once

#include "colour/colour_space.h"

namespace platform {

/** The light, in cd/m², that becomes the screen's white as a rule: ITU-R BT.2408. */
constexpr double REFERENCE_WHITE = 203;

/** The display that HLG is mapped for, in cd/m², and the system gamma that ITU-R BT.2100 has for
 * it. */
constexpr double HLG_PEAK = 1000;
constexpr double HLG_SYSTEM_GAMMA = 1.2;

/** What a screen makes of a number from 0 to 1: ITU-R BT.1886 for a black without light. */
constexpr double SCREEN_GAMMA = 2.4;

/** SMPTE ST 2084: light in cd/m² of a code from 0 to 1, and back. */
double light_of_pq(double code);
double pq_of_light(double light);

/** ITU-R BT.2100: light of the scene, 0 to 1, of a code from 0 to 1. */
double scene_of_hlg(double code);

/**
 * The brightest of a film, as far as its word is to be trusted.
 *
 * @param content   brightest pixel that the film tells (MaxCLL), cd/m²; 0: unknown
 * @param mastering of the display it was made on; below 100: unknown
 * @return from 300, below which everything fits, to 10000; 1000 where nothing is told
 */
double trusted_peak(double content, double mastering);

/**
 * How a film's light is brought to a screen that is brighter than the film in nothing: the EETF of
 * ITU-R BT.2390, by the brightest of red, green and blue, so that hues stay.
 */
class ToneCurve {
  public:
    /**
     * @param peak  of the film in cd/m², as trusted_peak() gives it
     * @param white light that becomes the screen's white, cd/m²
     */
    ToneCurve(double peak, double white);

    /** The code of PQ, over that of the peak, up to which light stays as it is; 1 if all does. */
    double knee() const { return knee_; }

    /** What light of `light` cd/m² is to be multiplied by. */
    double gain(double light) const;

  private:
    double top_;   ///< PQ code of the peak
    double white_; ///< PQ code of the screen's white, over that of the peak
    double knee_;
};

} // namespace platform
