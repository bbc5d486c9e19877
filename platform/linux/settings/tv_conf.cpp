#include "settings/tv_conf.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <string_view>

#include <ini.h>

#include "base/ascii_case.h"
#include "base/paths.h"
#include "base/regular_file.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr size_t LARGEST_FILE = size_t{1024} * 1024;
constexpr double LONGEST_TURN_S = 600.0;
constexpr double LEAST_WHITE = 80.0;
constexpr double MOST_WHITE = 1000.0;

bool parse_bool(std::string_view text, bool &value)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), lower_case);
    if (lower == "yes" || lower == "true" || lower == "on" || lower == "1")
        value = true;
    else if (lower == "no" || lower == "false" || lower == "off" || lower == "0")
        value = false;
    else
        return false;
    return true;
}

template <typename Number>
bool parse_number(std::string_view text, Number lowest, Number highest, Number &value)
{
    Number parsed{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    // The comparison is written so that "nan" fails it.
    if (error != std::errc() || end != text.data() + text.size() ||
        !(parsed >= lowest && parsed <= highest))
        return false;
    value = parsed;
    return true;
}

bool parse_language(std::string_view text, std::string &value)
{
    if (!is_language(text))
        return false;
    value = text;
    return true;
}

bool parse_direction(std::string_view text, std::string &value)
{
    if (text != "ltr" && text != "rtl" && !text.empty())
        return false;
    value = text;
    return true;
}

// Absolute paths separated by colons. A colon that no slash follows belongs to a path.
bool append_paths(std::string_view text, std::vector<std::string> &paths)
{
    while (!text.empty()) {
        if (text.front() != '/')
            return false;
        const size_t end = std::min(text.find(":/"), text.size());
        paths.push_back(without_last_slashes(std::string(text.substr(0, end))));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

using Parser = bool (*)(std::string_view value, Settings &settings);

// "section/key" -> how its value is read. The functions leave the settings alone when they fail.
const std::map<std::string, Parser> &parsers()
{
    static const std::map<std::string, Parser> table = {
        {"panel/rotator",
         [](std::string_view value, Settings &s) { return parse_bool(value, s.rotator); }},
        {"panel/turning_time_s",
         [](std::string_view value, Settings &s) {
             return parse_number(value, 0.0, LONGEST_TURN_S, s.turning_time_s);
         }},
        {"panel/first_rotation_state",
         [](std::string_view value, Settings &s) {
             return parse_number(value, 0, 3, s.first_rotation_state);
         }},
        {"picture/sdr_white",
         [](std::string_view value, Settings &s) {
             return parse_number(value, LEAST_WHITE, MOST_WHITE, s.sdr_white);
         }},
        {"content/broken_video",
         [](std::string_view value, Settings &s) {
             if (value != "end" && value != "skip")
                 return false;
             s.skip_broken_videos = value == "skip";
             return true;
         }},
        {"content/follow_folder",
         [](std::string_view value, Settings &s) { return parse_bool(value, s.follow_folder); }},
        {"content/follow_sticks",
         [](std::string_view value, Settings &s) { return parse_bool(value, s.follow_sticks); }},
        {"product/disclaimer",
         [](std::string_view value, Settings &s) { return parse_bool(value, s.disclaimer); }},
        {"product/store_content_type",
         [](std::string_view value, Settings &s) {
             return parse_number(value, INT32_MIN, INT32_MAX, s.store_content_type);
         }},
        {"product/menu_orientation",
         [](std::string_view value, Settings &s) {
             return parse_direction(value, s.menu_orientation);
         }},
        {"usb/mounts",
         [](std::string_view value, Settings &s) { return append_paths(value, s.usb_mounts); }},
        {"sound/internal_sink",
         [](std::string_view value, Settings &s) {
             s.internal_sink = value;
             return true;
         }},
        {"sound/external_sink",
         [](std::string_view value, Settings &s) {
             s.external_sink = value;
             return true;
         }},
        {"language/language",
         [](std::string_view value, Settings &s) { return parse_language(value, s.language); }},
    };
    return table;
}

bool known_section(const std::string &section)
{
    const auto first = parsers().lower_bound(section + "/");
    return section == "keys" || (first != parsers().end() &&
                                 first->first.compare(0, section.size() + 1, section + "/") == 0);
}

// One pass over one file's text.
class TvConfReader {
  public:
    TvConfReader(const std::string &path, std::string text, Settings &settings)
        : path_(path), text_(std::move(text)), settings_(settings)
    {
    }

    void read()
    {
        // The library's own defaults stop at lines of 200 bytes and join indented lines to the one
        // above; a list of mount points is longer and nobody expects the other. The switches are
        // global to the process.
        static std::mutex switches;
        const std::lock_guard<std::mutex> lock(switches);
        ini_use_stack = false;
        ini_allow_realloc = true;
        ini_max_line = static_cast<int>(LARGEST_FILE) + 3;
        ini_allow_multiline = false;
        const int bad_line = ini_parse_stream(next_line, this, on_value, this);
        if (bad_line > 0)
            PLATFORM_LOGW("settings", "%s:%d: neither a [section] nor key = value", path_.c_str(),
                          bad_line);
        else if (bad_line < 0)
            PLATFORM_LOGW("settings", "%s: not read: out of memory", path_.c_str());
    }

  private:
    // As fgets(): the library does not tell its handler the line, so lines are counted here.
    static char *next_line(char *buffer, int size, void *stream)
    {
        auto &self = *static_cast<TvConfReader *>(stream);
        if (self.position_ >= self.text_.size() || size < 2)
            return nullptr;
        if (self.position_ == 0 || self.text_[self.position_ - 1] == '\n')
            ++self.line_;
        const size_t newline = self.text_.find('\n', self.position_);
        const size_t end = newline == std::string::npos ? self.text_.size() : newline + 1;
        const size_t length = std::min(end - self.position_, static_cast<size_t>(size - 1));
        std::memcpy(buffer, self.text_.data() + self.position_, length);
        buffer[length] = '\0';
        self.position_ += length;
        return buffer;
    }

    static int on_value(void *user, const char *section, const char *name, const char *value)
    {
        static_cast<TvConfReader *>(user)->take(section, name, value);
        return 1;
    }

    void take(const std::string &section, const std::string &name, const std::string &value)
    {
        if (section == "keys") {
            if (name.empty() || value.empty())
                warn(section, name, "a key needs a name on both sides");
            else
                settings_.keys[name] = value;
            return;
        }
        const auto parser = parsers().find(section + "/" + name);
        if (parser != parsers().end()) {
            if (!parser->second(value, settings_))
                warn(section, name, "\"" + value + "\" is no value for it; the default stands");
        } else if (known_section(section)) {
            warn(section, name, "no such key");
        } else {
            warn(section, name, "no such section");
        }
    }

    void warn(const std::string &section, const std::string &name, const std::string &reason)
    {
        PLATFORM_LOGW("settings", "%s:%d: [%s] %s: %s", path_.c_str(), line_, section.c_str(),
                      name.c_str(), reason.c_str());
    }

    const std::string &path_;
    const std::string text_;
    Settings &settings_;
    size_t position_ = 0;
    int line_ = 0;
};

// The whole file, nothing where there is none; a message in `error` when that fails.
std::string read_file(const std::string &path, std::string &error)
{
    std::string text;
    switch (const int reason = read_regular_file(path, LARGEST_FILE, text)) {
    case 0:
    case ENOENT:
        break;
    case EISDIR:
    case EINVAL:
        error = "not a file";
        break;
    case EFBIG:
        error = "larger than 1 MiB";
        break;
    default:
        error = std::strerror(reason);
    }
    return text;
}

} // namespace

bool is_language(std::string_view text)
{
    const auto all_between = [](std::string_view part, char first, char last) {
        return std::all_of(part.begin(), part.end(),
                           [=](char c) { return c >= first && c <= last; });
    };
    const size_t line = text.find('_');
    if (line < 2 || line > 3 || text.size() < line + 3)
        return false;
    const std::string_view rest = text.substr(line + 3);
    return all_between(text.substr(0, line), 'a', 'z') &&
           all_between(text.substr(line + 1, 2), 'A', 'Z') &&
           (rest.empty() || rest.front() == '.' || rest.front() == '@');
}

bool read_tv_conf(const std::string &path, Settings &settings)
{
    std::string error;
    std::string text = read_file(path, error);
    if (!error.empty()) {
        PLATFORM_LOGW("settings", "%s cannot be read (%s); the defaults stand", path.c_str(),
                      error.c_str());
        return false;
    }
    TvConfReader(path, std::move(text), settings).read();
    return true;
}

} // namespace platform
