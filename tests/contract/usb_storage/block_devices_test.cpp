#include <algorithm>
#include <filesystem>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <libudev.h>
#include <sys/stat.h>

#include "usb_storage/block_devices.h"

namespace {

/** What udev's database tells of every device, while it is set. */
const char *bus_of_every_device = nullptr;

} // namespace

// The linker sends the calls of this program's own objects here.
extern "C" const char *__wrap_udev_device_get_property_value(udev_device *device, const char *name);
extern "C" const char *__real_udev_device_get_property_value(udev_device *device, const char *name);

const char *__wrap_udev_device_get_property_value(udev_device *device, const char *name)
{
    return bus_of_every_device && std::string_view(name) == "ID_BUS"
               ? bus_of_every_device
               : __real_udev_device_get_property_value(device, name);
}

namespace {

using platform::BlockDevice;
using platform::Mount;
using platform::mount_paths;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(BlockDevices, PathsComeInTheOrderOfDeviceNames)
{
    const std::vector<BlockDevice> devices = {
        {"sdb10", "/dev/sdb10", 10}, {"sdb2", "/dev/sdb2", 2}, {"sda1", "/dev/sda1", 1}};
    const std::vector<Mount> mounts = {
        {"/dev/sdb10", "/media/ten", 10}, {"/dev/sda1", "/media/one", 1}, {"/dev/sdb2", "/m/2", 2}};
    EXPECT_THAT(mount_paths(devices, mounts), ElementsAre("/media/one", "/m/2", "/media/ten"));
}

TEST(BlockDevices, DeviceThatIsNotMountedIsLeftOut)
{
    EXPECT_THAT(mount_paths({{"sda", "/dev/sda", 1}}, {{"/dev/sdb", "/media/b", 2}}), IsEmpty());
}

TEST(BlockDevices, DeviceCountsWhereItWasMountedFirst)
{
    EXPECT_THAT(mount_paths({{"sda", "/dev/sda", 1}},
                            {{"/dev/sda", "/media/first", 1}, {"/dev/sda", "/media/again", 1}}),
                ElementsAre("/media/first"));
}

TEST(BlockDevices, FileSystemWithANumberOfItsOwnIsKnownByItsSource)
{
    EXPECT_THAT(mount_paths({{"sda1", "/dev/sda1", 1}}, {{"/dev/sda1", "/media/btrfs", 99}}),
                ElementsAre("/media/btrfs"));
}

TEST(BlockDevices, WhatHasNeitherNodeNorNumberIsMountedNowhere)
{
    EXPECT_THAT(mount_paths({{"sda", "", 1}}, {{"", "/proc", 2}}), IsEmpty());
}

TEST(BlockDevices, MountTableOfThisMachineHoldsTheRoot)
{
    const auto table = platform::mounts();
    ASSERT_TRUE(table.has_value());
    struct stat root = {};
    ASSERT_EQ(stat("/", &root), 0);
    EXPECT_TRUE(std::any_of(table->begin(), table->end(), [&](const Mount &mount) {
        return mount.target == "/" && mount.number == root.st_dev;
    }));
}

TEST(BlockDevices, WhatUdevsDatabaseHasOnAUsbBusIsAUsbDevice)
{
    const std::filesystem::directory_iterator entries("/sys/class/block");
    const auto all = static_cast<size_t>(std::distance(begin(entries), end(entries)));
    bus_of_every_device = "usb";
    const auto on_usb = platform::usb_block_devices();
    bus_of_every_device = "ata";
    const auto on_another = platform::usb_block_devices();
    bus_of_every_device = nullptr;
    ASSERT_TRUE(on_usb && on_another);
    EXPECT_EQ(on_usb->size(), all);
    EXPECT_EQ(on_another->size(), platform::usb_block_devices()->size());
}

TEST(BlockDevices, UdevAnswersWithDevicesThatExist)
{
    const auto devices = platform::usb_block_devices();
    ASSERT_TRUE(devices.has_value());
    for (const BlockDevice &device : *devices) {
        struct stat status = {};
        EXPECT_EQ(stat(("/sys/class/block/" + device.name).c_str(), &status), 0) << device.name;
        EXPECT_NE(device.number, 0u) << device.name;
    }
}

} // namespace
