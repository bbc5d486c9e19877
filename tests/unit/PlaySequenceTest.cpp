#include <tuple>

#include "player_lines.h"

using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

class PlaySequenceTest : public PlayerTest {
  protected:
    PlaySequenceTest()
    {
        make_window();
        make_video_player();
    }

    // The steps of starting a video: one entry loops.
    static Lines video_lines(const std::string &path, bool looping = false)
    {
        return {"player_unprepare()", "player_set_uri(\"" + path + "\")",
                "player_set_display(0, window#1)", "player_prepare_async(controller)",
                std::string("player_set_looping(") + (looping ? "true)" : "false)")};
    }

    static Lines photo_lines(const std::string &path, bool first = true)
    {
        Lines lines;
        if (first)
            lines.push_back("pictrel_init_display(window#1)");
        lines.push_back("pictrel_create_from_url(\"" + path + "\")");
        return lines;
    }

    Lines media_calls() const
    {
        return fake_.of({"player_unprepare", "player_stop", "player_set_uri", "player_set_display",
                         "player_set_subtitle_path", "player_prepare", "player_set_looping",
                         "pictrel_init", "pictrel_create", "pictrel_destroy"});
    }
};

// ---- GetPlayingType, SetRepeatOption ----

TEST_F(PlaySequenceTest, ThePlayingTypeIsTheEntrysKind)
{
    fill_play_list({"a.mp4", "b.jpg"});

    EXPECT_EQ(player_.GetPlayingType(0), 0);
    EXPECT_EQ(player_.GetPlayingType(1), 1);
    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(PlaySequenceTest, AnIndexOutsideTheListHasNoType)
{
    fill_play_list({"a.mp4", "b.jpg"});

    EXPECT_EQ(player_.GetPlayingType(-1), -1);
    EXPECT_EQ(player_.GetPlayingType(2), -1);

    EXPECT_THAT(fake_.logs(), LinesAre("W \"-1 2\"", "W \"2 2\""));
}

TEST_F(PlaySequenceTest, TheRepeatOptionIsStoredAndLogged)
{
    player_.SetRepeatOption(false);
    EXPECT_FALSE(player_.m_bRepeat);
    player_.SetRepeatOption(true);
    EXPECT_TRUE(player_.m_bRepeat);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"0\"", "I \"1\""));
}

// ---- m_PlayContents ----

TEST_F(PlaySequenceTest, PlayAllStartsAtTheFirstEntry)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_iPlayIndex = 0;
    player_.m_uiCurPlayIndex = 1;

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/a.mp4");
    EXPECT_EQ(player_.m_strSubtitlePath, "");
    EXPECT_THAT(media_calls(), ElementsAreArray(video_lines("/opt/data/demo_movie/a.mp4")));
}

TEST_F(PlaySequenceTest, PlayContentsLogsItsSteps)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_iPlayIndex = 2;

    player_.m_PlayContents();

    EXPECT_EQ(fake_.lines(),
              join({{"D \"2\"", "D \"/opt/data/demo_movie/b.mp4\"", "D \"0 0\""},
                    ::video_lines("/opt/data/demo_movie/b.mp4", "", PLAYER_STATE_IDLE, false)}));
}

TEST_F(PlaySequenceTest, ASelectionPlaysThatEntryAlone)
{
    fill_play_list({"a.mp4", "b.mp4", "c.mp4"});
    player_.m_iPlayIndex = 3;

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 2U);
    EXPECT_THAT(media_calls(), ElementsAreArray(video_lines("/opt/data/demo_movie/c.mp4")));
    EXPECT_THAT(fake_.of({"vconf_set_int"}), IsEmpty());
}

TEST_F(PlaySequenceTest, AStaleSelectionFallsBackToTheWholeList)
{
    fake_.store.values[ConfigKey::DEMO_MODE] = 3;
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_iPlayIndex = 3;

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_THAT(fake_.of({"vconf_set_int"}), LinesAre(writes(ConfigKey::DEMO_MODE, 0)));
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/a.mp4");
}

TEST_F(PlaySequenceTest, LeavingEndsTheProgramWithoutTouchingThePlayers)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_iPlayIndex = -1;

    EXPECT_FALSE(player_.m_PlayContents());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"-1\"", "E \"\"", "ui_app_exit()"));
    EXPECT_EQ(player_.m_strPlayPath, FOLDER);
    EXPECT_EQ(player_.m_strSubtitlePath, FOLDER);
}

