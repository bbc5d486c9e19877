// Loaded in front of the player by the end-to-end tests, for what a machine in trouble does to it:
// it has no more threads or memory to give, or somebody sets its clock. Limits of the kernel would
// need another user for threads, and strike whatever library comes first; these are exact. What
// waits until a time of day is not moved along with the clock; nothing of the player's does.
//
// A library that stumbles over what it does not get is nobody's fault here; the player is not to.
// So a crash tells of itself through whose code it came about, and so does an end by exit().
//
// SHORTAGE   the file with the words of Shortage, of 64 bits in the machine's order; whoever writes
//            it changes what holds from that moment on

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <utility>

#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

#include "next.h"

// The allocator's own names are called, because asking for them by dlsym() may allocate. What a
// sanitized player starts may have no sanitizer.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t items, size_t size);
void *__libc_realloc(void *memory, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
[[gnu::weak]] void *__interceptor_malloc(size_t size);
[[gnu::weak]] void *__interceptor_calloc(size_t items, size_t size);
[[gnu::weak]] void *__interceptor_realloc(void *memory, size_t size);
[[gnu::weak]] void *__interceptor_memalign(size_t alignment, size_t size);
}

#define ALLOCATOR(function)                                                                        \
    (__interceptor_##function ? __interceptor_##function : __libc_##function)

namespace {

constexpr int MOST_CALLS = 100;

/** All zero: nothing is short. */
struct Shortage {
    std::atomic<int64_t> clock_ahead_s; ///< the time of day, ahead of the true one
    std::atomic<int64_t> no_threads;    ///< after this many more, minus one, there is none
    std::atomic<int64_t> no_memory;     ///< the allocation of this number, from now on, has none
    std::atomic<int64_t> largest_block; ///< bytes; there is no larger one
};

static_assert(sizeof(Shortage) == 4 * sizeof(int64_t));

// Until the file is there nothing is short.
Shortage none;
std::atomic<Shortage *> shortage{&none};

Shortage &present()
{
    return *shortage.load(std::memory_order_relaxed);
}

/** Counts down to zero. @return whether it was there already, or has just come there */
bool is_last(std::atomic<int64_t> &left)
{
    int64_t now = left;
    while (now > 0 && !left.compare_exchange_weak(now, now - 1)) {
    }
    return now == 1;
}

bool refuses(size_t size)
{
    const int64_t largest = present().largest_block;
    const bool too_large = largest > 0 && size > static_cast<uint64_t>(largest);
    const bool refused = too_large || is_last(present().no_memory);
    if (refused)
        errno = ENOMEM;
    return refused;
}

/** Writes a line without the allocator, which may be what has crashed. */
template <typename... Values> void tell(const char *format, Values... values)
{
    char line[4096];
    const int length = snprintf(line, sizeof line, format, values...);
    if (length < 0 || write(STDERR_FILENO, line, std::min<size_t>(length, sizeof line - 1)) < 0)
        _exit(EXIT_FAILURE);
}

/** Writes where each of the calls is that led here, the innermost first, a line each. */
void tell_calls()
{
    void *calls[MOST_CALLS];
    const int count = backtrace(calls, MOST_CALLS);
    for (int i = 0; i < count; i++) {
        Dl_info place = {};
        const bool known = dladdr(calls[i], &place) != 0 && place.dli_fname;
        const auto base = reinterpret_cast<uintptr_t>(known ? place.dli_fbase : nullptr);
        tell("called in %s +0x%zx\n", known ? place.dli_fname : "nowhere",
             reinterpret_cast<uintptr_t>(calls[i]) - base);
    }
}

void tell_crash(int number)
{
    // What comes of telling ends the process at once, and another thread's crash waits for that.
    static thread_local bool telling = false;
    static std::atomic_flag told = ATOMIC_FLAG_INIT;
    if (!std::exchange(telling, true)) {
        while (told.test_and_set())
            pause();
        tell("crashed with signal %d\n", number);
        tell_calls();
    }
    signal(number, SIG_DFL);
    raise(number);
}

void tell_of_crashes()
{
    // The main thread's stack may be what there is no memory for.
    static char stack[64 * 1024];
    stack_t own_stack = {};
    own_stack.ss_sp = stack;
    own_stack.ss_size = sizeof stack;
    sigaltstack(&own_stack, nullptr);
    // The first time it loads the library that knows how, which it cannot do in a crash.
    void *here = nullptr;
    backtrace(&here, 1);
    struct sigaction crash = {};
    crash.sa_handler = tell_crash;
    crash.sa_flags = SA_ONSTACK;
    for (const int number : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP})
        sigaction(number, &crash, nullptr);
}

__attribute__((constructor)) void map_the_file()
{
    tell_of_crashes();
    const char *path = getenv("SHORTAGE");
    const int file = path ? open(path, O_RDWR | O_CLOEXEC) : -1;
    void *shared =
        file < 0 ? MAP_FAILED
                 : mmap(nullptr, sizeof(Shortage), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (shared == MAP_FAILED)
        abort();
    close(file);
    shortage = static_cast<Shortage *>(shared);
}

} // namespace

int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static auto *const original = next<decltype(clock_gettime)>("clock_gettime");
    const int result = original(clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        time->tv_sec += present().clock_ahead_s;
    return result;
}

int gettimeofday(timeval *time, void *zone) noexcept
{
    static auto *const original = next<int(timeval *, void *)>("gettimeofday");
    const int result = original(time, zone);
    time->tv_sec += present().clock_ahead_s;
    return result;
}

time_t time(time_t *result) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *),
                   void *data) noexcept
{
    static auto *const original = next<decltype(pthread_create)>("pthread_create");
    // The last of them stays: from then on there is none.
    int64_t left = present().no_threads;
    while (left > 1 && !present().no_threads.compare_exchange_weak(left, left - 1)) {
    }
    return left == 1 ? EAGAIN : original(thread, attributes, run, data);
}

void *malloc(size_t size) noexcept
{
    return refuses(size) ? nullptr : ALLOCATOR(malloc)(size);
}

void *calloc(size_t items, size_t size) noexcept
{
    return refuses(items * size) ? nullptr : ALLOCATOR(calloc)(items, size);
}

void *realloc(void *memory, size_t size) noexcept
{
    return refuses(size) ? nullptr : ALLOCATOR(realloc)(memory, size);
}

void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    return refuses(size) ? nullptr : ALLOCATOR(memalign)(alignment, size);
}

int posix_memalign(void **memory, size_t alignment, size_t size) noexcept
{
    void *made = refuses(size) ? nullptr : ALLOCATOR(memalign)(alignment, size);
    if (!made)
        return ENOMEM;
    *memory = made;
    return 0;
}

void exit(int status) noexcept
{
    static auto *const original = next<decltype(exit)>("exit");
    tell("exit with status %d\n", status);
    tell_calls();
    original(status);
    abort();
}
