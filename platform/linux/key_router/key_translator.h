/**
 * Renames typed keys to the set's names before anybody else sees them, and injects keys. The
 * application framework keeps one for the program's life. Main-loop thread only.
 */
#pragma once

#include "base/toolkit_handles.h"

namespace platform {

class KeyTranslator {
  public:
    KeyTranslator();
    KeyTranslator(const KeyTranslator &) = delete;
    KeyTranslator &operator=(const KeyTranslator &) = delete;

  private:
    const EventHandlerPtr down_;
    const EventHandlerPtr up_;
};

} // namespace platform
