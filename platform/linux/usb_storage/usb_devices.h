/**
 * Where USB storage is mounted: real sticks found through udev and the mount table, or the folders
 * that tv.conf names instead of them, and folders that the control service plugged in. Main-loop
 * thread only, but where it says otherwise.
 */
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/** What differs from what the machine has plugged in; paths without a trailing slash. */
struct UsbChanges {
    std::vector<std::string> added;
    std::vector<std::string> removed;
};

/** The changes by hand as of now. */
const UsbChanges &usb_changes();

/**
 * The places where storage is said to be mounted, in the order of usb_mount_paths(), which leaves
 * out those that are no folder. Looks at none of them, and so waits for no disk. Any thread.
 *
 * @return nothing when neither udev nor the mount table can be read
 */
std::optional<std::vector<std::string>> usb_places(const UsbChanges &changes);

/**
 * The mount points, without a trailing slash: those of devices in the order of the device names,
 * then those that were added by hand, in order. A place that is no folder any more is left out.
 * Looks at each place, and takes for ever where one hangs. Any thread.
 *
 * @return nothing when neither udev nor the mount table can be read
 */
std::optional<std::vector<std::string>> usb_mount_paths(const UsbChanges &changes);

/**
 * Has somebody told whenever what usb_mount_paths() answers may be another now: by usb_add(),
 * usb_remove() and UsbWatch. Replaces whoever was told before; an empty function ends it.
 */
void usb_set_listener(std::function<void()> listener);

/** Tells the listener, if there is one. */
void usb_tell_change();

/**
 * Has the list of what is added by hand outlive the program: begins it with what a file holds, and
 * keeps it there.
 *
 * @param file for the life of the machine
 */
void usb_keep_added_in(const std::string &file);

/**
 * Treats a folder as a stick that was plugged in.
 *
 * @param path absolute
 * @return false when it is no folder; true also when it is there already
 */
bool usb_add(const std::string &path);

/**
 * Pulls a stick: one added by hand is forgotten, any other is no longer listed until it is added
 * again. What is open ahead of its time is let go of.
 *
 * @param path its mount path
 * @return false when nothing is listed there
 */
bool usb_remove(const std::string &path);

} // namespace platform
