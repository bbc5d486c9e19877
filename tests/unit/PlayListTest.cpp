#include "player_fixture.h"
#include "turkish_locale.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
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

using Entries = std::vector<testing::Matcher<const stPlayListItem &>>;

class PlayListTest : public PlayerTest {
  protected:
    void expect_lists(const Entries &landscape_videos, const Entries &portrait_videos,
                      const Entries &landscape_photos, const Entries &portrait_photos)
    {
        EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAreArray(landscape_videos));
        EXPECT_THAT(player_.m_vdcPortraitVideos, ElementsAreArray(portrait_videos));
        EXPECT_THAT(player_.m_vdcLandscapePhotos, ElementsAreArray(landscape_photos));
        EXPECT_THAT(player_.m_vdcPortraitPhotos, ElementsAreArray(portrait_photos));
    }

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

    // What the scan of a folder with these names leaves.
    static Lines scanned(const std::vector<std::string> &files)
    {
        Lines lines = {"I \"\""};
        for (const std::string &file : files)
            lines.push_back("I \"FileName:" + file + "\"");
        return lines;
    }

    void fill_four_lists()
    {
        player_.m_vdcLandscapeVideos = {item(0, "old.mp4")};
        player_.m_vdcPortraitVideos = {item(0, "portrait_old.mp4")};
        player_.m_vdcLandscapePhotos = {item(1, "old.jpg")};
        player_.m_vdcPortraitPhotos = {item(1, "portrait_old.jpg")};
    }

    void expect_four_lists_as_filled()
    {
        expect_lists({video("old.mp4")}, {video("portrait_old.mp4")}, {photo("old.jpg")},
                     {photo("portrait_old.jpg")});
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
    const std::vector<std::string> files = {"a.mp4", ".hidden.mp4", "readme", "a.srt", "b.jpg"};

    scan(files);

    EXPECT_EQ(player_.m_strPlayPath, FOLDER);
    EXPECT_EQ(fake_.lines(), scanned(files));
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(PlayListTest, ALaunchFolderIsScannedEvenWithoutFolderContentsMode)
{
    player_.m_strFolderPath = "/demo/show/";
    player_.m_bFolderContentsPlayer = false;
    fake_.storage.add_folder("/demo/show", {"b.mp4"});

    player_.m_CreatePlayList();

    EXPECT_EQ(player_.m_strPlayPath, "/demo/show/");
    EXPECT_THAT(player_.m_vdcLandscapeVideos, ElementsAre(video("b.mp4")));
    EXPECT_THAT(fake_.of({"opendir"}), LinesAre("opendir(\"/demo/show/\")"));
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
    EXPECT_THAT(fake_.of({"opendir"}), LinesAre("opendir(\"/media/a/show/\")"));
}

TEST_F(PlayListTest, AFolderThatCannotBeOpenedLeavesTheListsAsTheyWere)
{
    fill_four_lists();
    player_.m_strFolderPath = "/demo/none/";

    player_.m_CreatePlayList();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "E \"open dir [/demo/none/] failed\""));
    expect_four_lists_as_filled();
    EXPECT_EQ(player_.m_strPlayPath, "/demo/none/");
}

TEST_F(PlayListTest, AnUnlistedUsbStorageIsAnEmptyFolderName)
{
    fill_four_lists();
    player_.m_strFolderPath = "show";
    player_.m_bUsbLocation = true;
    fake_.fail("usb_device_get_device_list");

    player_.m_CreatePlayList();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "E \"open dir [] failed\""));
    expect_four_lists_as_filled();
    EXPECT_EQ(player_.m_strPlayPath, "");
}

TEST_F(PlayListTest, WithoutABuiltInFolderTheFolderNameIsEmpty)
{
    fill_four_lists();
    fake_.fail("opendir");

    player_.m_CreatePlayList();

    EXPECT_EQ(fake_.logs().back(), "E \"open dir [] failed\"");
    expect_four_lists_as_filled();
}

TEST_F(PlayListTest, AScanReplacesAllFourListsAndLeavesThePlayList)
{
    fill_four_lists();
    player_.m_vdcPlayList = {item(0, "playing.mp4")};

    scan({});

    expect_lists({}, {}, {}, {});
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("playing.mp4")));
}

// ---- m_CreatePlayList: sorting ----

