/**
 * Work on a picture's rows, divided among the processor's cores. One thread at a time.
 */
#pragma once

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "base/worker_thread.h"

namespace platform {

class Bands {
  public:
    using Work = std::function<void(int first, int count)>;

    /** @param cores as many bands as these at most */
    explicit Bands(unsigned cores = std::thread::hardware_concurrency()) : cores_(cores) {}

    /**
     * Does the work on all rows and returns when it is done. What no thread is to be had for is
     * done by the caller.
     *
     * @param wanted how many bands would be good; 1 starts no thread
     */
    void run(int rows, int wanted, const Work &work);

  private:
    const unsigned cores_;
    std::vector<std::unique_ptr<WorkerThread>> helpers_;
};

} // namespace platform
