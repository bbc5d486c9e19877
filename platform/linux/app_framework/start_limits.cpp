#include "app_framework/start_limits.h"

#include <array>
#include <future>
#include <system_error>
#include <thread>

#include <sys/mman.h>
#include <sys/resource.h>

namespace platform {

namespace {

// A film with the next one open beside it takes some forty.
constexpr rlim_t FEWEST_DESCRIPTORS = 64;

// Those that the toolkit and the media system have before the first picture.
constexpr size_t FEWEST_THREADS = 4;

// What stacks, heaps and pictures reserve in a demo of films, beyond what the libraries have before
// it.
constexpr size_t LEAST_ADDRESSES = size_t{1024} * 1024 * 1024;

bool has_descriptors()
{
    rlimit limit = {};
    return getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= FEWEST_DESCRIPTORS;
}

/** All at a time. */
bool has_threads()
{
    std::promise<void> over;
    const std::shared_future<void> end = over.get_future().share();
    std::array<std::thread, FEWEST_THREADS> threads;
    bool started = true;
    try {
        for (std::thread &thread : threads)
            thread = std::thread([&end] { end.wait(); });
    } catch (const std::system_error &) {
        started = false;
    }
    over.set_value();
    for (std::thread &thread : threads) {
        if (thread.joinable())
            thread.join();
    }
    return started;
}

bool has_addresses()
{
    void *room = mmap(nullptr, LEAST_ADDRESSES, PROT_NONE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return room != MAP_FAILED && munmap(room, LEAST_ADDRESSES) == 0;
}

} // namespace

std::string missing_at_start()
{
    if (!has_descriptors())
        return "descriptors (" + std::to_string(FEWEST_DESCRIPTORS) + " are needed)";
    if (!has_threads())
        return "threads";
    return has_addresses() ? "" : "addresses for its memory";
}

} // namespace platform
