#include "usb_storage/usb_watch.h"

#include <utility>

#include <libudev.h>

#include "log/platform_log.h"
#include "lookahead/lookahead.h"

namespace platform {

std::unique_ptr<UsbWatch> UsbWatch::create()
{
    const std::shared_ptr<udev> context(udev_new(), [](udev *ended) { udev_unref(ended); });
    // The kernel's own word, which comes before those who unmount the disk have heard of it.
    const std::shared_ptr<udev_monitor> monitor(
        context ? udev_monitor_new_from_netlink(context.get(), "kernel") : nullptr,
        [](udev_monitor *ended) { udev_monitor_unref(ended); });
    if (!monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "block", nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0) {
        PLATFORM_LOGI("usb_storage", "nobody tells when a disk is pulled");
        return nullptr;
    }
    const auto next_action = [context, monitor]() -> std::optional<std::string> {
        const std::unique_ptr<udev_device, HandleEnd<udev_device_unref>> device(
            udev_monitor_receive_device(monitor.get()));
        const char *action = device ? udev_device_get_action(device.get()) : nullptr;
        return action ? std::optional<std::string>(action) : std::nullopt;
    };
    return std::make_unique<UsbWatch>(Source{udev_monitor_get_fd(monitor.get()), next_action});
}

UsbWatch::UsbWatch(Source source)
    : source_(std::move(source)), handler_(ecore_main_fd_handler_add(
                                      source_.descriptor, ECORE_FD_READ,
                                      [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
                                          static_cast<UsbWatch *>(data)->read();
                                          return ECORE_CALLBACK_RENEW;
                                      },
                                      this, nullptr, nullptr))
{
}

// Whichever disk it is: opening the next item anew costs less than finding out.
void UsbWatch::read()
{
    while (const std::optional<std::string> action = source_.next_action())
        if (*action == "remove")
            Lookahead::get().drop();
}

} // namespace platform
