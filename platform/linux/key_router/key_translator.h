/**
 * Renames typed keys to the set's names before anybody else sees them, and injects keys. The
 * application framework keeps one for the program's life. Main-loop thread only.
 */
#pragma once

#include <string>

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

/**
 * Presses and releases a key, as if the remote control had sent it. The key reaches the application
 * under exactly this name; the table of PC key names is not applied.
 *
 * @param tv_key_name the set's name of the key, e.g. "XF86RaiseChannel"
 */
void inject_key(const std::string &tv_key_name);

} // namespace platform
