/**
 * From the text of a subtitle file, in whatever format, to ASS: a header with styles and the events
 * in the order of their times. libavformat splits the file, libavcodec turns each text into ASS.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "subtitles/stop_request.h"

namespace platform {

/** One event, as libass takes it. */
struct AssEvent {
    int64_t start_ms = 0;
    int64_t duration_ms = 0;
    std::string chunk; ///< "ReadOrder,Layer,Style,Name,MarginL,MarginR,MarginV,Effect,Text"

    /** The last field of the chunk. */
    std::string text() const;
    /** Whether a field before it asks for a scrolling effect. */
    bool has_effect() const;
};

struct AssScript {
    std::string format;      ///< name of the format found, for the log
    std::string header;      ///< everything of an .ass file up to its first event
    bool own_styles = false; ///< the file came with styles of its own; they are kept
    std::vector<AssEvent> events;
};

/**
 * Finds the format by the content and the extension and reads every text. Any thread; blocks for
 * the time of parsing. Files that are hostile in number or size of their texts lose the excess.
 *
 * @param text      UTF-8 with "\n" as line end
 * @param extension lower case without dot
 * @param error     receives one sentence when nothing is returned
 */
std::optional<AssScript> read_script(const std::string &text, const std::string &extension,
                                     std::string &error, const StopRequest &stop = {});

} // namespace platform
