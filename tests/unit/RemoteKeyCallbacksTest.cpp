#include "player_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

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

// ---- m_OnECoreKeyDownCB ----

TEST_F(RemoteKeyCallbacksTest, AKeyIsPostedByItsTypeAndPassedOn)
{
    EXPECT_THAT(fake_.loop.press_key("XF86AudioPlay"), ElementsAre(true));

    EXPECT_THAT(fake_.lines(), LinesAre("I \"KeyName=XF86AudioPlay KeyEventType=" +
                                            std::to_string(ECORE_EVENT_KEY_DOWN) + "\"",
                                        "I \"XF86AudioPlay\"", "I \"iEventID = 8 iParam1 = 2\"",
                                        "ecore_pipe_write(8, 2)"));
}

TEST_F(RemoteKeyCallbacksTest, AnUnknownKeyIsPostedToo)
{
    fake_.loop.press_key("XF86Unheard");

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_pipe_write(8, 17)"));
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

TEST_F(RemoteKeyCallbacksTest, TheControllerIsNotNeeded)
{
    Ecore_Event_Key event = {};
    event.keyname = "Return";
    event.key = "Return";

    EXPECT_EQ(CPlayerInspector::m_OnECoreKeyDownCB(nullptr, ECORE_EVENT_KEY_DOWN, &event),
              ECORE_CALLBACK_PASS_ON);

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_pipe_write(8, 1)"));
}

// ---- m_OnGenlistKeyDownCB ----

TEST_F(RemoteKeyCallbacksTest, ReturnOnTheListChoosesTheRow)
{
    make_window();
    open_popup();

    fake_.widgets.press_key(player_.m_pGenlist, "Return");

    EXPECT_THAT(fake_.lines(),
                LinesAre("D \"\"", "D \"Return\"", "I \"Return\"", "I \"iEventID = 7 iParam1 = 0\"",
                         "ecore_pipe_write(7, 0)"));
}

TEST_F(RemoteKeyCallbacksTest, OtherKeysOnTheListAreLeftToIt)
{
    make_window();
    open_popup();

    for (const char *name : {"Left", "XF86Back", "XF86AudioPlay", "Up", "KP_Enter"})
        fake_.widgets.press_key(player_.m_pGenlist, name);

    EXPECT_THAT(fake_.calls(), IsEmpty());
}

TEST_F(RemoteKeyCallbacksTest, AMissingKeyRecordOnlyLogs)
{
    CPlayerInspector::m_OnGenlistKeyDownCB(controller_.get(), nullptr, nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

} // namespace
