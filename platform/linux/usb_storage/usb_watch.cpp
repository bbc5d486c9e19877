#include "usb_storage/usb_watch.h"

#include <utility>

#include <libmount.h>
#include <libudev.h>

#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "usb_storage/usb_devices.h"

namespace platform {

namespace {

std::optional<UsbWatch::Source> disks()
{
    const std::shared_ptr<udev> context(udev_new(), [](udev *ended) { udev_unref(ended); });
    // The kernel's own word, which comes before those who unmount the disk have heard of it.
    const std::shared_ptr<udev_monitor> monitor(
        context ? udev_monitor_new_from_netlink(context.get(), "kernel") : nullptr,
        [](udev_monitor *ended) { udev_monitor_unref(ended); });
    if (!monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "block", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0)
        return std::nullopt;
    const auto next_action = [context, monitor]() -> std::optional<std::string> {
        const std::unique_ptr<udev_device, HandleEnd<udev_device_unref>> device(
            udev_monitor_receive_device(monitor.get()));
        const char *action = device ? udev_device_get_action(device.get()) : nullptr;
        return action ? std::optional<std::string>(action) : std::nullopt;
    };
    return UsbWatch::Source{udev_monitor_get_fd(monitor.get()), next_action};
}

std::optional<UsbWatch::Source> mount_table()
{
    const std::shared_ptr<libmnt_monitor> monitor(
        mnt_new_monitor(), [](libmnt_monitor *ended) { mnt_unref_monitor(ended); });
    const int descriptor = monitor && mnt_monitor_enable_kernel(monitor.get(), 1) == 0
                               ? mnt_monitor_get_fd(monitor.get())
                               : -1;
    if (descriptor < 0)
        return std::nullopt;
    const auto next_action = [monitor]() -> std::optional<std::string> {
        return mnt_monitor_next_change(monitor.get(), nullptr, nullptr) == 0
                   ? std::optional<std::string>("mount")
                   : std::nullopt;
    };
    return UsbWatch::Source{descriptor, next_action};
}

} // namespace

std::unique_ptr<UsbWatch> UsbWatch::create()
{
    std::vector<Source> sources;
    if (std::optional<Source> source = disks())
        sources.push_back(std::move(*source));
    else
        PLATFORM_LOGI("usb_storage", "nobody tells when a disk is pulled");
    if (std::optional<Source> source = mount_table())
        sources.push_back(std::move(*source));
    else
        PLATFORM_LOGI("usb_storage", "nobody tells when a stick is mounted");
    return std::make_unique<UsbWatch>(std::move(sources));
}

UsbWatch::UsbWatch(std::vector<Source> sources) : sources_(std::move(sources))
{
    for (const Source &source : sources_)
        handlers_.emplace_back(ecore_main_fd_handler_add(
            source.descriptor, ECORE_FD_READ,
            [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
                read(*static_cast<const Source *>(data));
                return ECORE_CALLBACK_RENEW;
            },
            &source, nullptr, nullptr));
}

void UsbWatch::read(const Source &source)
{
    bool heard = false;
    while (const std::optional<std::string> action = source.next_action()) {
        heard = true;
        // Whichever disk it is: opening the next item anew costs less than finding out.
        if (*action == "remove")
            Lookahead::get().drop();
    }
    if (heard)
        usb_tell_change();
}

} // namespace platform
