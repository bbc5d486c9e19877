// USB storage: the list and how one walks through it.

#include <string>
#include <vector>

#include "seam_test.h"
#include "usb_storage.h"

namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

class UsbStorageSeam : public SeamTest {
  protected:
    std::vector<std::string> mount_paths()
    {
        std::vector<std::string> paths;
        EXPECT_EQ(usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &list_), 0);
        usb_device_h device = nullptr;
        for (int found = usb_device_list_get_first(list_, &device); found == 0;
             found = usb_device_list_get_next(list_, &device))
            paths.emplace_back(usb_device_get_mountpath(device));
        return paths;
    }

    static usb_device_list_h list_; // kept for the program's life, as the player keeps it
};

usb_device_list_h UsbStorageSeam::list_ = nullptr;

TEST_F(UsbStorageSeam, WithoutAStickTheListIsEmptyAndTheDeviceIsLeftAlone)
{
    set_under_test::plug_in(0);

    EXPECT_THAT(mount_paths(), IsEmpty());
    int place = 0;
    auto *const untouched = reinterpret_cast<usb_device_h>(&place);
    usb_device_h device = untouched;
    EXPECT_EQ(usb_device_list_get_first(list_, &device), -1);
    EXPECT_EQ(device, untouched);
}

TEST_F(UsbStorageSeam, SticksComeInTheirOrderAsOftenAsAsked)
{
    const std::vector<std::string> sticks = set_under_test::plug_in(3);

    EXPECT_THAT(mount_paths(), ElementsAreArray(sticks));
    EXPECT_THAT(mount_paths(), ElementsAreArray(sticks));
}

TEST_F(UsbStorageSeam, AListIsRefreshedInPlace)
{
    set_under_test::plug_in(2);
    mount_paths();
    const usb_device_list_h former = list_;

    const std::vector<std::string> sticks = set_under_test::plug_in(1);

    EXPECT_THAT(mount_paths(), ElementsAreArray(sticks));
    EXPECT_EQ(list_, former);
}

} // namespace
