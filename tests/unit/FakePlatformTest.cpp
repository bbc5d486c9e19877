// The fake set itself: it has to notice what the player must not do, and to keep time.

#include <cstdlib>
#include <string>
#include <vector>

#include <Elementary.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "config_store.h"
#include "dlog.h"
#include "key_router.h"
#include "lines.h"
#include "media_player.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"
#include "still_picture.h"
#include "system_facts.h"
#include "usb_storage.h"
#include "widget_extension.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class FakePlatformTest : public testing::Test {
  protected:
    FakePlatformTest() : fake_(fake::reset()) {}

    fake::Platform &fake_;
};

// ---- Transcript ----

TEST_F(FakePlatformTest, WhatIsOnlyAskedIsLeftOutOfWhatWasDone)
{
    COstrelDemoUtil::IsSupportRotator();
    COstrelDemoUtil::SetBlockEPOP(true);

    const Lines asked = {"display_rotator_get_status()", "E \"TV does not support rotation\""};
    const Lines done = {"I \"Block E-POP = 1 \"", "app_context_manager_set_epop_block()"};
    EXPECT_EQ(fake_.lines(), done);
    EXPECT_THAT(fake_.all(), ElementsAre(asked[0], asked[1], done[0], done[1]));
    EXPECT_THAT(fake_.of({"display_rotator"}), ElementsAre(asked[0]));
}

// ---- Misuse ----

TEST_F(FakePlatformTest, UseAfterDeletionFailsTheTest)
{
    Evas_Object *popup = elm_velt_popup_add(nullptr);
    evas_object_del(popup);

    EXPECT_NONFATAL_FAILURE(evas_object_show(popup), "popup#1, which is deleted");
}

TEST_F(FakePlatformTest, DoubleDeletionFailsTheTest)
{
    Evas_Object *popup = elm_velt_popup_add(nullptr);
    evas_object_del(popup);

    EXPECT_NONFATAL_FAILURE(evas_object_del(popup), "popup#1, which is deleted");
}

TEST_F(FakePlatformTest, AnInventedHandleFailsTheTest)
{
    int place = 0;

    EXPECT_NONFATAL_FAILURE(evas_object_hide(reinterpret_cast<Evas_Object *>(&place)),
                            "never existed");
    EXPECT_NONFATAL_FAILURE(ecore_timer_del(reinterpret_cast<Ecore_Timer *>(&place)),
                            "never existed");
}

TEST_F(FakePlatformTest, AChildGoesWithItsParentAndMayBeDeletedOnceMore)
{
    Evas_Object *popup = elm_velt_popup_add(nullptr);
    Evas_Object *list = elm_velt_genlist_add(popup);
    evas_object_del(popup);

    EXPECT_THAT(fake_.leftovers(), IsEmpty());
    EXPECT_NONFATAL_FAILURE(evas_object_show(list), "genlist#1, which is deleted");
    evas_object_del(list);
    EXPECT_NONFATAL_FAILURE(evas_object_del(list), "genlist#1, which is deleted");
}

TEST_F(FakePlatformTest, AReleasedPlayerRefusesItsCalls)
{
    player_h player = nullptr;
    ASSERT_EQ(player_create(&player), 0);
    ASSERT_EQ(player_destroy(player), 0);

    EXPECT_NONFATAL_FAILURE(player_start(player), "player#1, which is deleted");
}

TEST_F(FakePlatformTest, AKeyListMustBeReset)
{
    static KeyRouter_KeyList list;

    EXPECT_NONFATAL_FAILURE(KeyRouter_Add_All_Key(5, &list), "never reset");
}

TEST_F(FakePlatformTest, AStickOfAnEarlierListIsGone)
{
    fake_.storage.sticks = {"/media/a"};
    usb_device_list_h list = nullptr;
    usb_device_h stick = nullptr;
    usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &list);
    ASSERT_EQ(usb_device_list_get_first(list, &stick), 0);
    usb_device_get_device_list(USB_DEVICE_TYPE_MASS_STORAGE, &list);

    EXPECT_NONFATAL_FAILURE(usb_device_get_mountpath(stick), "usb-device#1, which is deleted");
}

