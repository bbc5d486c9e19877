#include "usb_storage.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "usb_storage/usb_devices.h"

struct usb_device_s {
    std::string mount_path;
};

struct usb_device_list_s {
    std::vector<usb_device_s> devices;
    size_t next = 0; ///< what usb_device_list_get_next() gives
};

namespace {

// Every list ever handed out; callers keep theirs for life and never free it.
std::vector<std::unique_ptr<usb_device_list_s>> &lists()
{
    static std::vector<std::unique_ptr<usb_device_list_s>> all;
    return all;
}

bool is_ours(usb_device_list_h list)
{
    return std::any_of(lists().begin(), lists().end(),
                       [list](const auto &known) { return known.get() == list; });
}

} // namespace

int usb_device_get_device_list(int type, usb_device_list_h *list)
{
    if (type != USB_DEVICE_TYPE_MASS_STORAGE || list == nullptr ||
        (*list != nullptr && !is_ours(*list)))
        return -1;
    const auto paths = platform::usb_mount_paths(platform::usb_changes());
    if (!paths)
        return -1;
    if (*list == nullptr) {
        lists().push_back(std::make_unique<usb_device_list_s>());
        *list = lists().back().get();
    }
    (*list)->devices.clear();
    for (const std::string &path : *paths)
        (*list)->devices.push_back({path});
    (*list)->next = 0;
    return 0;
}

int usb_device_list_get_first(usb_device_list_h list, usb_device_h *device)
{
    if (!is_ours(list))
        return -1;
    list->next = 0;
    return usb_device_list_get_next(list, device);
}

int usb_device_list_get_next(usb_device_list_h list, usb_device_h *device)
{
    if (!is_ours(list) || device == nullptr || list->next >= list->devices.size())
        return -1;
    *device = &list->devices[list->next++];
    return 0;
}

const char *usb_device_get_mountpath(usb_device_h device)
{
    return device != nullptr ? device->mount_path.c_str() : "";
}
