/** Letters and simple shapes on an image, drawn by libass from ASS texts with override tags. */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <ass/ass.h>

#include "image.h"

namespace sample {

class TextPainter {
  public:
    /** @throws std::runtime_error when libass cannot be started or finds no font */
    TextPainter(int width, int height);

    /**
     * Draws texts over an image of the size given above. Places and sizes in the texts' tags are
     * pixels; letters are white and bold with a dark outline unless the tags say otherwise.
     */
    void draw(Image &image, const std::vector<std::string> &texts);

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

    // In this order: the library goes last.
    std::unique_ptr<ASS_Library, LibraryDeleter> library_;
    std::unique_ptr<ASS_Renderer, RendererDeleter> renderer_;
    std::unique_ptr<ASS_Track, TrackDeleter> track_;
};

} // namespace sample
