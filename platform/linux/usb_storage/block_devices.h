/**
 * USB block devices and mounts as the system tells them. Any thread; each call asks anew.
 */
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace platform {

/** A disk or partition. */
struct BlockDevice {
    std::string name; ///< "sdb1"
    std::string node; ///< "/dev/sdb1"
    dev_t number = 0;
};

/** One line of the mount table. */
struct Mount {
    std::string source; ///< what is mounted, e.g. "/dev/sdb1"
    std::string target; ///< where
    dev_t number = 0;   ///< of the mounted file system
};

/** What sits on USB, whole disks included, in no order. @return nothing when udev fails. */
std::optional<std::vector<BlockDevice>> usb_block_devices();

/** Every mount, oldest first. @return nothing when the table cannot be read. */
std::optional<std::vector<Mount>> mounts();

/**
 * Where the devices are mounted, in the order of their names ("sda2" before "sda10"); a device that
 * is mounted more than once counts where it was mounted first.
 */
std::vector<std::string> mount_paths(std::vector<BlockDevice> devices,
                                     const std::vector<Mount> &mounts);

} // namespace platform
