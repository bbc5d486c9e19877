/**
 * Tells registered callbacks on the main loop which keys were written, whoever wrote them. Folders
 * are watched with inotify; one that disappears is made again and watched anew. Main-loop thread
 * only.
 *
 * One write is one call, but for two things the kernel does: equal events that follow each other
 * before they are read are one, and when its queue overflows, the keys are compared with what they
 * were and those that differ are reported once. A key that is removed is reported too.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>

#include <Ecore.h>
#include <sys/inotify.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "config_store/config_files.h"

namespace platform {

class ConfigWatcher {
  public:
    /** What tells two registrations of one key apart. */
    using Owner = const void *;
    using Callback = std::function<void(const std::string &key)>;

    /** @param files the store; must outlive the watcher */
    explicit ConfigWatcher(ConfigFiles &files);
    ConfigWatcher(const ConfigWatcher &) = delete;
    ConfigWatcher &operator=(const ConfigWatcher &) = delete;

    /**
     * Calls `callback` after each write from now on. The same key and owner again replace the
     * callback. Callbacks may call add() and remove().
     *
     * @param key a valid key
     * @return false when the key's folder cannot be watched, with the reason in the log
     */
    bool add(const std::string &key, Owner owner, Callback callback);

    /** Ends a registration, changes not yet delivered included. @return false without one. */
    bool remove(const std::string &key, Owner owner);

  private:
    struct Registration {
        std::string key;
        Owner owner;
        Callback callback;
        uint64_t since; ///< first change it is told of
    };

    /** What can be seen of a key's file without reading it. */
    struct Trace {
        bool exists = false;
        ino_t inode = 0;
        timespec changed = {};
        bool operator!=(const Trace &other) const;
    };

    struct Change {
        uint64_t number;
        std::string key;
    };

    struct Folder {
        int watch = -1;
        std::map<std::string, Trace> keys; ///< the registered keys in it
    };

    bool open();
    void close();
    bool watch(const std::string &path, Folder &folder);
    bool fail(const std::string &what);
    void read_changes();
    void take(const inotify_event &event);
    void rewatch_lost();
    void compare(Folder &folder);
    void note(const std::string &key);
    void deliver();
    Trace trace(const std::string &key) const;

    static Eina_Bool on_readable(void *data, Ecore_Fd_Handler *handler);
    static void on_job(void *data);
    static Eina_Bool on_retry(void *data);

    ConfigFiles &files_;
    Descriptor inotify_;
    FdHandlerPtr handler_;
    JobPtr job_;
    TimerPtr retry_;
    std::map<uint64_t, Registration> registrations_;
    std::map<std::string, Folder> folders_;
    std::deque<Change> changes_;
    uint64_t next_registration_ = 0;
    uint64_t next_change_ = 0;
};

} // namespace platform
