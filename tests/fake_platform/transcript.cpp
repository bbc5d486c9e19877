#include "transcript.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "dlog.h"

namespace fake {
namespace {

// These answer a question about the set or the player, and log it each time they are asked.
bool only_answers(const std::string &function)
{
    static const std::set<std::string> functions = {
        "CheckPathExist",   "GetConfigInt",           "GetExtraData",
        "GetPlayingType",   "GetSystemLanguage",      "GetWindowRotationType",
        "IsPortraitMode",   "IsRTLOrientation",       "IsSupportRotator",
        "bShowDisclaimer",  "isDirectBacklightModel", "m_GetFileMode",
        "m_GetPlayerState", "m_GetPlayBackStatus",    "m_GetPlaybackFolderPath",
        "m_GetResourcePath"};
    return functions.count(function) != 0;
}

} // namespace

char priority_letter(int priority)
{
    switch (priority) {
    case DLOG_DEBUG:
        return 'D';
    case DLOG_INFO:
        return 'I';
    case DLOG_WARN:
        return 'W';
    case DLOG_ERROR:
        return 'E';
    default:
        return '?';
    }
}

void Transcript::add(Kind kind, const std::string &function, const std::string &text)
{
    entries_.push_back({kind, function, text});
}

void Transcript::add_log(const LogLine &line)
{
    log_lines_.push_back(line);
    add(Kind::Log, line.function,
        std::string(1, priority_letter(line.priority)) + " \"" + line.text + "\"");
}

void Transcript::clear()
{
    entries_.clear();
    log_lines_.clear();
}

template <typename Wanted> Transcript::Lines Transcript::texts_of(Wanted wanted) const
{
    Lines lines;
    for (const Entry &entry : entries_) {
        if (wanted(entry))
            lines.push_back(entry.text);
    }
    return lines;
}

Transcript::Lines Transcript::calls() const
{
    return texts_of([](const Entry &entry) { return entry.kind == Kind::Effect; });
}

Transcript::Lines Transcript::logs() const
{
    return texts_of([](const Entry &entry) { return entry.kind == Kind::Log; });
}

Transcript::Lines Transcript::lines() const
{
    return texts_of([](const Entry &entry) {
        return entry.kind == Kind::Effect ||
               (entry.kind == Kind::Log && !only_answers(entry.function));
    });
}

Transcript::Lines Transcript::all() const
{
    return texts_of([](const Entry &) { return true; });
}

Transcript::Lines Transcript::of(std::initializer_list<const char *> prefixes) const
{
    return texts_of([&](const Entry &entry) {
        const auto fits = [&](const char *prefix) { return entry.function.rfind(prefix, 0) == 0; };
        return entry.kind != Kind::Log && std::any_of(prefixes.begin(), prefixes.end(), fits);
    });
}

int Transcript::count(const std::string &function) const
{
    return static_cast<int>(
        std::count_if(entries_.begin(), entries_.end(), [&function](const Entry &entry) {
            return entry.kind != Kind::Log && entry.function == function;
        }));
}

std::string describe(const char *text)
{
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

std::string describe(bool value)
{
    return value ? "true" : "false";
}

std::string describe(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string describe(const Raw &raw)
{
    return raw.text;
}

} // namespace fake
