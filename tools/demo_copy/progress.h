/** Shows how far a copy has come: as a bar on a terminal, elsewhere as a line for each file. */
#pragma once

#include "content_copy.h"

namespace demo_copy {

class ProgressShow {
  public:
    explicit ProgressShow(const ContentCopy &copy);

    void show(const ContentCopy::Progress &progress);

    /** Ends the bar's line, so that other words begin on one of their own. */
    void end();

  private:
    void draw(const ContentCopy::Progress &progress);

    const ContentCopy &copy_;
    const bool terminal_;
    int percent_ = -1; ///< as drawn last
    size_t file_ = static_cast<size_t>(-1);
};

} // namespace demo_copy
