// Key lists and grabs.

#include <memory>
#include <set>
#include <string>

#include <Ecore.h>
#include <Ecore_Input.h>
#include <gmock/gmock.h>

#include "key_router.h"
#include "key_router/key_translator.h"
#include "set_keys.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

using testing::HasSubstr;

class KeyListTest : public testing::Test {
  protected:
    KeyListTest() : list_(std::make_unique<KeyRouter_KeyList>())
    {
        list_->count = 77;
        KeyRouter_Reset_KeyList(list_.get());
    }

    std::set<std::string> names() const
    {
        std::set<std::string> names;
        for (int i = 0; i < list_->count; ++i)
            names.insert(list_->keys[i].name);
        return names;
    }

    std::unique_ptr<KeyRouter_KeyList> list_;
};

TEST_F(KeyListTest, AResetListIsEmpty)
{
    EXPECT_EQ(list_->count, 0);
}

TEST_F(KeyListTest, AllKeysHoldTheModeAndEveryKeyThatIsPassedOn)
{
    KeyRouter_Add_All_Key(KEY_ROUTER_MODE_EXCLUSIVE, list_.get());
    for (int i = 0; i < list_->count; ++i)
        EXPECT_EQ(list_->keys[i].mode, KEY_ROUTER_MODE_EXCLUSIVE);
    for (const char *name : set_keys::PASSED_ON)
        EXPECT_EQ(names().count(name), 1u) << name;
    EXPECT_EQ(names().count("XF86PanelEnter"), 1u);
}

TEST_F(KeyListTest, ARemovedKeyIsGoneAndTheOthersStay)
{
    KeyRouter_Add_All_Key(5, list_.get());
    const int all = list_->count;
    for (const char *name : set_keys::PASSED_ON)
        EXPECT_TRUE(KeyRouter_Remove_Key(name, 5, list_.get())) << name;
    EXPECT_EQ(list_->count, all - 28);
    EXPECT_EQ(names().count("XF86Home"), 0u);
    EXPECT_EQ(names().count("XF86Back"), 1u);
}

TEST_F(KeyListTest, AKeyThatIsNotThereIsNotRemoved)
{
    KeyRouter_Add_All_Key(5, list_.get());
    EXPECT_TRUE(KeyRouter_Remove_Key("XF86Home", 5, list_.get()));
    EXPECT_FALSE(KeyRouter_Remove_Key("XF86Home", 5, list_.get()));
    EXPECT_FALSE(KeyRouter_Remove_Key("XF86Exit", 0, list_.get())) << "another mode";
    EXPECT_FALSE(KeyRouter_Remove_Key("xf86exit", 5, list_.get()));
    EXPECT_FALSE(KeyRouter_Remove_Key(nullptr, 5, list_.get()));
    EXPECT_FALSE(KeyRouter_Remove_Key("XF86Exit", 5, nullptr));
}

TEST_F(KeyListTest, AListNeverOverflows)
{
    for (int i = 0; i < 20; ++i)
        KeyRouter_Add_All_Key(5, list_.get());
    EXPECT_EQ(list_->count, KEY_ROUTER_MAX_KEYS);
}

TEST_F(KeyListTest, AGrabIsTakenWithoutACompositorsHelpAndReleased)
{
    auto *surface = reinterpret_cast<wl_surface *>(list_.get());
    KeyRouter_Initialize(nullptr, nullptr, nullptr, 0);
    KeyRouter_Add_All_Key(5, list_.get());
    const store_test::CapturedLog log;
    EXPECT_TRUE(KeyRouter_Set_KeyList(surface, list_.get()));
    EXPECT_THAT(log.text(), HasSubstr(std::to_string(list_->count) + " keys grabbed\n"));
    EXPECT_TRUE(KeyRouter_Set_KeyList(surface, list_.get()));
    EXPECT_TRUE(KeyRouter_UnSet_KeyList(surface, list_.get()));
    EXPECT_THAT(log.text(), HasSubstr("keys released\n"));
    EXPECT_FALSE(KeyRouter_UnSet_KeyList(surface, list_.get())) << "nothing is grabbed any more";
    KeyRouter_Finalize();
}

TEST_F(KeyListTest, NonsenseIsRefused)
{
    auto *surface = reinterpret_cast<wl_surface *>(list_.get());
    EXPECT_FALSE(KeyRouter_Set_KeyList(nullptr, list_.get()));
    EXPECT_FALSE(KeyRouter_Set_KeyList(surface, nullptr));
    list_->count = KEY_ROUTER_MAX_KEYS + 1;
    EXPECT_FALSE(KeyRouter_Set_KeyList(surface, list_.get()));
    list_->count = -1;
    EXPECT_FALSE(KeyRouter_Set_KeyList(surface, list_.get()));
}

TEST(VirtualKeyTest, SendsThePanelKeyOnlyWhileStarted)
{
    EXPECT_EQ(VirtualKey_Send_KeyCode(VIRTUAL_KEY_CODE_ROTATE_PANEL, VIRTUAL_KEY_ACTION_CLICK), -1);
    EXPECT_EQ(VirtualKey_Initialize(0), 0);
    EXPECT_EQ(VirtualKey_Send_KeyCode(1, VIRTUAL_KEY_ACTION_CLICK), -1);
    EXPECT_EQ(VirtualKey_Send_KeyCode(VIRTUAL_KEY_CODE_ROTATE_PANEL, 7), -1);
    VirtualKey_Finalize();
    EXPECT_EQ(VirtualKey_Send_KeyCode(VIRTUAL_KEY_CODE_ROTATE_PANEL, VIRTUAL_KEY_ACTION_CLICK), -1);
}

/** Where the toolkit has its windows in memory. */
constexpr Ecore_Window IN_MEMORY = 0;

TEST(InjectedKeyTest, IsForNoWindowOfTheToolkits)
{
    // Without them the toolkit asks no bus of the machine's.
    const store_test::Environment modules("ECORE_NO_SYSTEM_MODULES", "1");
    ecore_event_init();
    Ecore_Window window = IN_MEMORY;
    Ecore_Event_Handler *handler = ecore_event_handler_add(
        ECORE_EVENT_KEY_DOWN,
        [](void *seen, int, void *event) -> Eina_Bool {
            *static_cast<Ecore_Window *>(seen) =
                static_cast<Ecore_Event_Key *>(event)->event_window;
            return ECORE_CALLBACK_DONE;
        },
        &window);
    platform::inject_key("XF86Back");

    ecore_main_loop_iterate();

    EXPECT_NE(window, IN_MEMORY);
    ecore_event_handler_del(handler);
    ecore_event_shutdown();
}

} // namespace
