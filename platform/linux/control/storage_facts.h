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

#include "player_rules/content_rules.h"
#include "unplayable_files/unplayable_files.h"
#include "usb_storage/usb_devices.h"

namespace platform {

/**
 * Looks a file up in its list, as content_list() does.
 *
 * @param made when the player made its list, by the real-time clock
 * @return nothing also where the folder has been changed since
 */
std::optional<ContentList> content_list_of(const std::string &path, bool direct_backlight,
                                           const timespec &made);

/** Everything that has to be known to ask; a copy, since the asking outlives what it came from. */
struct StorageQuestion {
    std::string file;              ///< that plays; empty when none does
    bool direct_backlight = false; ///< as for content_kind()
    timespec list_made = {};
    UsbChanges usb;
    std::vector<UnplayableFile> passed_over;
};

struct StorageFacts {
    std::optional<ContentList> list;                        ///< that of the file
    std::optional<std::vector<std::string>> usb;            ///< where sticks are mounted
    std::optional<std::vector<UnplayableFile>> passed_over; ///< those that are still there
};

/** Answers a question; called in a thread of its own. */
using StorageReader = std::function<StorageFacts(const StorageQuestion &)>;

/** The one that looks. Any thread; takes for ever where a file system hangs. */
StorageFacts read_storage(const StorageQuestion &question);

} // namespace platform