TEST_F(PlayListTest, FilesAreSortedByKindAndOrientation)
{
    scan({"a.mp4", "portrait_b.mp4", "c.jpg", "portrait_d.jpeg", "notes.pdf"});

    expect_lists({video("a.mp4")}, {video("portrait_b.mp4")}, {photo("c.jpg")},
                 {photo("portrait_d.jpeg")});
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

    expect_lists({video("portraitIntro.mp4")},
                 {video("Portrait_Intro.MP4"), video("portrait_.mp4")},
                 {photo("my_portrait_y.jpg")}, {photo("PORTRAIT_x.jpg")});
}

class VideoExtensionTest : public PlayListTest, public testing::WithParamInterface<const char *> {};

TEST_P(VideoExtensionTest, IsAVideo)
{
    const std::string name = std::string("clip") + GetParam();
    scan({name});

    expect_lists({video(name)}, {}, {}, {});
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

    expect_lists({}, {}, {photo(name)}, {});
}

INSTANTIATE_TEST_SUITE_P(Names, PhotoExtensionTest,
                         testing::Values(".jpg", ".jpeg", ".JPG", ".JpEg", ".j", ".jp"));

class IgnoredNameTest : public PlayListTest, public testing::WithParamInterface<const char *> {};

TEST_P(IgnoredNameTest, EntersNoList)
{
    scan({GetParam()});

    expect_lists({}, {}, {}, {});
}

INSTANTIATE_TEST_SUITE_P(Names, IgnoredNameTest,
                         testing::Values("readme", "readme.txt", "movie.mov", "picture.png",
                                         "a.smp4", "a.mp4x", "a.mp4.part", "a.srt", "a.sami"));

TEST_F(PlayListTest, OnlyTheLastExtensionCounts)
{
    scan({"a.jpg.mp4", "b.mp4.jpg"});

    expect_lists({video("a.jpg.mp4")}, {}, {photo("b.mp4.jpg")}, {});
}

TEST_F(PlayListTest, NamesThatStartWithADotAreLikeAnyOther)
{
    scan({".hidden.mp4", "...", "..mp4"});

    EXPECT_THAT(player_.m_vdcLandscapeVideos,
                ElementsAre(video(".hidden.mp4"), video("..."), video("..mp4")));
}

TEST_F(PlayListTest, FoldersAndLinksCountByTheirNamesLikeFiles)
{
    scan({"old.ts/", "clip.mp4@", "portrait_album.jpg/", "photo.jpeg@", "old.srt/", "folder/"});

    expect_lists({video("old.ts", "old.srt"), video("clip.mp4")}, {}, {photo("photo.jpeg")},
                 {photo("portrait_album.jpg")});
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

// A file called ".mp4" has an empty name, which every subtitle's name holds.
TEST_F(PlayListTest, AVideoWithoutANameGetsASubtitleAsAnyOther)
{
    EXPECT_EQ(subtitle_among({".mp4", "a.srt", "b.srt"}), "b.srt");
    EXPECT_EQ(subtitle_among({".mp4", "a_EngUS.srt", "b.srt"}), "a_EngUS.srt");
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

TEST_F(PlayListTest, NamesAreTheSameInATurkishLocale)
{
    const TurkishLocale locale;

    scan({"CLIP.AVI", "PORTRAIT_X.MP4", "PORTRAIT_Y.JPG", "CLIP.SMI", "PORTRAIT_X.SAMI"});

    expect_lists({video("CLIP.AVI", "CLIP.SMI")}, {video("PORTRAIT_X.MP4", "PORTRAIT_X.SAMI")}, {},
                 {photo("PORTRAIT_Y.JPG")});
}

// ---- m_InitPlayList ----

class InitPlayListTest : public PlayListTest {
  protected:
    InitPlayListTest()
    {
        fake_.rotator.supported = true;
        fake_.store.values[ConfigKey::DEMO_MODE] = 0x0102;
        player_.m_vdcPlayList = {item(0, "old.mp4")};
        player_.m_uiCurPlayIndex = 3;
    }

    // What is in the folder for one orientation.
    void fill(bool portrait, bool videos, bool photos)
    {
        const std::string prefix = portrait ? "portrait_" : "";
        auto &video_list = portrait ? player_.m_vdcPortraitVideos : player_.m_vdcLandscapeVideos;
        auto &photo_list = portrait ? player_.m_vdcPortraitPhotos : player_.m_vdcLandscapePhotos;
        if (videos)
            video_list = {item(0, prefix + "a.mp4"), item(0, prefix + "b.mp4")};
        if (photos)
            photo_list = {item(1, prefix + "c.jpg")};
    }

    // Which way the panel is to be turned, and after a while, when the other orientation has
    // content.
    void expect_turn(int file_mode)
    {
        EXPECT_EQ(player_.m_InitPlayList(), 0);

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", writes(ConfigKey::FILE_MODE, file_mode),
                                            "ecore_timer_add(0.8, controller)"));
        EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
        EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("old.mp4")));
    }

    void expect_nothing_to_play()
    {
        EXPECT_EQ(player_.m_InitPlayList(), -1);

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", writes(ConfigKey::PLAYBACK_STATUS, 2)));
        EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("old.mp4")));
    }
};

