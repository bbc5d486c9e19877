/**
 * Renames typed keys to the set's names before anybody else sees them, and injects keys. The
 * application framework keeps one for the program's life. Main-loop thread only.
 */
#pragma once

#include <Ecore.h>

namespace platform {

class KeyTranslator {
  public:
    KeyTranslator();
    ~KeyTranslator();
    KeyTranslator(const KeyTranslator &) = delete;
    KeyTranslator &operator=(const KeyTranslator &) = delete;

  private:
    Ecore_Event_Handler *down_;
    Ecore_Event_Handler *up_;
};

} // namespace platform
