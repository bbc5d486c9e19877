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

#include "usb_storage/usb_devices.h"

namespace platform {

/**
 * The list that a playing file stands in, as its folder tells it: the folder's files of one
 * orientation, videos before photos, each in the order of the directory.
 */
struct ContentList {
    bool portrait = false;          ///< the list for the upright panel
    std::vector<std::string> names; ///< names of the files, in the order in which they play
    size_t videos = 0;              ///< how many of them are videos; photos follow
    size_t position = 0;            ///< of the file in question, counted from 0
};

/**
 * Looks a file up in its list.
 *
 * @param path             the file, as the player named it to its libraries
 * @param direct_backlight whether the set is of the models that play one more kind of file
 * @param made             when the player made its list, by the real-time clock
 * @return nothing where the list cannot be told: the folder cannot be read, does not hold the file
 *         as one of a list, or has been changed since the list was made
 */
std::optional<ContentList> content_list_of(const std::string &path, bool direct_backlight,
                                           const timespec &made);

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
