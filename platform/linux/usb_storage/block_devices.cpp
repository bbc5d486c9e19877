#include "usb_storage/block_devices.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <libmount.h>
#include <libudev.h>

namespace platform {

namespace {

struct UdevDeleter {
    void operator()(udev *object) const { udev_unref(object); }
    void operator()(udev_enumerate *object) const { udev_enumerate_unref(object); }
    void operator()(udev_device *object) const { udev_device_unref(object); }
};
template <typename Object> using UdevPtr = std::unique_ptr<Object, UdevDeleter>;

struct MountDeleter {
    void operator()(libmnt_table *table) const { mnt_unref_table(table); }
    void operator()(libmnt_iter *iterator) const { mnt_free_iter(iterator); }
};

std::string text(const char *value)
{
    return value != nullptr ? value : "";
}

bool is_usb(udev_device *device)
{
    if (text(udev_device_get_property_value(device, "ID_BUS")) == "usb")
        return true;
    // Without udev's database, say in a container, the device's place in the tree tells.
    return udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device") != nullptr;
}

} // namespace

std::optional<std::vector<BlockDevice>> usb_block_devices()
{
    const UdevPtr<udev> context(udev_new());
    const UdevPtr<udev_enumerate> search(context ? udev_enumerate_new(context.get()) : nullptr);
    if (!search || udev_enumerate_add_match_subsystem(search.get(), "block") < 0 ||
        udev_enumerate_scan_devices(search.get()) < 0)
        return std::nullopt;
    std::vector<BlockDevice> found;
    for (udev_list_entry *entry = udev_enumerate_get_list_entry(search.get()); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        const UdevPtr<udev_device> device(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        if (device && is_usb(device.get()))
            found.push_back({text(udev_device_get_sysname(device.get())),
                             text(udev_device_get_devnode(device.get())),
                             udev_device_get_devnum(device.get())});
    }
    return found;
}

std::optional<std::vector<Mount>> mounts()
{
    const std::unique_ptr<libmnt_table, MountDeleter> table(mnt_new_table());
    const std::unique_ptr<libmnt_iter, MountDeleter> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator || mnt_table_parse_mtab(table.get(), nullptr) != 0)
        return std::nullopt;
    std::vector<Mount> found;
    libmnt_fs *mount = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &mount) == 0)
        found.push_back({text(mnt_fs_get_source(mount)), text(mnt_fs_get_target(mount)),
                         mnt_fs_get_devno(mount)});
    return found;
}

std::vector<std::string> mount_paths(std::vector<BlockDevice> devices,
                                     const std::vector<Mount> &mounts)
{
    std::sort(devices.begin(), devices.end(),
              [](const BlockDevice &left, const BlockDevice &right) {
                  return strverscmp(left.name.c_str(), right.name.c_str()) < 0;
              });
    std::vector<std::string> paths;
    for (const BlockDevice &device : devices) {
        // Some file systems have a number of their own; they are known by what was mounted.
        const auto mount = std::find_if(mounts.begin(), mounts.end(), [&](const Mount &candidate) {
            return !candidate.target.empty() &&
                   (candidate.number == device.number ||
                    (!device.node.empty() && candidate.source == device.node));
        });
        if (mount != mounts.end() &&
            std::find(paths.begin(), paths.end(), mount->target) == paths.end())
            paths.push_back(mount->target);
    }
    return paths;
}

} // namespace platform
