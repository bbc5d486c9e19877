/**
 * What the fuzz targets share. A target is one function for any bytes: LLVMFuzzerTestOneInput(),
 * which libFuzzer calls over and over, and replay.cpp once for each input of seeds.py. It ends the
 * process where something is wrong that no sanitizer sees.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

/** Ends the process unless something holds. @param what has to hold, as a sentence */
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: this does not hold: %s\n", what);
    std::abort();
}

inline std::string_view text_of(const uint8_t *data, size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

/** The pieces of an input, of which there is one more than separators. */
inline std::vector<std::string> pieces(std::string_view input, char separator)
{
    std::vector<std::string> found;
    for (size_t at = 0;;) {
        const size_t end = input.find(separator, at);
        found.emplace_back(input.substr(at, end - at));
        if (end == std::string_view::npos)
            return found;
        at = end + 1;
    }
}

} // namespace fuzz
