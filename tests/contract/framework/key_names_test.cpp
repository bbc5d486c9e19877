// The table of key names.

#include <set>

#include <gmock/gmock.h>

#include "key_router/key_names.h"

namespace platform {
namespace {

const std::map<std::string, std::string> NOTHING;

const std::set<std::string> PLAYER_KEYS = {
    "XF86Back",
    "Return",
    "XF86AudioPlay",
    "XF86AudioPause",
    "XF86AudioStop",
    "XF86PlayBack",
    "XF86PlayBackGame",
    "XF86AudioRewind",
    "XF86AudioNext",
    "Left",
    "Right",
    "XF86PreviousChapter",
    "XF86NextChapter",
    "XF86Color",
    "XF86More",
    "XF86PanelEnter",
    "XF86RaiseChannel",
    "XF86LowerChannel",
    "XF86ChannelGuide",
};

TEST(KeyNamesTest, TheSetHasEachKeyOnceAndItFitsAKeyList)
{
    std::set<std::string> seen;
    for (const char *name : tv_key_names()) {
        EXPECT_TRUE(seen.insert(name).second) << name << " twice";
        EXPECT_LT(std::string(name).size(), 32u) << name;
    }
    EXPECT_LE(seen.size(), 256u);
}

TEST(KeyNamesTest, TranslationsLeadToKeysOfTheSet)
{
    for (const auto &[typed, name] : default_key_translations())
        EXPECT_TRUE(is_tv_key_name(name)) << typed << " leads to " << name;
}

TEST(KeyNamesTest, ThePlayersOwnKeysAreNeverRenamed)
{
    for (const std::string &name : PLAYER_KEYS) {
        EXPECT_TRUE(is_tv_key_name(name)) << name;
        EXPECT_EQ(translate_key(name.c_str(), name.c_str(), NOTHING), nullptr) << name;
    }
}

TEST(KeyNamesTest, AnUnknownOrMissingNameStays)
{
    EXPECT_EQ(translate_key("F12", "F12", NOTHING), nullptr);
    EXPECT_EQ(translate_key("", "", NOTHING), nullptr);
    EXPECT_EQ(translate_key(nullptr, nullptr, NOTHING), nullptr);
    EXPECT_FALSE(is_tv_key_name("xf86back"));
}

TEST(KeyNamesTest, TheNameWithModifiersGoesFirst)
{
    EXPECT_STREQ(translate_key("p", "P", NOTHING), "XF86AudioPlay");
    EXPECT_STREQ(translate_key("p", "Escape", NOTHING), "XF86Back");
}

TEST(KeyNamesTest, AConfiguredNameGoesBeforeTheTable)
{
    const std::map<std::string, std::string> configured = {{"Escape", "XF86Exit"}, {"F1", "0"}};
    EXPECT_STREQ(translate_key("Escape", "Escape", configured), "XF86Exit");
    EXPECT_STREQ(translate_key("F1", "F1", configured), "0");
    EXPECT_STREQ(translate_key("space", "space", configured), "XF86PlayBack");
}

} // namespace
} // namespace platform