TEST_F(FakePlatformTest, LogLinesInAnotherFormFailTheTest)
{
    const char *good = "File.cpp: Function(12) > \033[32mtext\033[0m";
    __dlog_print(LOG_ID_APPS, DLOG_INFO, "OSTRELDEMO_PLAYER", "%s", good);
    EXPECT_THAT(fake_.logs(), LinesAre("I \"text\""));

    EXPECT_NONFATAL_FAILURE(__dlog_print(LOG_ID_APPS, DLOG_ERROR, "OSTRELDEMO_PLAYER", "%s", good),
                            "wrong form");
    EXPECT_NONFATAL_FAILURE(__dlog_print(LOG_ID_APPS, DLOG_INFO, "OSTRELDEMO_PLAYER", "text"),
                            "wrong form");
    EXPECT_NONFATAL_FAILURE(__dlog_print(LOG_ID_MAIN, DLOG_INFO, "OSTRELDEMO_PLAYER", "%s", good),
                            "wrong buffer");
    EXPECT_NONFATAL_FAILURE(__dlog_print(LOG_ID_APPS, DLOG_INFO, "OTHER", "%s", good), "wrong tag");
}

TEST_F(FakePlatformTest, WhatIsNotReleasedIsNamed)
{
    ecore_timer_add(
        1.0, [](void *) -> Eina_Bool { return ECORE_CALLBACK_CANCEL; }, nullptr);
    player_h player = nullptr;
    player_create(&player);
    char *language = nullptr;
    runtime_info_get_value_string(RUNTIME_INFO_KEY_LANGUAGE, &language);

    EXPECT_THAT(fake_.leftovers(),
                LinesAre("timer#1", "player#1", "text from runtime_info_get_value_string"));

    std::free(language);
    player_destroy(player);
    fake_.loop.advance(1.0);
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

// ---- Results ----

TEST_F(FakePlatformTest, AnOrderedFailureHitsTheNthCall)
{
    fake_.fail("vconf_set_int", -5, 2);

    EXPECT_EQ(vconf_set_int("a", 1), 0);
    EXPECT_EQ(vconf_set_int("a", 2), -5);
    EXPECT_EQ(vconf_set_int("a", 3), 0);
    EXPECT_EQ(fake_.store.get("a"), 3);
}

TEST_F(FakePlatformTest, AFailureThatNeverCameAboutIsKnown)
{
    fake_.fail("vconf_set_int");
    EXPECT_THAT(fake_.script.unused(), LinesAre("vconf_set_int"));

    vconf_set_int("a", 1);
    EXPECT_THAT(fake_.script.unused(), IsEmpty());
}

TEST_F(FakePlatformTest, FailedReadsLeaveTheirResultUntouched)
{
    int value = 42;
    EXPECT_NE(vconf_get_int("no key", &value), 0);
    EXPECT_EQ(value, 42);

    player_h player = nullptr;
    player_create(&player);
    fake_.fail("player_get_state");
    player_state_e state = PLAYER_STATE_PAUSED;
    EXPECT_NE(player_get_state(player, &state), 0);
    EXPECT_EQ(state, PLAYER_STATE_PAUSED);
}

TEST_F(FakePlatformTest, PlayerCallsThatDoNotFitTheStateAreRefused)
{
    player_h player = nullptr;
    player_create(&player);

    EXPECT_EQ(player_start(player), PLAYER_ERROR_INVALID_STATE);
    EXPECT_EQ(player_pause(player), PLAYER_ERROR_INVALID_STATE);
    EXPECT_EQ(player_prepare_async(
                  player, [](void *) {}, nullptr),
              PLAYER_ERROR_INVALID_OPERATION)
        << "without a file";
    EXPECT_EQ(player_set_uri(player, "/demo/a.mp4"), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_prepare_async(
                  player, [](void *) {}, nullptr),
              PLAYER_ERROR_NONE);
    fake_.media.fire_prepared();
    EXPECT_EQ(player_set_uri(player, "/demo/b.mp4"), PLAYER_ERROR_INVALID_STATE);
    EXPECT_EQ(player_start(player), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_pause(player), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_unprepare(player), PLAYER_ERROR_NONE);
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_IDLE);
}