TEST_F(PlaySequenceTest, ASubtitleIsPlayedFromTheSameFolder)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_vdcPlayList[0].strSubtitleName = "a.srt";
    player_.m_iPlayIndex = 0;

    player_.m_PlayContents();

    EXPECT_EQ(player_.m_strSubtitlePath, "/opt/data/demo_movie/a.srt");
    EXPECT_EQ(fake_.media.subtitle_path, "/opt/data/demo_movie/a.srt");
}

TEST_F(PlaySequenceTest, PathsAreMadeOfTheFolderInForce)
{
    player_.m_bFolderContentsPlayer = true;
    player_.m_strFolderPath = "/demo/show/";
    fill_play_list({"a.mp4"});
    player_.m_iPlayIndex = 0;

    player_.m_PlayContents();

    EXPECT_EQ(player_.m_strPlayPath, "/demo/show/a.mp4");
}

TEST_F(PlaySequenceTest, FromVideoToPhotoThePlayerIsStoppedFirst)
{
    fake_.media.state = PLAYER_STATE_PLAYING;
    fill_play_list({"a.jpg", "b.mp4"});
    player_.m_iPlayIndex = 0;

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_EQ(player_.m_iPlayingType, 1);
    EXPECT_THAT(media_calls(), ElementsAreArray(join({{"player_stop()", "player_unprepare()"},
                                                      photo_lines("/opt/data/demo_movie/a.jpg")})));
    EXPECT_THAT(fake_.logs(), testing::Contains("D \"1 0\""));
}

TEST_F(PlaySequenceTest, FromPhotoToVideoThePictureDisplayAndTimerGoFirst)
{
    fill_play_list({"a.mp4", "b.jpg"});
    make_picture();
    player_.StartSlideShow();
    player_.m_iPlayingType = 1;
    player_.m_iPlayIndex = 0;
    fake_.forget();

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_EQ(player_.m_iPlayingType, 0);
    EXPECT_THAT(fake_.calls(),
                ElementsAreArray(join({{"ecore_timer_del(timer#1)", "pictrel_destroy(picture#1)",
                                        "pictrel_destroy_display(1)"},
                                       video_lines("/opt/data/demo_movie/a.mp4")})));
}

TEST_F(PlaySequenceTest, FromPhotoToPhotoTheDisplayStays)
{
    fill_play_list({"a.jpg", "b.jpg"});
    make_picture();
    player_.m_iPlayingType = 1;
    player_.m_iPlayIndex = 2;

    EXPECT_TRUE(player_.m_PlayContents());

    EXPECT_THAT(media_calls(),
                ElementsAreArray(join({{"pictrel_destroy(picture#1)"},
                                       photo_lines("/opt/data/demo_movie/b.jpg", false)})));
}

// ---- m_PlayNextFile, m_PlayPreviousFile ----

TEST_F(PlaySequenceTest, NextGoesToTheFollowingEntry)
{
    fill_play_list({"a.mp4", "b.mp4", "c.mp4"});

    EXPECT_TRUE(player_.m_PlayNextFile());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(fake_.lines(),
              join({{"D \"/opt/data/demo_movie/b.mp4\"", "D \"0 0\""},
                    ::video_lines("/opt/data/demo_movie/b.mp4", "", PLAYER_STATE_IDLE, false)}));
}

TEST_F(PlaySequenceTest, NextAfterTheLastEntryIsTheFirst)
{
    fill_play_list({"a.mp4", "b.mp4", "c.mp4", "d.mp4", "e.mp4"});
    player_.m_uiCurPlayIndex = 4;

    EXPECT_TRUE(player_.m_PlayNextFile());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/a.mp4");
}

TEST_F(PlaySequenceTest, PreviousGoesToTheEntryBefore)
{
    fill_play_list({"a.mp4", "b.mp4", "c.mp4"});
    player_.m_uiCurPlayIndex = 2;

    EXPECT_TRUE(player_.m_PlayPreviousFile());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/b.mp4");
}

TEST_F(PlaySequenceTest, PreviousBeforeTheFirstEntryIsTheLast)
{
    fill_play_list({"a.mp4", "b.mp4", "c.mp4", "d.mp4", "e.mp4"});

    EXPECT_TRUE(player_.m_PlayPreviousFile());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 4U);
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/e.mp4");
}

