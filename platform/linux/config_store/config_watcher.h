/**
 * Tells registered callbacks on the main loop which keys were written, whoever wrote them. Folders
 * are watched with inotify; one that disappears is made again and watched anew. Main-loop thread
 * only.
 *
 * One write is one call, but for two things the kernel does: equal events that follow each other
 * before they are read are one, and when its queue overflows, the keys are compared with what they
 * were and those that differ are reported once. A key that is removed is reported too, and so is
 * one that comes or goes with its whole folder.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>

#include <Ecore.h>
#include <sys/stat.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "config_store/config_files.h"

struct inotify_event;

namespace platform {

class ConfigWatcher {
  public:
    /** What tells two registrations of one key apart. */
    using Owner = const void *;
    using Callback = std::function<void(const std::string &key)>;

    /**
     * @param files the store; must outlive the watcher
     * @param sync  called for a folder in which the watcher has made one
     */
    explicit ConfigWatcher(ConfigFiles &files, ConfigFiles::Sync sync = ConfigFiles::sync_folder);
    ConfigWatcher(const ConfigWatcher &) = delete;
    ConfigWatcher &operator=(const ConfigWatcher &) = delete;

    /**
     * Calls `callback` after each write from now on. The same key and owner again replace the
     * callback. Callbacks may call add() and remove().
     *
     * @param key a valid key; or "db/" or "memory/" for every key below it, those included that
     *            nobody has heard of before
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
        int watch = -1;                    ///< negative when it is lost
        std::map<std::string, Trace> keys; ///< those in it that somebody wants to hear of
    };

    /** Folders by what the names of their keys begin with, up to the last slash. */
    using Folders = std::map<std::string, Folder>;

    bool open();
    void close();
    bool fail(const std::string &what);
    void drop_unneeded();
    bool is_named(const std::string &prefix) const;
    bool is_whole(const std::string &prefix) const;
    bool watch(const std::string &prefix, Folder &folder);
    void read_changes();
    void take(const inotify_event &event);
    void take_entry(const Folders::iterator &folder, const std::string &name, uint32_t mask);
    void lose_tree(const std::string &prefix);
    void rewatch_lost();
    void watch_below(const std::string &prefix);
    void compare(const std::string &prefix, Folder &folder);
    void note(const std::string &key);
    void deliver();
    Trace trace(const std::string &key) const;

    static Eina_Bool on_readable(void *data, Ecore_Fd_Handler *handler);
    static void on_job(void *data);
    static Eina_Bool on_retry(void *data);

    ConfigFiles &files_;
    const ConfigFiles::Sync sync_;
    Descriptor inotify_;
    FdHandlerPtr handler_;
    JobPtr job_;
    TimerPtr retry_;
    std::map<uint64_t, Registration> registrations_;
    Folders folders_;
    std::deque<Change> changes_;
    uint64_t next_registration_ = 0;
    uint64_t next_change_ = 0;
};

} // namespace platform
