#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app_context.h"
#include "app_context/app_context_state.h"

namespace {

using platform::AppContextState;
using testing::ElementsAre;

class AppContext : public testing::Test {
  protected:
    ~AppContext() override { app_context_manager_fini(); }
};

TEST_F(AppContext, PopupsAreBlockedAndFreed)
{
    ASSERT_EQ(app_context_manager_init(), 0);
    EXPECT_FALSE(AppContextState::get().epop_blocked);
    EXPECT_EQ(app_context_manager_set_epop_block(), 0);
    EXPECT_TRUE(AppContextState::get().epop_blocked);
    EXPECT_EQ(app_context_manager_unset_epop_block(), 0);
    EXPECT_FALSE(AppContextState::get().epop_blocked);
}

TEST_F(AppContext, BlockNeedsAConnection)
{
    EXPECT_EQ(app_context_manager_set_epop_block(), -1);
    EXPECT_FALSE(AppContextState::get().epop_blocked);
}

TEST_F(AppContext, DisconnectingFreesThePopupsAndAFurtherReleaseIsNoError)
{
    ASSERT_EQ(app_context_manager_init(), 0);
    ASSERT_EQ(app_context_manager_set_epop_block(), 0);
    app_context_manager_fini();
    EXPECT_FALSE(AppContextState::get().epop_blocked);
    EXPECT_EQ(app_context_manager_unset_epop_block(), 0);
}

TEST_F(AppContext, ItemsAreBlockedInTheirOrderUntilTheirApplicationReleasesThem)
{
    SettingsAPI *settings = SettingsAPI::Get();
    ASSERT_NE(settings, nullptr);
    settings->DisableItemsByList({"pip", "broadcasting"}, "one");
    settings->DisableItemsByList({"game-mode"}, "two");
    EXPECT_THAT(AppContextState::get().disabled_items.at("one"),
                ElementsAre("pip", "broadcasting"));

    settings->RemoveDisabledItemsByAppname("one");
    EXPECT_EQ(AppContextState::get().disabled_items.count("one"), 0u);
    EXPECT_EQ(AppContextState::get().disabled_items.count("two"), 1u);
    settings->RemoveDisabledItemsByAppname("two");
    settings->RemoveDisabledItemsByAppname("two");
    EXPECT_TRUE(AppContextState::get().disabled_items.empty());
}

TEST_F(AppContext, TheOtherTwoLibrariesStart)
{
    EXPECT_EQ(ui_config_manager_init(), 0);
    ui_config_manager_fini();
    EXPECT_EQ(ea_init(), 0);
}

} // namespace
