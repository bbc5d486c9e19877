/**
 * The names of keys: which ones the set has, and what keys of PC keyboards and media remotes are
 * called there. Several of the set's names are no keysyms of any keyboard layout, so without this
 * table they could not be typed at all. Any thread.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

namespace platform {

/** Turns the panel, where the player takes it up. */
inline constexpr char PANEL_KEY[] = "XF86PanelEnter";

/** Every key of the set's remote control, each once. */
const std::vector<const char *> &tv_key_names();

/** Whether the set has a key of this name. */
bool is_tv_key_name(const std::string &name);

/** Names as input devices send them -> the set's names. */
const std::map<std::string, std::string> &default_key_translations();

/**
 * Turns the name of a typed key into the set's name.
 *
 * A configured translation wins over the default one, and a name in neither table stays as it is.
 * Both names that the toolkit gives a key are tried, the one that takes the modifiers into account
 * (`key`) first.
 *
 * @param keyname the name without modifiers, may be null
 * @param key     the name with modifiers, may be null
 * @param extra   configured translations; must outlive the result
 * @return the set's name, or null when the key is to stay as it is
 */
const char *translate_key(const char *keyname, const char *key,
                          const std::map<std::string, std::string> &extra);

} // namespace platform
