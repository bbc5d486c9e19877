/**
 * The arguments of the control interface's calls. Main-loop thread only.
 */
#pragma once

#include <optional>
#include <string>

#include <Eldbus.h>

namespace platform {

/** The one text of a call, "s"; nothing when it has other arguments. */
std::optional<std::string> text_argument(const Eldbus_Message *message);

/** The one path of a call, "ay", any bytes but null; nothing for other arguments. */
std::optional<std::string> path_argument(const Eldbus_Message *message);

/** "landscape", "portrait", "landscape-reverse", "portrait-reverse" as degrees clockwise. */
std::optional<int> panel_angle(const std::string &name);

/**
 * The key of the set whose name is most like a misspelt one.
 *
 * @return empty when none is like it
 */
std::string similar_key_name(const std::string &name);

} // namespace platform
