#include <filesystem>

#include <gtest/gtest.h>

#include "config_store/config_files.h"
#include "player_rules/config_keys.h"

namespace platform {
namespace {

TEST(KnownKeys, AreValidAndFoundByTheirLastName)
{
    for (const KnownKey &key : known_keys()) {
        EXPECT_TRUE(ConfigFiles::is_valid_key(key.name)) << key.name;
        EXPECT_EQ(find_known_key(key.name), &key);
        EXPECT_EQ(find_known_key(std::filesystem::path(key.name).filename().string()), &key);
    }
    EXPECT_EQ(find_known_key("nonsense"), nullptr);
    EXPECT_EQ(find_known_key(""), nullptr);
}

TEST(KnownKeys, TimersReachFromZeroToNine)
{
    for (const char *name : {"portrait_timer", "landscape_timer"}) {
        ASSERT_NE(find_known_key(name), nullptr);
        EXPECT_EQ(find_known_key(name)->lowest, 0);
        EXPECT_EQ(find_known_key(name)->highest, 9);
    }
}

} // namespace
} // namespace platform
