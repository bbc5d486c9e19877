// Tells the thread sanitizer who waits for whom inside GLib and GStreamer. It knows the C library's
// locks only, and theirs are made of atomic numbers in libraries that it does not see into: without
// this it takes whatever one of their threads hands to another for a race. These functions stand
// before the libraries' own, and are in the build with that sanitizer only.

#include <dlfcn.h>
#include <gst/gst.h>
#include <sanitizer/tsan_interface.h>

#define LIBRARYS_OWN(function)                                                                     \
    static const auto real = reinterpret_cast<decltype(&function)>(dlsym(RTLD_NEXT, #function))

#define LOCK(type, name)                                                                           \
    void name(type *lock)                                                                          \
    {                                                                                              \
        LIBRARYS_OWN(name);                                                                        \
        real(lock);                                                                                \
        __tsan_acquire(lock);                                                                      \
    }
#define TRY_LOCK(type, name)                                                                       \
    gboolean name(type *lock)                                                                      \
    {                                                                                              \
        LIBRARYS_OWN(name);                                                                        \
        const gboolean taken = real(lock);                                                         \
        if (taken)                                                                                 \
            __tsan_acquire(lock);                                                                  \
        return taken;                                                                              \
    }
#define UNLOCK(type, name)                                                                         \
    void name(type *lock)                                                                          \
    {                                                                                              \
        LIBRARYS_OWN(name);                                                                        \
        __tsan_release(lock);                                                                      \
        real(lock);                                                                                \
    }
// The last one to let go of an object frees it, after all that the others did with it.
#define UNREF(type, name)                                                                          \
    void name(type object)                                                                         \
    {                                                                                              \
        LIBRARYS_OWN(name);                                                                        \
        __tsan_release(object);                                                                    \
        __tsan_acquire(object);                                                                    \
        real(object);                                                                              \
    }

extern "C" {

LOCK(GMutex, g_mutex_lock)
TRY_LOCK(GMutex, g_mutex_trylock)
UNLOCK(GMutex, g_mutex_unlock)
LOCK(GRecMutex, g_rec_mutex_lock)
TRY_LOCK(GRecMutex, g_rec_mutex_trylock)
UNLOCK(GRecMutex, g_rec_mutex_unlock)
LOCK(GRWLock, g_rw_lock_writer_lock)
UNLOCK(GRWLock, g_rw_lock_writer_unlock)
LOCK(GRWLock, g_rw_lock_reader_lock)
UNLOCK(GRWLock, g_rw_lock_reader_unlock)
UNREF(gpointer, g_object_unref)
UNREF(gpointer, gst_object_unref)
UNREF(GstMiniObject *, gst_mini_object_unref)

void g_cond_wait(GCond *condition, GMutex *lock)
{
    LIBRARYS_OWN(g_cond_wait);
    __tsan_release(lock);
    real(condition, lock);
    __tsan_acquire(lock);
}

gboolean g_cond_wait_until(GCond *condition, GMutex *lock, gint64 end_time)
{
    LIBRARYS_OWN(g_cond_wait_until);
    __tsan_release(lock);
    const gboolean signalled = real(condition, lock, end_time);
    __tsan_acquire(lock);
    return signalled;
}

gboolean gst_bus_post(GstBus *bus, GstMessage *message)
{
    LIBRARYS_OWN(gst_bus_post);
    __tsan_release(bus);
    return real(bus, message);
}

GstMessage *gst_bus_timed_pop_filtered(GstBus *bus, GstClockTime timeout, GstMessageType types)
{
    LIBRARYS_OWN(gst_bus_timed_pop_filtered);
    GstMessage *message = real(bus, timeout, types);
    __tsan_acquire(bus);
    return message;
}

} // extern "C"
