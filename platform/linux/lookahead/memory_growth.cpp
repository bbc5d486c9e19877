#include "lookahead/memory_growth.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <system_error>

#include "base/worker_thread.h"

namespace platform {

namespace {

constexpr int64_t MOST_GROWTH_KB = int64_t{200} * 1024;

// A film whose decoder hangs leaves two behind before it is given up.
constexpr int MOST_HANGING = 3;

/** Whether a thread waits for a disk, as /proc tells of it: its state follows its name. */
bool waits_for_disk(const std::filesystem::path &thread)
{
    std::ifstream file(thread / "stat");
    const std::string facts{std::istreambuf_iterator<char>(file), {}};
    const size_t name_end = facts.rfind(')');
    return name_end != std::string::npos && facts.compare(name_end, 3, ") D") == 0;
}

} // namespace

bool MemoryGrowth::on_change(const std::string &from, const std::string &to, int64_t private_kb,
                             int hanging)
{
    const size_t change = std::hash<std::string>()(from + '\n' + to);
    if (changes_.size() >= limit_ || !changes_.insert(change).second)
        return private_kb > level_kb_ + MOST_GROWTH_KB || hanging > MOST_HANGING;
    level_kb_ = std::max(level_kb_, private_kb);
    return false;
}

int64_t private_memory_kb()
{
    std::ifstream facts("/proc/self/status");
    int64_t sum = 0;
    for (std::string line; std::getline(facts, line);) {
        long part = 0;
        if (std::sscanf(line.c_str(), "RssAnon: %ld kB", &part) == 1 ||
            std::sscanf(line.c_str(), "VmSwap: %ld kB", &part) == 1)
            sum += part;
    }
    return sum;
}

int hanging_threads(std::chrono::milliseconds patience)
{
    const int hanging = WorkerThread::hanging(patience);
    std::error_code gone;
    if (hanging > 0)
        for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task", gone))
            if (waits_for_disk(thread.path()))
                return 0;
    return hanging;
}

} // namespace platform
