/** A machine that has no thread to give at one moment. For one source file of a program. */
#pragma once

#include <atomic>
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

namespace store_test {

/** How many threads may still be made before one is refused; negative: all. */
inline std::atomic<int> threads_left{-1};

} // namespace store_test

/** Stands before the C library's own. */
extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                              void *(*function)(void *), void *argument)
{
    using Create = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    if (store_test::threads_left >= 0 && store_test::threads_left-- == 0)
        return EAGAIN;
    return create(thread, attributes, function, argument);
}
