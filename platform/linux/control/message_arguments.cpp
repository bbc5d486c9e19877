#include "control/message_arguments.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <vector>

#include "player_rules/key_names.h"

namespace platform {

namespace {

// Letters to insert, remove or change to make one text of the other; upper case counts as lower.
size_t distance(const std::string &from, const std::string &to)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t change = diagonal + (lower(from[i]) != lower(to[j]) ? 1 : 0);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string> text_argument(const Eldbus_Message *message)
{
    const char *text = nullptr;
    if (!eldbus_message_arguments_get(message, "s", &text) || text == nullptr)
        return std::nullopt;
    return text;
}

std::optional<std::string> path_argument(const Eldbus_Message *message)
{
    Eldbus_Message_Iter *bytes = nullptr;
    const char *data = nullptr;
    int size = 0;
    if (!eldbus_message_arguments_get(message, "ay", &bytes) ||
        !eldbus_message_iter_fixed_array_get(bytes, 'y', &data, &size) || size <= 0)
        return std::nullopt;
    std::string path(data, static_cast<size_t>(size));
    if (path.find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

std::optional<int> panel_angle(const std::string &name)
{
    static const std::map<std::string, int> angles = {
        {"landscape", 0}, {"portrait", 90}, {"landscape-reverse", 180}, {"portrait-reverse", 270}};
    const auto angle = angles.find(name);
    return angle != angles.end() ? std::optional<int>(angle->second) : std::nullopt;
}

std::string similar_key_name(const std::string &name)
{
    // A name much longer than any key's is no slip of the fingers, and comparing costs its length.
    if (name.size() > 64)
        return {};
    std::string best;
    size_t best_distance = 4;
    for (const char *known : tv_key_names()) {
        const std::string candidate = known;
        // People leave the common prefix out: "AudioPlay" means "XF86AudioPlay".
        const size_t found =
            std::min(distance(name, candidate), distance("XF86" + name, candidate));
        if (found < best_distance && found < candidate.size() / 2 + 1) {
            best = candidate;
            best_distance = found;
        }
    }
    return best;
}

} // namespace platform
