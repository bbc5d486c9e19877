// The store as the player calls it: values, and another process that uses the same store.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config_store.h"
#include "config_store/platform_store.h"
#include "config_store_fixture.h"
#include "store_support/captured_log.h"

namespace {

using store_test::Child;
using testing::HasSubstr;

class ConfigStore : public ConfigStoreFixture {};

TEST_F(ConfigStore, WrittenValueIsRead)
{
    int value = 0;
    EXPECT_EQ(vconf_set_int(key("a"), 258), 0);
    EXPECT_EQ(vconf_get_int(key("a"), &value), 0);
    EXPECT_EQ(value, 258);
}

TEST_F(ConfigStore, MissingKeyFailsAndLeavesTheVariable)
{
    int value = 99;
    EXPECT_EQ(vconf_get_int(key("missing"), &value), -1);
    EXPECT_EQ(value, 99);
}

TEST_F(ConfigStore, NullAndBadArgumentsAreRefused)
{
    int value = 0;
    EXPECT_EQ(vconf_get_int(nullptr, &value), -1);
    EXPECT_EQ(vconf_get_int(key("a"), nullptr), -1);
    EXPECT_EQ(vconf_set_int(nullptr, 1), -1);
    EXPECT_EQ(vconf_set_int("elsewhere/a", 1), -1);
    EXPECT_EQ(vconf_get_int("db/../a", &value), -1);
    EXPECT_EQ(vconf_keynode_get_name(nullptr), nullptr);
}

TEST_F(ConfigStore, FactorySettingsTakeThePlaceOfNothingAndOfRubbishOnly)
{
    const std::string folder = "db/ostrel-demo-player-tv/";
    store_test::write_file(path(folder + "demo_mode"), "2\n");
    store_test::write_file(path(folder + "file_mode"), "rubbish");
    // Stands for a medium that fails for a moment.
    const std::string unreadable = path(folder + "portrait_timer");
    std::filesystem::create_symlink("portrait_timer", unreadable);
    const store_test::CapturedLog log;
    platform::write_factory_defaults();

    const auto value_of = [&](const char *name) {
        int value = -99;
        vconf_get_int((folder + name).c_str(), &value);
        return value;
    };
    EXPECT_EQ(value_of("demo_mode"), 2);
    EXPECT_EQ(value_of("file_mode"), 1);
    EXPECT_EQ(value_of("landscape_timer"), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(unreadable));
    EXPECT_THAT(log.text(), HasSubstr("file_mode is begun anew: it holds no number"));
    EXPECT_THAT(log.text(), HasSubstr("portrait_timer cannot be read and is left alone: Too many"));
}

TEST_F(ConfigStore, OwnWritesAreToldApartFromThoseOfOthers)
{
    std::vector<std::string> told;
    platform::on_own_write([&](const std::string &name, int value) {
        told.push_back(name + " " + std::to_string(value));
        int present = 0;
        EXPECT_EQ(vconf_get_int(name.c_str(), &present), 0);
        EXPECT_EQ(present, value) << "it is told when it is done";
    });
    EXPECT_EQ(vconf_set_int(key("a"), 5), 0);
    EXPECT_EQ(vconf_set_int(key("a"), 5), 0);
    EXPECT_EQ(vconf_set_int("elsewhere/a", 1), -1);
    Child writer({CONFIG_STORE_PEER, "set", key("a"), "6"});
    EXPECT_EQ(writer.finish(), 0);
    platform::on_own_write({});
    EXPECT_EQ(vconf_set_int(key("a"), 7), 0);
    const std::string line = std::string(key("a")) + " 5";
    EXPECT_THAT(told, testing::ElementsAre(line, line));
}

TEST_F(ConfigStore, OtherProcessReadsAndWritesTheSameKeys)
{
    Child writer({CONFIG_STORE_PEER, "set", key("shared"), "31"});
    EXPECT_EQ(writer.finish(), 0);
    int value = 0;
    EXPECT_EQ(vconf_get_int(key("shared"), &value), 0);
    EXPECT_EQ(value, 31);
}

TEST_F(ConfigStore, ReaderNeverSeesAHalfWrittenValue)
{
    ASSERT_EQ(vconf_set_int(memory_key("busy"), 0), 0);
    Child writer({CONFIG_STORE_PEER, "count", memory_key("busy"), "2000"});
    int last = 0;
    while (last < 2000) {
        int value = -1;
        ASSERT_EQ(vconf_get_int(memory_key("busy"), &value), 0);
        ASSERT_GE(value, last);
        last = value;
    }
    EXPECT_EQ(writer.finish(), 0);
}

TEST_F(ConfigStore, WritersInSeveralProcessesDoNotDisturbEachOther)
{
    Child first({CONFIG_STORE_PEER, "count", memory_key("contended"), "300"});
    Child second({CONFIG_STORE_PEER, "count", memory_key("contended"), "300"});
    EXPECT_EQ(first.finish(), 0) << first.err_text();
    EXPECT_EQ(second.finish(), 0) << second.err_text();
    int value = 0;
    EXPECT_EQ(vconf_get_int(memory_key("contended"), &value), 0);
    EXPECT_EQ(value, 300);
}

} // namespace