TEST_F(FakePlatformTest, PictureCallbacksWithoutDataGetThePicturesOwn)
{
    _pictrel_s *picture = nullptr;
    ASSERT_EQ(pictrel_create_from_url("/demo/a.jpg", &picture), 0);
    int data = 0;
    picture->user_data = &data;
    pictrel_add_event_callback(
        picture, PICTREL_EVENT_PARSE,
        [](void *user_data, pictrel_event_type_e, pictrel_event_result_e result) {
            *static_cast<int *>(user_data) = result + 100;
        },
        nullptr);

    fake_.pictures.fire_parsed(PICTREL_RESULT_PARSE_FAILED);

    EXPECT_EQ(data, 101);
    pictrel_destroy(&picture);
    EXPECT_EQ(picture, nullptr);
}

// ---- Time ----

struct Firing {
    fake::Platform *fake;
    std::vector<double> times;
    int left = 1000;
    Ecore_Timer *other = nullptr;
};

Eina_Bool note_time(void *data)
{
    auto *firing = static_cast<Firing *>(data);
    firing->times.push_back(firing->fake->loop.now());
    return --firing->left > 0 ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
}

TEST_F(FakePlatformTest, ARenewedTimerFiresAtItsInterval)
{
    Firing firing = {&fake_, {}, 3};
    ecore_timer_add(0.8, note_time, &firing);

    fake_.loop.advance(0.7);
    EXPECT_THAT(firing.times, IsEmpty());
    fake_.loop.advance(10.0);

    EXPECT_THAT(firing.times, ElementsAre(0.8, 1.6, 2.4));
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(FakePlatformTest, TimersFireInTheOrderOfTheirTimes)
{
    Firing slow = {&fake_, {}, 1};
    Firing fast = {&fake_, {}, 1};
    ecore_timer_add(2.0, note_time, &slow);
    ecore_timer_add(1.0, note_time, &fast);

    fake_.loop.advance(3.0);

    EXPECT_THAT(fast.times, ElementsAre(1.0));
    EXPECT_THAT(slow.times, ElementsAre(2.0));
    EXPECT_EQ(fake_.loop.now(), 3.0);
}

TEST_F(FakePlatformTest, ATimerDeletedInsideACallbackFiresNoMore)
{
    Firing victim = {&fake_, {}, 5};
    Firing killer = {&fake_, {}, 5};
    killer.other = ecore_timer_add(2.0, note_time, &victim);
    ecore_timer_add(
        1.0,
        [](void *data) -> Eina_Bool {
            ecore_timer_del(static_cast<Firing *>(data)->other);
            return ECORE_CALLBACK_CANCEL;
        },
        &killer);

    fake_.loop.advance(10.0);

    EXPECT_THAT(victim.times, IsEmpty());
}

TEST_F(FakePlatformTest, ATimerMayDeleteItselfAndAskToBeRenewed)
{
    Firing self = {&fake_, {}};
    self.other = ecore_timer_add(
        1.0,
        [](void *data) -> Eina_Bool {
            auto *firing = static_cast<Firing *>(data);
            firing->times.push_back(firing->fake->loop.now());
            ecore_timer_del(firing->other);
            return ECORE_CALLBACK_RENEW;
        },
        &self);

    fake_.loop.advance(10.0);

    EXPECT_THAT(self.times, ElementsAre(1.0));
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(FakePlatformTest, AnIdlerRunsAtEachIdleMomentUntilItCancels)
{
    Firing firing = {&fake_, {}, 2};
    ecore_idler_add(note_time, &firing);

    fake_.loop.run_idle();
    EXPECT_EQ(firing.times.size(), 1U);
    fake_.loop.run_idle();
    fake_.loop.run_idle();
    EXPECT_EQ(firing.times.size(), 2U);
    EXPECT_EQ(fake_.loop.idlers(), 0U);
}

TEST_F(FakePlatformTest, ThePipeDeliversWhatItsHandlerPosts)
{
    static std::string seen;
    static Ecore_Pipe *pipe;
    seen.clear();
    pipe = ecore_pipe_add(
        [](void *, void *buffer, unsigned int) {
            const char byte = *static_cast<char *>(buffer);
            seen += byte;
            if (byte == 'a')
                ecore_pipe_write(pipe, "b", 1);
        },
        nullptr);
    ecore_pipe_write(pipe, "a", 1);
    ecore_pipe_write(pipe, "c", 1);

    fake_.loop.drain_pipe();

    EXPECT_EQ(seen, "acb");
}

} // namespace
