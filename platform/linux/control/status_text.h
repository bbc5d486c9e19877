/**
 * A status as a tree of named values, and its text for programs, JSON: valid UTF-8 whatever bytes
 * the values hold. Any thread.
 */
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

struct StatusNode;

/** Nothing, a truth, a number, a text, a list of texts, or named values. */
using StatusValue = std::variant<std::monostate, bool, int64_t, double, std::string,
                                 std::vector<std::string>, std::vector<StatusNode>>;

struct StatusNode {
    std::string name;
    StatusValue value;
};

/**
 * One JSON object. A byte that belongs to no UTF-8 character becomes the escape of a lone low
 * surrogate (0xFF is \\udcff), which programs that handle file names as Python does turn back.
 */
std::string status_as_json(const std::vector<StatusNode> &status);

} // namespace platform
