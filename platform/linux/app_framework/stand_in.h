/**
 * The standby card on the video plane, for a window that has no picture. It is the plane's picture
 * until the next one, which takes its place in the frame in which it comes; options and keys are as
 * over a photo. Main-loop thread only.
 */
#pragma once

#include <cstdint>
#include <optional>

#include <Evas.h>

namespace platform {

class StandIn {
  public:
    /**
     * Shows the files that cannot be played, with the kinds of reasons, or that a picture is to
     * come where there are none.
     *
     * @param window the application's; null: nothing is shown
     * @return false when it is not to be seen, because of a picture that came meanwhile for
     * instance
     */
    bool show(Evas_Object *window);

    /** Draws it anew where it is seen: for a turned panel, another language or more such files. */
    void refresh(Evas_Object *window);

  private:
    std::optional<uint64_t> after_; ///< pictures that the plane had when this was shown
};

} // namespace platform
