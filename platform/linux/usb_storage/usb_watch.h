/**
 * Notices that disks come and go, and that file systems are mounted, and tells the listener of
 * usb_devices.h. When a disk was pulled, it has the look-ahead let go of what that has open: a
 * place that somebody still reads from cannot be unmounted. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/toolkit_handles.h"

namespace platform {

class UsbWatch {
  public:
    /** Where the news of devices comes from. */
    struct Source {
        int descriptor = -1; ///< readable while there is any
        /**
         * What happened: to a device "add", "remove" and so on, "mount" to the mount table;
         * nothing: no more for the moment.
         */
        std::function<std::optional<std::string>()> next_action;
    };

    /** Watches the machine's disks and mounts; says in the log which of them it cannot. */
    static std::unique_ptr<UsbWatch> create();

    explicit UsbWatch(std::vector<Source> sources);
    UsbWatch(const UsbWatch &) = delete;
    UsbWatch &operator=(const UsbWatch &) = delete;

  private:
    static void read(const Source &source);

    const std::vector<Source> sources_;
    std::vector<FdHandlerPtr> handlers_;
};

} // namespace platform
