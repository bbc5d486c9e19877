/**
 * Notices that a disk was pulled, and has the look-ahead let go of what it has open: a place that
 * somebody still reads from cannot be unmounted. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/toolkit_handles.h"

namespace platform {

class UsbWatch {
  public:
    /** Where the news of devices comes from. */
    struct Source {
        int descriptor = -1; ///< readable while there is any
        /** What happened to a device ("add", "remove", ...); nothing: no more for the moment. */
        std::function<std::optional<std::string>()> next_action;
    };

    /** Watches the machine's disks. @return null, with a line in the log, where it cannot */
    static std::unique_ptr<UsbWatch> create();

    explicit UsbWatch(Source source);
    UsbWatch(const UsbWatch &) = delete;
    UsbWatch &operator=(const UsbWatch &) = delete;

  private:
    void read();

    const Source source_;
    const FdHandlerPtr handler_;
};

} // namespace platform