TEST_F(PlaySequenceTest, SteppingLooksNeitherAtTheSelectionNorAtRepeat)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_iPlayIndex = -1;
    player_.m_bRepeat = false;
    player_.m_uiCurPlayIndex = 1;

    EXPECT_TRUE(player_.m_PlayNextFile());

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(PlaySequenceTest, SteppingChangesTheSubtitleToo)
{
    fill_play_list({"a.mp4", "b.mp4"});
    player_.m_vdcPlayList[1].strSubtitleName = "b.smi";

    player_.m_PlayNextFile();
    EXPECT_EQ(player_.m_strSubtitlePath, "/opt/data/demo_movie/b.smi");

    player_.m_PlayNextFile();
    EXPECT_EQ(player_.m_strSubtitlePath, "");
}

TEST_F(PlaySequenceTest, SteppingFromVideoToPhotoStopsTheVideo)
{
    fake_.media.state = PLAYER_STATE_PLAYING;
    fill_play_list({"a.mp4", "b.jpg"});

    EXPECT_TRUE(player_.m_PlayNextFile());

    EXPECT_EQ(player_.m_iPlayingType, 1);
    EXPECT_THAT(media_calls(), ElementsAreArray(join({{"player_stop()", "player_unprepare()"},
                                                      photo_lines("/opt/data/demo_movie/b.jpg")})));
}

TEST_F(PlaySequenceTest, SteppingFromPhotoToVideoReleasesThePhoto)
{
    fill_play_list({"a.mp4", "b.jpg"});
    make_picture();
    player_.m_iPlayingType = PLAYING_TYPE_PHOTO;
    player_.m_uiCurPlayIndex = 1;

    EXPECT_TRUE(player_.m_PlayPreviousFile());

    EXPECT_EQ(player_.m_iPlayingType, PLAYING_TYPE_VIDEO);
    EXPECT_EQ(fake_.calls(), join({{"pictrel_destroy(picture#1)", "pictrel_destroy_display(1)"},
                                   video_lines("/opt/data/demo_movie/a.mp4")}));
}

TEST_F(PlaySequenceTest, AListOfOneEntryBeginsAnewAndLoops)
{
    fill_play_list({"a.mp4"});
    for (const auto step :
         {&CPlayerInspector::m_PlayNextFile, &CPlayerInspector::m_PlayPreviousFile}) {
        fake_.forget();

        EXPECT_TRUE((player_.*step)());

        EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
        EXPECT_THAT(media_calls(),
                    ElementsAreArray(video_lines("/opt/data/demo_movie/a.mp4", true)));
    }
}

// ---- Failures ----

TEST_F(PlaySequenceTest, TheResultIsThatOfTheFileAndNothingElseIsTried)
{
    const std::tuple<const char *, const char *, const char *> failures[] = {
        {"a.mp4", "player_set_uri", "player_set_uri error"},
        {"a.mp4", "player_prepare_async", "player_prepare_async failed"},
        {"a.jpg", "pictrel_create_from_url", "PICTURE_ERROR_CREATE"},
        {"a.jpg", "pictrel_parse", "PICTURE_ERROR_PARSE"}};
    for (const auto &[name, function, error] : failures) {
        fill_play_list({name});
        player_.m_iPlayIndex = 0;
        for (const auto play :
             {&CPlayerInspector::m_PlayContents, &CPlayerInspector::m_PlayNextFile,
              &CPlayerInspector::m_PlayPreviousFile}) {
            fake_.fail(function);
            fake_.forget();

            EXPECT_FALSE((player_.*play)()) << function;

            EXPECT_EQ(fake_.lines().back(), std::string("E \"") + error + "\"");
            EXPECT_EQ(fake_.transcript.count(function), 1);
            EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
        }
    }
}

TEST_F(PlaySequenceTest, AnEmptyListPlaysNothing)
{
    for (const int selection : {0, 4}) {
        player_.m_iPlayIndex = selection;
        fake_.forget();
        EXPECT_FALSE(player_.m_PlayContents());
        EXPECT_THAT(fake_.lines(), LinesAre("D \"" + std::to_string(selection) + "\"",
                                            "W \"play list is empty\""));
    }

    fake_.forget();
    EXPECT_FALSE(player_.m_PlayNextFile());
    EXPECT_FALSE(player_.m_PlayPreviousFile());
    EXPECT_THAT(fake_.lines(), LinesAre("W \"play list is empty\"", "W \"play list is empty\""));
}

} // namespace
