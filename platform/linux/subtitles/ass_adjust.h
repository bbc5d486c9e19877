/**
 * Changes to ASS texts before libass sees them: line breaks where a script has no spaces, and
 * bounds for letter sizes that would keep the renderer busy for seconds.
 */
#pragma once

#include <string>

#include <ass/ass.h>

namespace platform {

/**
 * Offers libass, which breaks lines at spaces only, more places: between the ideographs and kana of
 * Chinese and Japanese, at the beginnings of Thai and Lao syllables that show themselves, and at
 * zero-width spaces. Nothing is added where the text does not need it to be broken.
 */
std::string with_break_places(const std::string &ass);

/** Caps the sizes and scales that override tags ask for; `largest` in script units. */
std::string with_bounded_sizes(const std::string &ass, double largest);

/** Caps the sizes and scales of a script's styles likewise. */
void bound_style_sizes(ASS_Track &track, double largest);

} // namespace platform
