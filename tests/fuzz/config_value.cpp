// Values and names of configuration keys, which any program may write.

#include "config_store/config_files.h"
#include "fuzz.h"

using platform::ConfigFiles;

namespace {

void read_value(std::string_view text)
{
    constexpr int PRESET = -7;
    int value = PRESET;
    if (!ConfigFiles::parse(text, value)) {
        fuzz::require(value == PRESET, "a text that is no integer leaves the value alone");
        return;
    }
    fuzz::require(std::strtoll(std::string(text).c_str(), nullptr, 10) == value,
                  "an integer is read as the C library reads it");
    int again = PRESET;
    fuzz::require(ConfigFiles::parse(std::to_string(value) + "\n", again) && again == value,
                  "a value that is written is read again");
}

void read_name(std::string_view name)
{
    if (!ConfigFiles::is_valid_key(name))
        return;
    fuzz::require(name.find('\0') == std::string_view::npos, "a key's name is a C string");
    const std::vector<std::string> parts = fuzz::pieces(name, '/');
    fuzz::require(parts.size() >= 2 && (parts[0] == "db" || parts[0] == "memory"),
                  "a key lies in db or memory");
    for (const std::string &part : parts)
        fuzz::require(!part.empty() && part.front() != '.', "no key leads out of its folder");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    read_value(fuzz::text_of(data, size));
    read_name(fuzz::text_of(data, size));
    return 0;
}
