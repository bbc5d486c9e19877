/**
 * What becomes of a list in which nothing can be played, where unplayable files are passed over: a
 * round through it that has shown nothing ends with a wait, and each further one with one of twice
 * the length, up to a minute, so that the set is not kept busy. Any thread.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace platform {

class FruitlessRounds {
  public:
    struct Verdict {
        std::chrono::milliseconds pause{0}; ///< before the file counts as played
        /**
         * The longest wait would be the next, after a minute of shorter ones, and in the round
         * before it a video failed for something else than what is in it: a program that starts
         * afresh, with what the machine and the folder have then, may do better.
         */
        bool give_up = false;
    };

    /** Those of videos. */
    static FruitlessRounds &get();

    /**
     * A file is passed over.
     *
     * @param its_own_fault it failed for what is in it
     * @param shown         pictures of anything that the screen has had so far
     */
    Verdict on_passed_over(const std::string &path, bool its_own_fault, uint64_t shown);

    /**
     * Has somebody told whenever a wait begins. The call comes from the thread of the file; it
     * must not call this object. One listener at a time; an empty one ends it.
     */
    void set_listener(std::function<void()> listener);

  private:
    void begin_round();

    std::mutex mutex_; ///< guards what follows
    uint64_t shown_ = 0;
    std::chrono::milliseconds pause_{0}; ///< after the last round; none after one with a picture
    std::set<std::string> passed_over_;  ///< in this round
    bool all_own_faults_ = true;         ///< in this round
    std::function<void()> listener_;
};

} // namespace platform
