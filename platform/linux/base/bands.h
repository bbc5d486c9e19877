/**
 * Work on a picture's rows, divided among the processor's cores. One thread at a time.
 */
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "base/worker_thread.h"

namespace platform {

class Bands {
  public:
    /** @param band counted from 0; @param first of `count` rows */
    using Work = std::function<void(int band, int first, int count)>;

    /** @param cores as many bands as these at most */
    explicit Bands(unsigned cores = std::thread::hardware_concurrency())
        : cores_(static_cast<int>(cores))
    {
    }

    /** How many bands there are where so many would be good. */
    int count(int wanted) const { return std::clamp(wanted, 1, std::max(cores_, 1)); }

    /**
     * Does the work on all rows and returns when it is done. What no thread is to be had for is
     * done by the caller.
     *
     * @param wanted as for count(); 1 starts no thread
     */
    void run(int rows, int wanted, const Work &work);

  private:
    const int cores_;
    std::vector<std::unique_ptr<WorkerThread>> helpers_;
};

} // namespace platform
