/**
 * The USB storage that is plugged in, as (device, mount path) pairs in a stable order. Main-loop
 * thread only; asked each time the player needs its folder, so a stick that was pulled or added is
 * seen at the next file.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Device class numbers of the USB standard (usb.org, "Defined Class Codes", base class 08h). */
enum { USB_DEVICE_TYPE_MASS_STORAGE = 8 };

typedef struct usb_device_list_s *usb_device_list_h;
typedef struct usb_device_s *usb_device_h;

/**
 * Lists the devices of one class. A list handle that an earlier call filled is refreshed in place,
 * so a caller keeps one handle for its whole life and never frees it; the platform releases it at
 * exit. Devices taken from the list before are gone after a refresh.
 *
 * @param type a USB_DEVICE_TYPE_ number
 * @param list in: null or a handle of an earlier call; out: the list, owned by the platform
 * @return 0, or -1 when devices cannot be listed; `*list` is then unchanged
 */
int usb_device_get_device_list(int type, usb_device_list_h *list);

/**
 * Step through a list; order is that of the device names.
 *
 * @param device receives the device, owned by the list
 * @return 0, or -1 when there is none (any more); `*device` is then unchanged
 */
int usb_device_list_get_first(usb_device_list_h list, usb_device_h *device);
int usb_device_list_get_next(usb_device_list_h list, usb_device_h *device);

/** Where the device is mounted, without a trailing slash; owned by the list, never null. */
const char *usb_device_get_mountpath(usb_device_h device);

#ifdef __cplusplus
}
#endif
