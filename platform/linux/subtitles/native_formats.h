/**
 * Subtitle formats that libavformat does not read: PowerDivX (.psb) and 3GPP timed text as XML
 * (.ttxt); and the choice of one language from a SAMI file that holds several.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

struct PlainCue {
    int64_t start_ms = 0;
    int64_t duration_ms = -1; ///< negative: until the next one
    std::string text;         ///< UTF-8, "\n" between lines
};

/** PowerDivX lines, "{h:mm:ss}{h:mm:ss}text|second line"; empty when there is none. */
std::vector<PlainCue> read_powerdivx(const std::string &text);

/** The <TextSample> elements of a TTXT file; empty when there is none. */
std::vector<PlainCue> read_ttxt(const std::string &text);

/**
 * Leaves only the texts of the first language of a SAMI file, so that a bilingual file does not
 * show both at once. Files with one language come back as they are.
 */
std::string first_sami_language(const std::string &text);

} // namespace platform
