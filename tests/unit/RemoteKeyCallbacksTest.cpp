#include "player_fixture.h"
#include "set_keys.h"

using testing::ElementsAre;

namespace {

class RemoteKeyCallbacksTest : public PlayerTest {
  protected:
    RemoteKeyCallbacksTest()
    {
        make_event_pipe();
        player_.m_pKeyDownHandler = ecore_event_handler_add(
            ECORE_EVENT_KEY_DOWN, CPlayerInspector::m_OnECoreKeyDownCB, controller_.get());
        fake_.forget();
    }
};

using NamedKey = set_keys::Key;

// Names beside the table; null for a key without a name.
constexpr NamedKey OTHER_KEYS[] = {
    {"XF86Unheard", 17}, {"return", 17}, {"KP_Enter", 17}, {"Up", 17}, {"", 17}, {nullptr, 17},
};

class NamedKeyTest : public RemoteKeyCallbacksTest, public testing::WithParamInterface<NamedKey> {
  protected:
    static std::string name() { return GetParam().name == nullptr ? "(null)" : GetParam().name; }
};

// ---- m_OnECoreKeyDownCB ----

TEST_P(NamedKeyTest, IsPostedByItsTypeAndPassedOn)
{
    Ecore_Event_Key event = {};
    event.keyname = GetParam().name;

    EXPECT_EQ(CPlayerInspector::m_OnECoreKeyDownCB(controller_.get(), ECORE_EVENT_KEY_DOWN, &event),
              ECORE_CALLBACK_PASS_ON);

    const std::string type = std::to_string(GetParam().type);
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"KeyName=" + name() +
                             " KeyEventType=" + std::to_string(ECORE_EVENT_KEY_DOWN) + "\"",
                         "I \"" + name() + "\"", "I \"iEventID = 8 iParam1 = " + type + "\"",
                         "ecore_pipe_write(8, " + type + ")"));
}

TEST_F(RemoteKeyCallbacksTest, AMissingEventIsAKeyWithoutANameWhoeverListens)
{
    for (COstrelDemoPlayer *listener :
         {controller_.get(), static_cast<COstrelDemoPlayer *>(nullptr)}) {
        fake_.forget();

        EXPECT_EQ(CPlayerInspector::m_OnECoreKeyDownCB(listener, 7, nullptr),
                  ECORE_CALLBACK_PASS_ON);

        EXPECT_THAT(fake_.lines(),
                    LinesAre("I \"KeyName=(null) KeyEventType=7\"", "I \"(null)\"",
                             "I \"iEventID = 8 iParam1 = 17\"", "ecore_pipe_write(8, 17)"));
    }
}

TEST_F(RemoteKeyCallbacksTest, AKeyReachesTheCallbackThroughTheMainLoop)
{
    EXPECT_THAT(fake_.loop.press_key("XF86AudioPlay"), ElementsAre(true));

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_pipe_write(8, 2)"));
}

TEST_F(RemoteKeyCallbacksTest, KeysArePostedInTheirOrder)
{
    for (const char *name : {"Left", "Right", "Return", "XF86Back"})
        fake_.loop.press_key(name);

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_pipe_write(8, 9)", "ecore_pipe_write(8, 10)",
                                        "ecore_pipe_write(8, 1)", "ecore_pipe_write(8, 0)"));
}

TEST_F(RemoteKeyCallbacksTest, AKeyOnlyPosts)
{
    make_window();
    fake_.loop.press_key("Return");

    EXPECT_EQ(player_.m_pPopup, nullptr) << "it is for the dispatcher to act";
}

// ---- m_OnGenlistKeyDownCB ----

TEST_P(NamedKeyTest, OnTheListOnlyReturnChoosesTheRow)
{
    make_window();
    open_popup();
    Lines expected = {"D \"\"", "D \"" + name() + "\"", "I \"" + name() + "\""};
    if (GetParam().type == KEY_TYPE_ENTER) {
        expected.emplace_back("I \"iEventID = 7 iParam1 = 0\"");
        expected.emplace_back("ecore_pipe_write(7, 0)");
    }

    std::string text = name();
    Evas_Event_Key_Down event = {};
    event.keyname = GetParam().name == nullptr ? nullptr : text.data();

    EXPECT_EQ(fake_.widgets.fire(player_.m_pGenlist, EVAS_CALLBACK_KEY_DOWN, &event), 1);

    EXPECT_EQ(fake_.lines(), expected);
}

INSTANTIATE_TEST_SUITE_P(Used, NamedKeyTest, testing::ValuesIn(set_keys::USED));
INSTANTIATE_TEST_SUITE_P(Others, NamedKeyTest, testing::ValuesIn(OTHER_KEYS));

TEST_F(RemoteKeyCallbacksTest, AMissingKeyRecordOnlyLogs)
{
    CPlayerInspector::m_OnGenlistKeyDownCB(controller_.get(), nullptr, nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

} // namespace
