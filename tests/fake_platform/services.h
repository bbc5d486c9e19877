/**
 * The rest of the fake set: application framework, configuration store, system facts, storage,
 * keys, power and sound. Fields are what the set answers; a test writes them in advance.
 */
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <dirent.h>

#include "app_framework.h"
#include "config_store.h"
#include "device_power.h"
#include "display_rotator.h"
#include "key_router.h"
#include "usb_storage.h"

struct usb_device_s {
    std::string mount_path;
};

/**
 * The sticks as they were listed last. Devices of an earlier listing are gone, but keep their
 * places, so that a stale one is recognised.
 */
struct usb_device_list_s {
  public:
    void refresh(const std::vector<std::string> &mount_paths);
    void rewind() { next_ = first_; }
    /** @return null behind the last. */
    usb_device_h take();

  private:
    std::vector<std::unique_ptr<usb_device_s>> devices_;
    size_t first_ = 0; /**< of the last listing */
    size_t next_ = 0;
};

namespace fake {

/** The application framework; the test plays its part inside ui_app_main(). */
class Application {
  public:
    using Extras = std::map<std::string, std::string>;

    /** Run by ui_app_main() in the place of the main loop. */
    std::function<void()> script;
    int exit_status = 0;
    /** Every extra that is asked for is there, and null. */
    bool extras_are_null = false;
    /** How often the player asked to end. */
    int exit_requests = 0;

    // Lifecycle events, to be used inside the script.
    bool create();
    void launch(const Extras &extras = {});
    /** A launch request with null in the place of the application's own data. */
    void launch_without_data(const Extras &extras = {});
    void pause();
    void resume();
    void terminate();
    /** A termination with null in the place of the application's own data. */
    void terminate_without_data();
    void change_language();

    /** What main() hands to its callbacks; null outside ui_app_main(). */
    void *data() const { return data_; }

    // Behind the C functions.
    int run(ui_app_lifecycle_callback_s *callbacks, void *data);
    void follow(app_event_type_e type, app_event_cb callback, void *data);

  private:
    struct Follower {
        app_event_type_e type;
        app_event_cb callback;
        void *data;
    };

    ui_app_lifecycle_callback_s callbacks_ = {};
    void *data_ = nullptr;
    std::vector<Follower> followers_;
};

/** The configuration store. */
class Store {
  public:
    std::map<std::string, int> values;

    /** The value of a key, or -9999 when it does not exist. */
    int get(const std::string &key) const;

    /** Another process writes the key: the value changes and its followers are called. */
    void change(const std::string &key, int value);

    /** Calls the key's followers for a key of this name, whatever its value. */
    void notify(const std::string &key, const std::string &name);

    /**
     * The real store tells a process of its own writes as well, later, from the main loop. The fake
     * does so when it is asked, one write at a time.
     *
     * @return false when all are told
     */
    bool tell_next();

    /** Keys that the player follows. */
    std::vector<std::string> watched() const;

    /** Calls a follower as the store does. */
    vconf_callback_fn follower(const std::string &key) const;

    // Behind the C functions.
    void follow(const std::string &key, vconf_callback_fn callback, void *data);
    bool unfollow(const std::string &key, vconf_callback_fn callback);
    void written(const std::string &key, int value);

  private:
    struct Follower {
        std::string key;
        vconf_callback_fn callback;
        void *data;
    };

    std::vector<Follower> followers_;
    std::deque<std::pair<std::string, Follower>> untold_;
};

/** What this set is. By default an ordinary one: no rotator, no disclaimer, left to right. */
struct System {
    bool has_disclaimer = false;
    int store_content_type = 0;
    std::string language = "en_US";
    /** The language is told as null. */
    bool language_missing = false;
    int ui_orientation = 0;
    int sound_route = 0;
    /** Resources by name; others do not exist. */
    std::map<std::string, std::string> resources;
    /** Translations by string id; others come back as "tr(id)". */
    std::map<std::string, std::string> texts;
    std::string tr(const std::string &id) const;
};

/** Mounted USB sticks, and the folders that the player may look into. */
class Storage {
  public:
    static constexpr char BUILT_IN_FOLDER[] = "/opt/data/demo_movie";

    /** Mount paths in the order of the device names. */
    std::vector<std::string> sticks;

    /**
     * Makes a folder whose entries are read in this order, behind "." and "..". A slash at the end
     * of an entry marks a folder, an at sign a link, as ls -F shows them; neither belongs to the
     * name.
     */
    void add_folder(const std::string &path, const std::vector<std::string> &entries = {});
    void add_file(const std::string &path);

    // Behind the C functions.
    /** Whether a path belongs to the fake; all others are the machine's own. */
    bool governs(const std::string &path) const;
    const std::vector<std::string> *folder(const std::string &path) const;
    bool is_file(const std::string &path) const;

  private:
    static std::string normal(const std::string &path);

    std::map<std::string, std::vector<std::string>> folders_;
    std::set<std::string> files_;
};

/** A folder that is being read. */
struct OpenFolder {
    std::vector<std::string> entries;
    size_t next = 0;
    struct dirent64 entry = {};
};

/** The panel's motor. */
class Rotator {
  public:
    bool supported = false;
    int status = DISPLAY_ROTATOR_IDLE;

    /** The status changes and is reported. @return what the callback returned. */
    int report(int new_status);

    // Behind the C functions.
    display_rotator_cb callback = nullptr;
    void *data = nullptr;
};

/** Power events. */
class Power {
  public:
    /** Raises an event "poweroff", "standby" or "wakeup" for whoever follows it. */
    void raise(const std::string &event);
    void change_state(device_power_state_e state);

    // Behind the C functions.
    struct Follower {
        device_power_cb callback;
        void *data;
    };
    std::map<std::string, Follower> followers;
    device_power_state_changed_cb state_callback = nullptr;
    void *state_data = nullptr;
};

/** Who gets which key. */
struct Keys {
    /** Whether the compositor offers a key router, and under which number. */
    bool router_present = true;
    unsigned int router_global = 7;
    bool display_connected = true;
    /** Keys grabbed for the player's surface, with their mode. */
    std::map<std::string, int> grabbed;

    // Behind the C functions.
    std::set<const void *> reset_lists;
};

} // namespace fake