TEST_F(InitPlayListTest, InLandscapeTheListHasItsVideosAndThenItsPhotos)
{
    fill(false, true, true);
    fill(true, true, true);
    for (const auto type : {ROTATION_TYPE_LANDSCAPE, ROTATION_TYPE_LANDSCAPE_REVERSE}) {
        set_panel(type);

        EXPECT_EQ(player_.m_InitPlayList(), 1);

        EXPECT_THAT(player_.m_vdcPlayList,
                    ElementsAre(video("a.mp4"), video("b.mp4"), photo("c.jpg")));
        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"add landscape files in play list\""));
        EXPECT_EQ(player_.m_uiCurPlayIndex, 3U);
    }
}

TEST_F(InitPlayListTest, InPortraitTheListHasThePortraitFiles)
{
    fill(false, true, true);
    fill(true, true, true);
    for (const auto type : {ROTATION_TYPE_PORTRAIT, ROTATION_TYPE_PORTRAIT_REVERSE}) {
        set_panel(type);

        EXPECT_EQ(player_.m_InitPlayList(), 1);

        EXPECT_THAT(
            player_.m_vdcPlayList,
            ElementsAre(video("portrait_a.mp4"), video("portrait_b.mp4"), photo("portrait_c.jpg")));
        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"add portrait contents in play list\""));
    }
}

TEST_F(InitPlayListTest, PhotosAreContentToo)
{
    fill(false, false, true);

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(photo("c.jpg")));
}

TEST_F(InitPlayListTest, WithoutLandscapeContentThePanelIsTurnedToPortrait)
{
    fill(true, true, false);

    expect_turn(2);
}

TEST_F(InitPlayListTest, APhotoForTheOtherOrientationIsWorthATurn)
{
    fill(true, false, true);

    expect_turn(2);
}

TEST_F(InitPlayListTest, WithoutPortraitContentThePanelIsTurnedToLandscape)
{
    fill(false, true, true);
    set_panel(ROTATION_TYPE_PORTRAIT);

    expect_turn(1);
}

TEST_F(InitPlayListTest, ASetWithoutRotatorHasNothingToPlayThen)
{
    fake_.rotator.supported = false;
    fill(true, true, true);

    expect_nothing_to_play();
}

TEST_F(InitPlayListTest, WithoutAnyContentThereIsNothingToPlay)
{
    expect_nothing_to_play();
}

TEST_F(InitPlayListTest, WhenLeavingThePanelIsNotTurned)
{
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;
    fill(true, true, true);

    EXPECT_EQ(player_.m_InitPlayList(), 1);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_THAT(player_.m_vdcPlayList, ElementsAre(video("old.mp4")));
    EXPECT_EQ(player_.m_hRotationDelayTimer, nullptr);
}

TEST_F(PlayListTest, AnUnreadableSelectionCountsAsPlayAll)
{
    fake_.store.values.erase(ConfigKey::DEMO_MODE);
    fake_.rotator.supported = true;
    player_.m_vdcPortraitPhotos = {item(1, "portrait_c.jpg")};

    EXPECT_EQ(player_.m_InitPlayList(), 0);

    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::FILE_MODE, 2), "ecore_timer_add(0.8, controller)"));
}

TEST_F(PlayListTest, TheDelayTimerTurnsThePanel)
{
    fake_.rotator.supported = true;
    player_.m_vdcPortraitVideos = {item(0, "portrait_a.mp4")};
    ASSERT_EQ(player_.m_InitPlayList(), 0);
    fake_.forget();

    fake_.loop.advance(0.7);
    EXPECT_THAT(fake_.of({"VirtualKey"}), IsEmpty());
    fake_.loop.advance(0.1);

    EXPECT_THAT(fake_.of({"VirtualKey"}), LinesAre("VirtualKey_Send_KeyCode(569, 2)"));
    EXPECT_EQ(player_.m_hRotationDelayTimer, nullptr);
}

} // namespace
