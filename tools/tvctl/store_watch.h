/** Every change in the configuration store, of keys that nobody has heard of before too. */
#pragma once

#include <functional>
#include <map>
#include <string>

#include <Ecore.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "config_store/config_files.h"

struct inotify_event;

namespace tvctl {

class StoreWatch {
  public:
    /** @param on_change called from the main loop with the name of each key written or removed */
    StoreWatch(std::string state_dir, std::string runtime_dir,
               std::function<void(const std::string &key)> on_change);
    StoreWatch(const StoreWatch &) = delete;
    StoreWatch &operator=(const StoreWatch &) = delete;

    /** Begins. @return false with errno set when the store cannot be watched. */
    bool start();

  private:
    enum class Found { Before, Now };

    std::string path(const std::string &prefix) const;
    bool watch_root(const std::string &prefix);
    bool watch(const std::string &prefix, Found found);
    void read_changes();
    void take(const inotify_event &event);
    void tell(const std::string &key);

    const std::string state_dir_;
    const std::string runtime_dir_;
    const std::function<void(const std::string &)> on_change_;
    platform::ConfigFiles files_;
    platform::Descriptor inotify_;
    platform::FdHandlerPtr handler_;
    std::map<int, std::string> prefixes_; // of the keys in each watched folder, by watch
};

} // namespace tvctl
