/**
 * One event after the other, handed to the dispatcher as the pipe does.
 */
#pragma once

#include "player_fixture.h"

#include "player/util/EventManager.h"

class EventDispatcherTest : public PlayerTest {
  protected:
    EventDispatcherTest()
    {
        make_window();
        make_video_player();
        fill_play_list({"a.mp4", "b.mp4", "c.mp4"});
        player_.m_iPlayIndex = 0;
    }

    void dispatch(int id, int parameter = 0)
    {
        stPipeRecord record = {id, parameter, 0, 0, 0, 0};
        id_ = id;
        parameter_ = parameter;
        fake_.forget();
        CPlayerInspector::m_OnHandleEcorePipeCB(controller_.get(), &record, sizeof record);
    }

    // Everything that follows the two lines that every record leaves.
    Lines rest()
    {
        const Lines all = fake_.lines();
        EXPECT_GE(all.size(), 2U);
        if (all.size() < 2)
            return all;
        EXPECT_EQ(all[0].rfind("I \"pEvent = 0x", 0), 0U) << all[0];
        EXPECT_EQ(all[1], "I \"EventID = " + std::to_string(id_) +
                              ",iParam1 = " + std::to_string(parameter_) + "\"");
        return Lines(all.begin() + 2, all.end());
    }

    static Lines closed_down()
    {
        return {"I \"\"", "evas_object_hide(window#1)", "ecore_wl2_sync()"};
    }

    // A photo list with a photo on the screen.
    void show_photo()
    {
        fill_play_list({"a.jpg", "b.jpg"});
        player_.m_iPlayingType = 1;
        make_picture();
    }

    int status() { return fake_.store.get(ConfigKey::PLAYBACK_STATUS); }

  private:
    int id_ = 0;
    int parameter_ = 0;
};
