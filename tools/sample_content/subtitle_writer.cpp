#include "subtitle_writer.h"

#include <cmath>
#include <cstdio>

namespace sample {

namespace {

constexpr int TEXT_COUNT = 3;

const char *const ENGLISH[TEXT_COUNT] = {"Good morning.", "Colours that wake up with you.",
                                         "See you again tomorrow."};
const char *const KOREAN[TEXT_COUNT] = {"좋은 아침입니다.", "당신과 함께 깨어나는 색.",
                                        "내일 또 만나요."};

std::string time_stamp(double seconds)
{
    const long milliseconds = std::lround(seconds * 1000);
    char text[32];
    std::snprintf(text, sizeof text, "%02ld:%02ld:%02ld,%03ld", milliseconds / 3600000,
                  milliseconds / 60000 % 60, milliseconds / 1000 % 60, milliseconds % 1000);
    return text;
}

} // namespace

std::string subrip_text(const std::string &language, double seconds)
{
    const char *const *texts = language == "Kor" ? KOREAN : ENGLISH;
    const double share = seconds / TEXT_COUNT;
    std::string result;
    for (int i = 0; i < TEXT_COUNT; ++i) {
        // A gap on both sides, so that a text's coming and going can be seen.
        const double start = share * (i + 0.1);
        const double end = share * (i + 0.9);
        result += std::to_string(i + 1) + "\n" + time_stamp(start) + " --> " + time_stamp(end) +
                  "\n" + texts[i] + "\n\n";
    }
    return result;
}

} // namespace sample
