// Loaded in front of the player by the end-to-end tests, to do to it what a fault would do. The
// player knows nothing of it. The toolkit leaves these signals alone:
//
// SIGRTMIN+1   the main thread stands for good; the others go on
// SIGRTMIN+2   the process takes 300 MB more

#include <csignal>
#include <cstddef>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr size_t BALLAST = size_t{300} * 1024 * 1024;

// What is sent to a process goes to its main thread first.
[[noreturn]] void stand(int /*signal*/)
{
    for (;;)
        pause();
}

void grow(int /*signal*/)
{
    if (mmap(nullptr, BALLAST, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE,
             -1, 0) == MAP_FAILED)
        _exit(1);
}

__attribute__((constructor)) void listen()
{
    std::signal(SIGRTMIN + 1, stand);
    std::signal(SIGRTMIN + 2, grow);
}

} // namespace
