#include "player_test.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

namespace {

testing::Matcher<const stPlayListItem &> entry(int type, const std::string &name,
                                               const std::string &subtitle = "")
{
    return AllOf(Field("iType", &stPlayListItem::iType, type),
                 Field("strFileName", &stPlayListItem::strFileName, name),
                 Field("strSubtitleName", &stPlayListItem::strSubtitleName, subtitle));
}

testing::Matcher<const stPlayListItem &> video(const std::string &name,
                                               const std::string &subtitle = "")
{
    return entry(0, name, subtitle);
}

testing::Matcher<const stPlayListItem &> photo(const std::string &name)
{
    return entry(1, name);
}

class PlayListTest : public PlayerTest {
  protected:
    void scan(const std::vector<std::string> &files)
    {
        fake_.storage.add_folder(FOLDER, files);
        player_.m_CreatePlayList();
    }

    // The subtitle that the first landscape video was paired with.
    std::string subtitle_among(const std::vector<std::string> &files,
                               const std::string &language = "en_US")
    {
        fake_.system.language = language;
        scan(files);
        return player_.m_vdcLandscapeVideos.empty()
                   ? "no video"
                   : player_.m_vdcLandscapeVideos[0].strSubtitleName;
    }

    static stPlayListItem item(int type, const std::string &name)
    {
        stPlayListItem made;
        made.iType = type;
        made.strFileName = name;
        return made;
    }
};

// ---- m_CreatePlayList: folder ----

TEST_F(PlayListTest, WithoutALaunchFolderTheBuiltInFolderIsScanned)
{
    scan({"a.mp4"});

    EXPECT_EQ(player_.m_strPlayPath, FOLDER);
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("a.mp4")));
}

TEST_F(PlayListTest, ALaunchFolderIsScannedEvenWithoutFolderContentsMode)
{
    player_.m_strFolderPath = "/demo/show/";
    player_.m_bFolderContentsPlayer = false;
    fake_.storage.add_folder("/demo/show", {"b.mp4"});

    player_.m_CreatePlayList();

    EXPECT_EQ(player_.m_strPlayPath, "/demo/show/");
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("b.mp4")));
}

TEST_F(PlayListTest, AUsbFolderIsScannedOnTheStick)
{
    player_.m_strFolderPath = "show";
    player_.m_bUsbLocation = true;
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/show", {"c.mp4"});

    player_.m_CreatePlayList();

    EXPECT_EQ(player_.m_strPlayPath, "/media/a/show/");
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("c.mp4")));
}

TEST_F(PlayListTest, AFolderThatCannotBeOpenedLeavesTheListsAsTheyWere)
{
    player_.m_vdcLandscapeVideos = {item(0, "old.mp4")};
    player_.m_vdcPortraitVideos = {item(0, "portrait_old.mp4")};
    player_.m_vdcLandscapePhotos = {item(1, "old.jpg")};
    player_.m_vdcPortraitPhotos = {item(1, "portrait_old.jpg")};
    player_.m_strFolderPath = "/demo/none/";

    player_.m_CreatePlayList();

    EXPECT_EQ(fake_.logs().back(), "E \"open dir [/demo/none/] failed\"");
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("old.mp4")));
    EXPECT_THAT(player_.m_vdcPortraitVideos, ElementsAre(video("portrait_old.mp4")));
    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo("old.jpg")));
    EXPECT_THAT(player_.m_vdcPortraitPhotos, ElementsAre(photo("portrait_old.jpg")));
}

TEST_F(PlayListTest, AnUnlistedUsbStorageIsAnEmptyFolderName)
{
    player_.m_strFolderPath = "show";
    player_.m_bUsbLocation = true;
    fake_.fail("usb_device_get_device_list");

    player_.m_CreatePlayList();

    EXPECT_EQ(fake_.logs().back(), "E \"open dir [] failed\"");
    EXPECT_EQ(player_.m_strPlayPath, "");
}

TEST_F(PlayListTest, AScanReplacesAllFourListsAndLeavesThePlayList)
{
    player_.m_vdcLandscapeVideos = {item(0, "old.mp4")};
    player_.m_vdcPortraitVideos = {item(0, "portrait_old.mp4")};
    player_.m_vdcLandscapePhotos = {item(1, "old.jpg")};
    player_.m_vdcPortraitPhotos = {item(1, "portrait_old.jpg")};
    player_.m_vdcPlayList = {item(0, "playing.mp4")};

    scan({});

    EXPECT_THAT(player_.m_vdcLandscapeVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapePhotos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitPhotos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("playing.mp4")));
}

