#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

#include "log/log_line.h"

namespace demo_copy {

namespace {

constexpr int BAR_WIDTH = 30;
constexpr char CLEAR_REST_OF_LINE[] = "\033[K";
// What does not fit is not seen: a line that went on below could not be drawn over.
constexpr char DO_NOT_WRAP[] = "\033[?7l";
constexpr char WRAP[] = "\033[?7h";

} // namespace

ProgressShow::ProgressShow(const ContentCopy &copy) : copy_(copy), terminal_(isatty(STDOUT_FILENO))
{
}

void ProgressShow::show(const ContentCopy::Progress &progress)
{
    const bool other_file = progress.file != file_;
    file_ = progress.file;
    if (terminal_)
        draw(progress);
    else if (other_file)
        std::printf("[%zu/%zu] %s\n", progress.file + 1, copy_.files().size(),
                    platform::visible_text(copy_.files()[progress.file].name).c_str());
    std::fflush(stdout);
}

void ProgressShow::draw(const ContentCopy::Progress &progress)
{
    const double whole = 2.0 * static_cast<double>(std::max<uint64_t>(copy_.bytes(), 1));
    const double share = std::min(static_cast<double>(progress.bytes) / whole, 1.0);
    const int percent = static_cast<int>(share * 100);
    if (percent == percent_)
        return;
    percent_ = percent;
    const int filled = static_cast<int>(share * BAR_WIDTH);
    std::string bar(static_cast<size_t>(filled), '#');
    bar.resize(BAR_WIDTH, '.');
    std::printf("\r%s[%s] %3d %%  %s%s%s", DO_NOT_WRAP, bar.c_str(), percent,
                platform::visible_text(copy_.files()[progress.file].name).c_str(),
                CLEAR_REST_OF_LINE, WRAP);
}

void ProgressShow::end()
{
    if (terminal_ && percent_ >= 0)
        std::printf("\r%s", CLEAR_REST_OF_LINE);
    std::fflush(stdout);
}

} // namespace demo_copy
