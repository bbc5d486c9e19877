#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/settings.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"
#include "usb_storage.h"
#include "usb_storage/stick_content.h"
#include "usb_storage/usb_devices.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The settings of the process are read once: two sticks, "z" before "a", which shows the order.
class UsbStorage : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        scratch_ = new store_test::ScratchDir;
        const store_test::Environment conf("OSTREL_DEMO_TV_CONF", *scratch_ / "tv.conf");
        store_test::write_file(*scratch_ / "tv.conf", "[usb]\nmounts = " + stick("z") +
                                                          "\nmounts = " + stick("a") + "/\n");
        platform::Settings::get();
    }
    static void TearDownTestSuite()
    {
        delete scratch_;
        scratch_ = nullptr;
    }

    void SetUp() override
    {
        for (const char *name : {"z", "a", "new"})
            fs::create_directories(stick(name));
    }

    static std::string stick(const std::string &name) { return *scratch_ / name; }

    std::vector<std::string> listed()
    {
        std::vector<std::string> paths;
        EXPECT_EQ(usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &list_), 0);
        usb_device_h device = nullptr;
        for (int result = usb_device_list_get_first(list_, &device); result == 0;
             result = usb_device_list_get_next(list_, &device))
            paths.push_back(usb_device_get_mountpath(device));
        return paths;
    }

    static store_test::ScratchDir *scratch_;
    usb_device_list_h list_ = nullptr;
};

store_test::ScratchDir *UsbStorage::scratch_ = nullptr;

TEST_F(UsbStorage, ConfiguredMountsComeInTheirOrderWithoutASlashAtTheEnd)
{
    EXPECT_THAT(listed(), ElementsAre(stick("z"), stick("a")));
}

TEST_F(UsbStorage, ListIsRefreshedInPlace)
{
    listed();
    const usb_device_list_h handle = list_;
    fs::remove(stick("z"));
    EXPECT_THAT(listed(), ElementsAre(stick("a")));
    fs::create_directory(stick("z"));
    EXPECT_THAT(listed(), ElementsAre(stick("z"), stick("a")));
    EXPECT_EQ(list_, handle);
}

TEST_F(UsbStorage, StepPastTheLastFailsAndLeavesTheDevice)
{
    listed();
    usb_device_h device = nullptr;
    EXPECT_EQ(usb_device_list_get_next(list_, &device), -1);
    EXPECT_EQ(device, nullptr);
    ASSERT_EQ(usb_device_list_get_first(list_, &device), 0);
    EXPECT_EQ(usb_device_get_mountpath(device), stick("z"));
}

TEST_F(UsbStorage, OtherDeviceClassesAndForeignHandlesAreRefused)
{
    EXPECT_EQ(usb_device_get_device_list(3, &list_), -1);
    EXPECT_EQ(list_, nullptr);
    EXPECT_EQ(usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, nullptr), -1);
    auto foreign = reinterpret_cast<usb_device_list_h>(&list_);
    EXPECT_EQ(usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &foreign), -1);
    usb_device_h device = nullptr;
    EXPECT_EQ(usb_device_list_get_first(nullptr, &device), -1);
    EXPECT_EQ(usb_device_list_get_next(foreign, &device), -1);
    listed();
    EXPECT_EQ(usb_device_list_get_first(list_, nullptr), -1);
}

TEST_F(UsbStorage, StickAddedByHandComesLastUntilItIsRemoved)
{
    const store_test::CapturedLog log;
    EXPECT_TRUE(platform::usb_add(stick("new") + "/"));
    EXPECT_THAT(log.text(), HasSubstr(stick("new") + " was added\n"));
    EXPECT_TRUE(platform::usb_add(stick("new")));
    EXPECT_THAT(listed(), ElementsAre(stick("z"), stick("a"), stick("new")));
    EXPECT_TRUE(platform::usb_remove(stick("new")));
    EXPECT_THAT(log.text(), HasSubstr(stick("new") + " was removed\n"));
    EXPECT_THAT(listed(), ElementsAre(stick("z"), stick("a")));
    EXPECT_FALSE(platform::usb_remove(stick("new")));
}

