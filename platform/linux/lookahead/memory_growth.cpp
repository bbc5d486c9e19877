#include "lookahead/memory_growth.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>

namespace platform {

namespace {

constexpr int64_t MOST_GROWTH_KB = int64_t{200} * 1024;

} // namespace

bool MemoryGrowth::on_change(const std::string &from, const std::string &to, int64_t private_kb)
{
    const size_t change = std::hash<std::string>()(from + '\n' + to);
    if (changes_.size() >= limit_ || !changes_.insert(change).second)
        return private_kb > level_kb_ + MOST_GROWTH_KB;
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

} // namespace platform
