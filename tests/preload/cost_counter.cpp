// Loaded in front of the player by the end-to-end tests, to count what it asks of the system: heap
// allocations, threads started and descriptors opened. The counts are stable where times are not.
//
// COST_COUNTER   the file that the counts go to, three numbers of 64 bits in the machine's order in
//                the order above; whoever maps or reads it sees them as they are at that moment

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "next.h"

namespace {

struct Counts {
    std::atomic<uint64_t> allocations;
    std::atomic<uint64_t> threads;
    std::atomic<uint64_t> descriptors;
};

static_assert(sizeof(Counts) == 3 * sizeof(uint64_t));

// Until the file is there, what is counted goes here and is not seen.
Counts before_the_file;
std::atomic<Counts *> counts{&before_the_file};

void count(std::atomic<uint64_t> Counts::*which)
{
    (counts.load(std::memory_order_relaxed)->*which).fetch_add(1, std::memory_order_relaxed);
}

/** Counts what has been opened, which is a number of files, or minus one. */
int opened(int result, int how_many = 1)
{
    for (int i = 0; result >= 0 && i < how_many; i++)
        count(&Counts::descriptors);
    return result;
}

FILE *opened(FILE *file)
{
    opened(file ? 0 : -1);
    return file;
}

__attribute__((constructor)) void map_the_file()
{
    const char *path = getenv("COST_COUNTER");
    const int file = path ? open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600) : -1;
    if (file < 0 || ftruncate(file, sizeof(Counts)) != 0)
        abort();
    void *shared = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (shared == MAP_FAILED)
        abort();
    counts = static_cast<Counts *>(shared);
}

} // namespace

// A sanitizer has an allocator of its own and tells of each allocation; the C library's is stepped
// in front of. Its own names are called, because asking for them by dlsym() may allocate.
#ifdef SANITIZED

extern "C" void __sanitizer_malloc_hook(const volatile void * /*memory*/, size_t /*size*/)
{
    count(&Counts::allocations);
}

#else

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t items, size_t size);
void *__libc_realloc(void *memory, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}

void *malloc(size_t size) noexcept
{
    count(&Counts::allocations);
    return __libc_malloc(size);
}

void *calloc(size_t items, size_t size) noexcept
{
    count(&Counts::allocations);
    return __libc_calloc(items, size);
}

void *realloc(void *memory, size_t size) noexcept
{
    count(&Counts::allocations);
    return __libc_realloc(memory, size);
}

void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    count(&Counts::allocations);
    return __libc_memalign(alignment, size);
}

int posix_memalign(void **memory, size_t alignment, size_t size) noexcept
{
    count(&Counts::allocations);
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}

#endif

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*run)(void *),
                   void *data) noexcept
{
    static auto *const original = next<decltype(pthread_create)>("pthread_create");
    count(&Counts::threads);
    return original(thread, attributes, run, data);
}

int open(const char *path, int flags, ...)
{
    static auto *const original = next<decltype(open)>("open");
    va_list words;
    va_start(words, flags);
    const mode_t mode = mode_in(words, flags);
    va_end(words);
    return opened(original(path, flags, mode));
}

int openat(int folder, const char *path, int flags, ...)
{
    static auto *const original = next<decltype(openat)>("openat");
    va_list words;
    va_start(words, flags);
    const mode_t mode = mode_in(words, flags);
    va_end(words);
    return opened(original(folder, path, flags, mode));
}

FILE *fopen(const char *path, const char *mode)
{
    static auto *const original = next<decltype(fopen)>("fopen");
    return opened(original(path, mode));
}

int socket(int domain, int type, int protocol) noexcept
{
    static auto *const original = next<decltype(socket)>("socket");
    return opened(original(domain, type, protocol));
}

int socketpair(int domain, int type, int protocol, int pair[2]) noexcept
{
    static auto *const original = next<decltype(socketpair)>("socketpair");
    return opened(original(domain, type, protocol, pair), 2);
}

int pipe(int pair[2]) noexcept
{
    static auto *const original = next<decltype(pipe)>("pipe");
    return opened(original(pair), 2);
}

int pipe2(int pair[2], int flags) noexcept
{
    static auto *const original = next<decltype(pipe2)>("pipe2");
    return opened(original(pair, flags), 2);
}

int eventfd(unsigned int value, int flags) noexcept
{
    static auto *const original = next<decltype(eventfd)>("eventfd");
    return opened(original(value, flags));
}

int memfd_create(const char *name, unsigned int flags) noexcept
{
    static auto *const original = next<decltype(memfd_create)>("memfd_create");
    return opened(original(name, flags));
}

int epoll_create1(int flags) noexcept
{
    static auto *const original = next<decltype(epoll_create1)>("epoll_create1");
    return opened(original(flags));
}

int timerfd_create(clockid_t clock, int flags) noexcept
{
    static auto *const original = next<decltype(timerfd_create)>("timerfd_create");
    return opened(original(clock, flags));
}

int dup(int file) noexcept
{
    static auto *const original = next<decltype(dup)>("dup");
    return opened(original(file));
}

// Where file sizes have 64 bits anyhow, these are other names of the same functions.
static_assert(sizeof(off_t) == sizeof(off64_t));
extern "C" {
int open64(const char *path, int flags, ...) __attribute__((alias("open")));
int openat64(int folder, const char *path, int flags, ...) __attribute__((alias("openat")));
FILE *fopen64(const char *path, const char *mode) __attribute__((alias("fopen")));
}
