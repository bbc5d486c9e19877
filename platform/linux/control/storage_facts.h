/**
 * What only the file systems with the content can tell for a status. They may be those of a stick
 * that answers late or never, so this is asked in a thread.
 */
#pragma once

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "control/content_list.h"
#include "usb_storage/usb_devices.h"

namespace platform {

/** Everything that has to be known to ask; a copy, since the asking outlives what it came from. */
struct StorageQuestion {
    std::string file;              ///< that plays; empty when none does
    bool direct_backlight = false; ///< as for content_list_of()
    timespec list_made = {};
    UsbChanges usb;
};

struct StorageFacts {
    std::optional<ContentList> list;             ///< that of the file
    std::optional<std::vector<std::string>> usb; ///< where sticks are mounted
};

/** Answers a question; called in a thread of its own. */
using StorageReader = std::function<StorageFacts(const StorageQuestion &)>;

/** The one that looks. Any thread; takes for ever where a file system hangs. */
StorageFacts read_storage(const StorageQuestion &question);

} // namespace platform
