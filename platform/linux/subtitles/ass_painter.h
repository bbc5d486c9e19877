/**
 * libass with one script loaded: renders what is on screen at a time for a picture of any size and
 * turn. Made on any thread, then used by one thread at a time.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <ass/ass.h>

#include "subtitles/cue_reader.h"
#include "subtitles/overlay.h"

namespace platform {

class AssPainter {
  public:
    /**
     * Opens the fonts, which takes some ten milliseconds; null when libass cannot be started, or
     * when it is told to stop.
     */
    static std::unique_ptr<AssPainter> create(const AssScript &script,
                                              const StopRequest &stop = {});

    /**
     * The overlay for a time; made anew only when it differs from the last one. Valid until the
     * next call.
     *
     * @param degrees clockwise turn of the text, 0, 90, 180 or 270
     */
    const Overlay &overlay_at(int64_t position_ms, int width, int height, int degrees);

  private:
    struct LibraryDeleter {
        void operator()(ASS_Library *library) const { ass_library_done(library); }
    };
    struct RendererDeleter {
        void operator()(ASS_Renderer *renderer) const { ass_renderer_done(renderer); }
    };
    struct TrackDeleter {
        void operator()(ASS_Track *track) const { ass_free_track(track); }
    };

    AssPainter() = default;
    bool start(const AssScript &script, const StopRequest &stop);
    void fit_to(int upright_width, int upright_height);
    void fit_plain_style(int upright_width, int upright_height);
    void fit_margins(int upright_width, int upright_height);

    // In this order: the library goes last.
    std::unique_ptr<ASS_Library, LibraryDeleter> library_;
    std::unique_ptr<ASS_Renderer, RendererDeleter> renderer_;
    std::unique_ptr<ASS_Track, TrackDeleter> track_;

    bool own_styles_ = false;
    bool animated_ = false;
    std::vector<int64_t> changes_; ///< times at which a text comes or goes, ascending

    Overlay overlay_;
    int width_ = 0;
    int height_ = 0;
    int degrees_ = 0;
    ptrdiff_t change_index_ = -1; ///< which of the times between changes overlay_ is for
};

} // namespace platform
