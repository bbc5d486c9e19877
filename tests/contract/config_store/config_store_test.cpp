// The store as the player calls it: values, and another process that uses the same store.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config_store.h"
#include "config_store/platform_store.h"
#include "config_store_fixture.h"

namespace {

using store_test::Child;

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