TEST_F(PlayListTest, TheFolderIsClosedAgain)
{
    scan({"a.mp4"});

    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(PlayListTest, AScanLogsItsSteps)
{
    scan({"a.mp4"});

    // Its own entry, the language, the model, the names.
    EXPECT_THAT(fake_.lines(), ElementsAre("I \"\"", "I \"\"", "I \"en_US\"",
                                           testing::StartsWith("W \""), "I \"FileName:a.mp4\""));
}

TEST_F(PlayListTest, EveryNameButTheDotsIsLogged)
{
    scan({"a.mp4", ".hidden.mp4", "readme", "a.srt"});

    const Lines logs = fake_.logs();
    EXPECT_EQ(logs.front(), "I \"\"");
    Lines names;
    for (const std::string &line : logs) {
        if (line.find("FileName:") != std::string::npos)
            names.push_back(line);
    }
    EXPECT_THAT(names, LinesAre("I \"FileName:a.mp4\"", "I \"FileName:.hidden.mp4\"",
                                "I \"FileName:readme\"", "I \"FileName:a.srt\""));
}

// ---- m_CreatePlayList: sorting ----

TEST_F(PlayListTest, FilesAreSortedByKindAndOrientation)
{
    scan({"a.mp4", "portrait_b.mp4", "c.jpg", "portrait_d.jpeg", "notes.pdf"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("a.mp4")));
    EXPECT_THAT(player_.m_vdcPortraitVideos, ElementsAre(video("portrait_b.mp4")));
    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo("c.jpg")));
    EXPECT_THAT(player_.m_vdcPortraitPhotos, ElementsAre(photo("portrait_d.jpeg")));
}

TEST_F(PlayListTest, TheDirectorysOrderIsKept)
{
    scan({"c.mp4", "a.mp4", "b.mp4"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos,
                ElementsAre(video("c.mp4"), video("a.mp4"), video("b.mp4")));
}

TEST_F(PlayListTest, ThePortraitPrefixIgnoresCaseButNeedsItsUnderscore)
{
    scan({"Portrait_Intro.MP4", "portraitIntro.mp4", "PORTRAIT_x.jpg", "my_portrait_y.jpg",
          "portrait_.mp4"});

    EXPECT_THAT(player_.m_vdcPortraitVideos,
                ElementsAre(video("Portrait_Intro.MP4"), video("portrait_.mp4")));
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("portraitIntro.mp4")));
    EXPECT_THAT(player_.m_vdcPortraitPhotos, ElementsAre(photo("PORTRAIT_x.jpg")));
    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo("my_portrait_y.jpg")));
}

class VideoExtensionTest : public PlayListTest, public testing::WithParamInterface<const char *> {};

TEST_P(VideoExtensionTest, IsAVideo)
{
    const std::string name = std::string("clip") + GetParam();
    scan({name});

    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video(name)));
    EXPECT_THAT(player_.m_vdcLandscapePhotos, IsEmpty());
}

// The last ones are parts of the list's text: that test is kept so on purpose.
INSTANTIATE_TEST_SUITE_P(Names, VideoExtensionTest,
                         testing::Values(".ts", ".avi", ".mp4", ".asf", ".wmv", ".ogg", ".flv",
                                         ".mpeg", ".mkv", ".tp", ".MP4", ".Mkv", ".m", ".mp",
                                         ".mpe", ".", ".t", ".a"));

class PhotoExtensionTest : public PlayListTest, public testing::WithParamInterface<const char *> {};

TEST_P(PhotoExtensionTest, IsAPhoto)
{
    const std::string name = std::string("picture") + GetParam();
    scan({name});

    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo(name)));
    EXPECT_THAT(player_.m_vdcLandscapeVideos, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, PhotoExtensionTest,
                         testing::Values(".jpg", ".jpeg", ".JPG", ".JpEg", ".j", ".jp"));

class IgnoredNameTest : public PlayListTest, public testing::WithParamInterface<const char *> {};

TEST_P(IgnoredNameTest, EntersNoList)
{
    scan({GetParam()});

    EXPECT_THAT(player_.m_vdcLandscapeVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapePhotos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitPhotos, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Names, IgnoredNameTest,
                         testing::Values("readme", "readme.txt", "movie.mov", "picture.png",
                                         "a.smp4", "a.mp4x", "a.mp4.part", "a.srt", "a.sami"));

TEST_F(PlayListTest, OnlyTheLastExtensionCounts)
{
    scan({"a.jpg.mp4", "b.mp4.jpg"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("a.jpg.mp4")));
    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo("b.mp4.jpg")));
}