TEST_F(UsbStorage, StickAddedByHandIsKnownToTheNextLifeOfTheProgramUntilItIsRemoved)
{
    const std::string file = *scratch_ / "added";
    const auto next_life = [&] {
        platform::usb_keep_added_in(file);
        return listed();
    };
    EXPECT_THAT(next_life(), ElementsAre(stick("z"), stick("a")));
    const std::string odd = stick("new\n\xff");
    fs::create_directory(odd);
    EXPECT_TRUE(platform::usb_add(stick("new")));
    EXPECT_TRUE(platform::usb_add(odd));
    EXPECT_THAT(next_life(), ElementsAre(stick("z"), stick("a"), stick("new"), odd));
    EXPECT_TRUE(platform::usb_remove(odd));
    EXPECT_TRUE(platform::usb_remove(stick("new")));
    EXPECT_THAT(next_life(), ElementsAre(stick("z"), stick("a")));

    const store_test::CapturedLog log;
    platform::usb_keep_added_in("/nowhere/added");
    EXPECT_TRUE(platform::usb_add(stick("new")));
    EXPECT_THAT(log.text(), HasSubstr("/nowhere/added cannot be written"));
    EXPECT_THAT(next_life(), ElementsAre(stick("z"), stick("a")));
}

TEST_F(UsbStorage, ConfiguredStickCanBePulledAndPutBack)
{
    EXPECT_TRUE(platform::usb_remove(stick("z")));
    EXPECT_THAT(listed(), ElementsAre(stick("a")));
    EXPECT_FALSE(platform::usb_remove(stick("z")));
    EXPECT_TRUE(platform::usb_add(stick("z")));
    EXPECT_THAT(listed(), ElementsAre(stick("z"), stick("a")));
}

TEST_F(UsbStorage, ContentOfSticksIsTheirFolderDemoWithSomethingToPlay)
{
    store_test::write_file(stick("z") + "/DEMO/film.MP4", "");
    store_test::write_file(stick("a") + "/demo/notes.txt", "");
    store_test::write_file(stick("new") + "/demonstration/film.mp4", "");
    EXPECT_THAT(platform::stick_contents({stick("a"), stick("z"), stick("new"), stick("missing")}),
                ElementsAre(stick("z") + "/DEMO/"));
    store_test::write_file(stick("a") + "/demo/photo.jpg", "");
    store_test::write_file(stick("a") + "/Demo/photo.jpg", "");
    EXPECT_THAT(platform::stick_contents({stick("a"), stick("z")}),
                ElementsAre(stick("a") + "/demo/", stick("a") + "/Demo/", stick("z") + "/DEMO/"));
}

TEST_F(UsbStorage, AStickWithNothingForThePanelHasNoContent)
{
    using platform::Orientations;
    const auto shown_as = [](Orientations shown) {
        return platform::stick_contents({stick("new")}, shown);
    };
    const auto content = ElementsAre(stick("new") + "/demo/");
    store_test::write_file(stick("new") + "/demo/._film.mp4", "");
    fs::create_directory(stick("new") + "/demo/old.ts");
    EXPECT_THAT(shown_as(Orientations::Both), IsEmpty()) << "which cannot be opened";

    store_test::write_file(stick("new") + "/demo/Portrait_film.mp4", "");
    EXPECT_THAT(shown_as(Orientations::Landscape), IsEmpty());
    EXPECT_THAT(shown_as(Orientations::Portrait), content);
    EXPECT_THAT(shown_as(Orientations::Both), content);

    fs::rename(stick("new") + "/demo/Portrait_film.mp4", stick("new") + "/demo/film.mp4");
    EXPECT_THAT(shown_as(Orientations::Landscape), content);
    EXPECT_THAT(shown_as(Orientations::Portrait), IsEmpty());
}

TEST_F(UsbStorage, OnlyAFolderCanBeAdded)
{
    store_test::write_file(stick("file"), "");
    EXPECT_FALSE(platform::usb_add(stick("file")));
    EXPECT_FALSE(platform::usb_add(stick("missing")));
    EXPECT_FALSE(platform::usb_add("relative"));
    EXPECT_FALSE(platform::usb_add(""));
}

} // namespace
