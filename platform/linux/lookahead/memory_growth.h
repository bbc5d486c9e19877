/**
 * Whether a process has grown more than playing explains. Items differ in what they take, so the
 * level is that of the first lap, at its dearest change of items; a change that has been seen
 * before is held against it. Decides only. One thread at a time.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace platform {

class MemoryGrowth {
  public:
    /** @param limit changes to remember; with so many the first lap counts as over */
    explicit MemoryGrowth(size_t limit = 4096) : limit_(limit) {}

    /**
     * One item follows another, or a round of it another round.
     *
     * @param private_kb what the process has for itself at this moment
     * @return whether it has grown too much
     */
    bool on_change(const std::string &from, const std::string &to, int64_t private_kb);

    /** That of the first lap. */
    int64_t level_kb() const { return level_kb_; }

  private:
    const size_t limit_;
    std::unordered_set<size_t> changes_; ///< those seen so far, by their hashes
    int64_t level_kb_ = 0;
};

/**
 * What this process has for itself, in memory or swapped out; 0 where the system does not tell.
 * Read from counters: to go through all pages, as /proc/self/smaps_rollup does, holds up whoever
 * maps memory.
 */
int64_t private_memory_kb();

} // namespace platform