TEST_F(PlayListTest, NamesThatStartWithADotAreLikeAnyOther)
{
    scan({".hidden.mp4", "...", "..mp4"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos,
                ElementsAre(video(".hidden.mp4"), video("..."), video("..mp4")));
}

TEST_F(PlayListTest, DirectBacklightModelsPlayOneMoreExtension)
{
    fake_.system.store_content_type = 1;

    scan({"a.smp4", "b.mp4", "c.s"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos,
                ElementsAre(video("a.smp4"), video("b.mp4"), video("c.s")));
}

// ---- m_CreatePlayList: subtitles ----

TEST_F(PlayListTest, AVideoGetsTheSubtitleThatHoldsItsName)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "a.srt"}), "a.srt");
    EXPECT_EQ(subtitle_among({"a.srt", "a.mp4"}), "a.srt");
}

TEST_F(PlayListTest, TheSubtitleInTheSystemLanguageWinsInAnyOrder)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "a.srt", "a_EngUS.srt"}), "a_EngUS.srt");
    EXPECT_EQ(subtitle_among({"a.mp4", "a_EngUS.srt", "a.srt"}), "a_EngUS.srt");
    EXPECT_EQ(subtitle_among({"a_EngUS.srt", "a.mp4", "a.srt", "a_Kor.srt"}), "a_EngUS.srt");
}

TEST_F(PlayListTest, OfTwoInTheSystemLanguageTheFirstWins)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "a_EngUS.srt", "a_EngUS.ass"}), "a_EngUS.srt");
}

TEST_F(PlayListTest, WithoutTheSystemLanguageTheLastMatchWins)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "a_Kor.srt", "a_Fra.srt"}), "a_Fra.srt");
    EXPECT_EQ(subtitle_among({"a.mp4", "a_Fra.srt", "a_Kor.srt"}), "a_Kor.srt");
}

TEST_F(PlayListTest, WithoutAKnownLanguageTheLastMatchWins)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "a_Kor.srt", "a_Fra.srt"}, "xx_XX"), "a_Fra.srt");
}

TEST_F(PlayListTest, TheNameMayStandAnywhereInTheSubtitlesName)
{
    EXPECT_EQ(subtitle_among({"a.mp4", "data.srt"}), "data.srt");
}

TEST_F(PlayListTest, TheNameIsComparedWithItsCase)
{
    EXPECT_EQ(subtitle_among({"A.mp4", "a.srt"}), "");
}

TEST_F(PlayListTest, TheNameEndsAtItsLastDot)
{
    EXPECT_EQ(subtitle_among({"clip.final.mp4", "clip.srt"}), "");
    EXPECT_EQ(subtitle_among({"clip.final.mp4", "clip.final.srt"}), "clip.final.srt");
}

TEST_F(PlayListTest, PortraitVideosGetSubtitlesToo)
{
    scan({"portrait_a.mp4", "portrait_a.smi"});

    EXPECT_THAT(player_.m_vdcPortraitVideos,
                ElementsAre(video("portrait_a.mp4", "portrait_a.smi")));
}

TEST_F(PlayListTest, PhotosNeverGetSubtitles)
{
    scan({"a.jpg", "a.srt", "portrait_b.jpg", "portrait_b.srt"});

    EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAre(photo("a.jpg")));
    EXPECT_THAT(player_.m_vdcPortraitPhotos, ElementsAre(photo("portrait_b.jpg")));
}

TEST_F(PlayListTest, ATextFileIsASubtitleAndNoEntry)
{
    EXPECT_EQ(subtitle_among({"readme.txt", "read.mp4"}), "readme.txt");
}

class SubtitleExtensionTest : public PlayListTest,
                              public testing::WithParamInterface<const char *> {};

TEST_P(SubtitleExtensionTest, IsASubtitle)
{
    const std::string name = std::string("film") + GetParam();

    EXPECT_EQ(subtitle_among({"film.mkv", name}), name);
}

INSTANTIATE_TEST_SUITE_P(Names, SubtitleExtensionTest,
                         testing::Values(".smi", ".srt", ".sub", ".ttxt", ".txt", ".ssa", ".ass",
                                         ".psb", ".sami", ".mpl", ".SRT"));

// ---- m_InitPlayList ----

class InitPlayListTest : public PlayListTest {
  protected:
    void landscape_contents()
    {
        player_.m_vdcLandscapeVideos = {item(0, "a.mp4"), item(0, "b.mp4")};
        player_.m_vdcLandscapePhotos = {item(1, "c.jpg")};
    }

    void portrait_contents()
    {
        player_.m_vdcPortraitVideos = {item(0, "portrait_a.mp4")};
        player_.m_vdcPortraitPhotos = {item(1, "portrait_c.jpg")};
    }
};

TEST_F(InitPlayListTest, LandscapePlaysLandscapeVideosThenPhotos)
{
    landscape_contents();
    portrait_contents();

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("a.mp4"), video("b.mp4"), photo("c.jpg")));
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"add landscape files in play list\""));
}

