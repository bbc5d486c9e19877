/**
 * Whether a process has grown more than playing explains. Items differ in what they take, so the
 * level is that of the first lap, at its dearest change of items; a change that has been seen
 * before is held against it. So are threads that hang, which a decoder leaves behind that does not
 * come back: what they have they keep, and some of them keep a processor busy. Decides only. One
 * thread at a time.
 */
#pragma once

#include <chrono>
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
     * @param hanging    threads that hang
     * @return whether it has grown too much
     */
    bool on_change(const std::string &from, const std::string &to, int64_t private_kb,
                   int hanging = 0);

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

/**
 * How many threads of this process hang that would end with it. While any waits for a disk these
 * are none: a process that has such a one does not end before the disk answers, and nothing could
 * take its place.
 *
 * @param patience how long a thread may take to end
 */
int hanging_threads(std::chrono::milliseconds patience = std::chrono::seconds(10));

} // namespace platform