TEST_F(InitPlayListTest, PortraitPlaysPortraitVideosThenPhotos)
{
    landscape_contents();
    portrait_contents();
    set_panel(ROTATION_TYPE_PORTRAIT);

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(player_.m_vdcPlayList,
                ElementsAre(video("portrait_a.mp4"), photo("portrait_c.jpg")));
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"add portrait contents in play list\""));
}

TEST_F(InitPlayListTest, PhotosAloneAreContentEnough)
{
    player_.m_vdcLandscapePhotos = {item(1, "c.jpg")};
    EXPECT_EQ(player_.m_InitPlayList(), 1);
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(photo("c.jpg")));

    player_.m_vdcPortraitPhotos = {item(1, "portrait_c.jpg")};
    set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);
    EXPECT_EQ(player_.m_InitPlayList(), 1);
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(photo("portrait_c.jpg")));
}

TEST_F(InitPlayListTest, ThePlayListIsReplacedWholeAndTheIndexLeftAlone)
{
    fill_play_list({"x.mp4", "y.mp4", "z.mp4"});
    player_.m_uiCurPlayIndex = 2;
    player_.m_vdcLandscapeVideos = {item(0, "a.mp4")};

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("a.mp4")));
    EXPECT_EQ(player_.m_uiCurPlayIndex, 2U);
}

TEST_F(InitPlayListTest, WithoutARotatorTheOtherOrientationIsNothingToPlay)
{
    portrait_contents();

    EXPECT_EQ(player_.m_InitPlayList(), -1);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::PLAYBACK_STATUS, 2)));
}

TEST_F(InitPlayListTest, WithoutARotatorLandscapeFilesAreNothingForAPortraitPanel)
{
    landscape_contents();
    set_panel(ROTATION_TYPE_PORTRAIT);

    EXPECT_EQ(player_.m_InitPlayList(), -1);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::PLAYBACK_STATUS, 2)));
}

TEST_F(InitPlayListTest, NothingAtAllIsNothingToPlayOnARotatingSet)
{
    fake_.rotator.supported = true;
    EXPECT_EQ(player_.m_InitPlayList(), -1);
    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::PLAYBACK_STATUS, 2)));

    set_panel(ROTATION_TYPE_PORTRAIT);
    EXPECT_EQ(player_.m_InitPlayList(), -1);
    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::PLAYBACK_STATUS, 2)));
}

TEST_F(InitPlayListTest, ALandscapePanelAsksForPortraitWhenOnlyThatHasContent)
{
    fake_.rotator.supported = true;
    portrait_contents();

    EXPECT_EQ(player_.m_InitPlayList(), 0);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::FILE_MODE, 2), "ecore_timer_add(0.8)"));
    EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
}

TEST_F(InitPlayListTest, APortraitPanelAsksForLandscapeWhenOnlyThatHasContent)
{
    fake_.rotator.supported = true;
    player_.m_vdcLandscapePhotos = {item(1, "c.jpg")};
    set_panel(ROTATION_TYPE_PORTRAIT);

    EXPECT_EQ(player_.m_InitPlayList(), 0);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::FILE_MODE, 1), "ecore_timer_add(0.8)"));
}

TEST_F(InitPlayListTest, TheDelayTimerTurnsThePanel)
{
    fake_.rotator.supported = true;
    portrait_contents();
    ASSERT_EQ(player_.m_InitPlayList(), 0);
    fake_.forget();

    fake_.loop.advance(0.8);

    EXPECT_THAT(fake_.of({"VirtualKey"}), LinesAre("VirtualKey_Send_KeyCode(569, 2)"));
    EXPECT_EQ(player_.m_hRotationDelayTimer, nullptr);
}

TEST_F(InitPlayListTest, LeavingModeAsksForNoRotationAndKeepsTheList)
{
    fake_.rotator.supported = true;
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;
    fill_play_list({"old.mp4"});
    portrait_contents();

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("old.mp4")));
    EXPECT_THAT(fake_.calls(), IsEmpty());

    player_.m_vdcPortraitVideos.clear();
    player_.m_vdcPortraitPhotos.clear();
    landscape_contents();
    set_panel(ROTATION_TYPE_PORTRAIT);
    EXPECT_EQ(player_.m_InitPlayList(), 1);
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("old.mp4")));
    EXPECT_THAT(fake_.calls(), IsEmpty());
}

TEST_F(InitPlayListTest, LeavingModeStillFillsTheListOfTheRightOrientation)
{
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;
    landscape_contents();

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_EQ(player_.m_vdcPlayList.size(), 3U);
}

} // namespace
