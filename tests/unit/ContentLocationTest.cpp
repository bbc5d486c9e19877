#include "player_test.h"

using testing::IsEmpty;

namespace {

class ContentLocationTest : public PlayerTest {
  protected:
    void use_usb(const std::string &folder)
    {
        player_.m_bFolderContentsPlayer = true;
        player_.m_bUsbLocation = true;
        player_.m_strFolderPath = folder;
    }

    int stored_mode() { return fake_.store.get(ConfigKey::DEMO_MODE); }
    void store_mode(int word) { fake_.store.values[ConfigKey::DEMO_MODE] = word; }
};

constexpr auto CURRENT = ENDEMO_FILE_MODE_CURRENT;
constexpr auto LANDSCAPE = ENDEMO_FILE_MODE_LANDSCAPE;
constexpr auto PORTRAIT = ENDEMO_FILE_MODE_PORTRAIT;

// ---- m_GetFolderPath ----

TEST_F(ContentLocationTest, WithoutFolderContentsModeTheBuiltInFolderIsUsed)
{
    player_.m_bFolderContentsPlayer = false;
    player_.m_bUsbLocation = true;
    player_.m_strFolderPath = "/demo/elsewhere/";
    fake_.storage.sticks = {"/media/a"};

    EXPECT_EQ(player_.m_GetFolderPath(), "/opt/data/demo_movie/");

    EXPECT_THAT(fake_.of({"usb_"}), IsEmpty());
}

TEST_F(ContentLocationTest, WithFolderContentsModeTheLaunchFolderIsUsed)
{
    player_.m_bFolderContentsPlayer = true;
    player_.m_strFolderPath = "/demo/elsewhere/";

    EXPECT_EQ(player_.m_GetFolderPath(), "/demo/elsewhere/");
}

TEST_F(ContentLocationTest, ALaunchFolderIsTakenAsItStands)
{
    player_.m_bFolderContentsPlayer = true;
    player_.m_strFolderPath = "/demo/without-slash";

    EXPECT_EQ(player_.m_GetFolderPath(), "/demo/without-slash");
}

// ---- m_GetPlaybackFolderPath ----

TEST_F(ContentLocationTest, TheFolderIsLookedForOnUsbStorage)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/demo");

    EXPECT_EQ(player_.m_GetFolderPath(), "/media/a/demo/");

    EXPECT_THAT(fake_.of({"usb_"}), LinesAre("usb_device_get_device_list(8)"));
    EXPECT_NE(player_.m_hUsbDeviceList, nullptr);
    EXPECT_EQ(fake_.logs().back(), "I \"path existed:/media/a/demo/\"");
}

TEST_F(ContentLocationTest, TheFirstStickThatHoldsTheFolderIsUsed)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a", "/media/b", "/media/c"};
    fake_.storage.add_folder("/media/b/demo");
    fake_.storage.add_folder("/media/c/demo");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/b/demo/");

    EXPECT_THAT(fake_.of({"stat"}),
                LinesAre("stat(\"/media/a/demo/\")", "stat(\"/media/b/demo/\")"));
}

TEST_F(ContentLocationTest, AFileOfTheFoldersNameIsNotTheFolder)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a", "/media/b"};
    fake_.storage.add_file("/media/a/demo");
    fake_.storage.add_folder("/media/b/demo");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/b/demo/");
}

TEST_F(ContentLocationTest, WhenNoStickHoldsTheFolderTheLastCandidateIsReturned)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a", "/media/b"};

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/b/demo/");

    // One line for each look at a path, and nothing about the outcome.
    EXPECT_THAT(fake_.logs(), LinesAre("I \"\"", "I \"\""));
}

TEST_F(ContentLocationTest, WithoutAnyStickThereIsNoFolder)
{
    use_usb("demo");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "");
    EXPECT_THAT(fake_.logs(), IsEmpty());
}

TEST_F(ContentLocationTest, AFailedDeviceListIsLogged)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a"};
    fake_.fail("usb_device_get_device_list");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "");

    EXPECT_THAT(fake_.logs(), LinesAre("E \"failed\""));
}

TEST_F(ContentLocationTest, TheSticksAreListedAfreshEachTime)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a"};
    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/a/demo/");

    fake_.storage.sticks = {"/media/b"};

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/b/demo/");
}

// ---- m_GetResourcePath ----

TEST_F(ContentLocationTest, AResourceIsLookedUpAndReleased)
{
    fake_.system.resources["pictures/a.png"] = "/usr/share/a.png";

    EXPECT_EQ(player_.m_GetResourcePath("pictures/a.png"), "/usr/share/a.png");

    EXPECT_THAT(fake_.of({"getResourcePath", "freeResourcePath"}),
                LinesAre("getResourcePath(\"org.tizen.video-player-tv\", \"pictures/a.png\")",
                         "freeResourcePath(\"/usr/share/a.png\")"));
    EXPECT_THAT(fake_.logs(), LinesAre("I \"pictures/a.png path[/usr/share/a.png]\""));
}

TEST_F(ContentLocationTest, AMissingResourceYieldsAnEmptyPath)
{
    EXPECT_EQ(player_.m_GetResourcePath("none.png"), "");

    EXPECT_THAT(fake_.of({"freeResourcePath"}), IsEmpty());
    EXPECT_THAT(fake_.logs(), LinesAre("I \"none.png path[]\""));
}

// ---- m_SetFileMode ----

TEST_F(ContentLocationTest, ASelectionInPortraitGoesToTheUpperHalf)
{
    store_mode(0x0102);
    set_panel(ROTATION_TYPE_PORTRAIT);

    player_.m_SetFileMode(CURRENT, 3);

    EXPECT_EQ(stored_mode(), 0x0302);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=2 iMenuType=" + std::to_string(0x0302) + "\"",
                                        writes(ConfigKey::DEMO_MODE, 0x0302)));
}

TEST_F(ContentLocationTest, ASelectionInLandscapeGoesToTheLowerHalf)
{
    store_mode(0x0102);

    player_.m_SetFileMode(CURRENT, 3);

    EXPECT_EQ(stored_mode(), 0x0103);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=1 iMenuType=" + std::to_string(0x0103) + "\"",
                                        writes(ConfigKey::DEMO_MODE, 0x0103)));
}

TEST_F(ContentLocationTest, ANamedHalfIsWrittenWhateverThePanel)
{
    store_mode(0x0102);
    player_.m_SetFileMode(PORTRAIT, 5);
    EXPECT_EQ(stored_mode(), 0x0502);

    set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);
    player_.m_SetFileMode(LANDSCAPE, 7);
    EXPECT_EQ(stored_mode(), 0x0507);
}

TEST_F(ContentLocationTest, AnyOtherModeIsTakenForLandscape)
{
    store_mode(0x0102);

    player_.m_SetFileMode(static_cast<ENDEMO_FILE_MODE>(3), 3);

    EXPECT_EQ(stored_mode(), 0x0103);
    EXPECT_THAT(fake_.logs(), LinesAre("E \"eMode=3 iMenuType=" + std::to_string(0x0103) + "\""));
}

TEST_F(ContentLocationTest, PlayAllWipesBothHalves)
{
    for (const auto mode : {CURRENT, LANDSCAPE, PORTRAIT}) {
        store_mode(0x0102);
        fake_.forget();

        player_.m_SetFileMode(mode, 0);

        EXPECT_THAT(fake_.lines(), LinesAre(writes(ConfigKey::DEMO_MODE, 0)));
        EXPECT_EQ(player_.m_GetFileMode(CURRENT), 0);
        set_panel(ROTATION_TYPE_PORTRAIT);
        EXPECT_EQ(player_.m_GetFileMode(CURRENT), 0);
        set_panel(ROTATION_TYPE_LANDSCAPE);
    }
}

TEST_F(ContentLocationTest, LeavingIsStoredAsTheWholeWord)
{
    store_mode(0x0102);

    player_.m_SetFileMode(PORTRAIT, -1);

    EXPECT_THAT(fake_.lines(), LinesAre(writes(ConfigKey::DEMO_MODE, -1)));
}

TEST_F(ContentLocationTest, APortraitSelectionIsKeptToSixteenBits)
{
    store_mode(0x0002);

    player_.m_SetFileMode(PORTRAIT, 0x123);

    EXPECT_EQ(stored_mode(), 0x2302);
}

TEST_F(ContentLocationTest, ASelectionReplacesTheOldOneOfItsHalf)
{
    store_mode(0x0F0F);

    player_.m_SetFileMode(LANDSCAPE, 0x10);
    player_.m_SetFileMode(PORTRAIT, 0x20);

    EXPECT_EQ(stored_mode(), 0x2010);
}

// ---- m_GetFileMode ----

TEST_F(ContentLocationTest, EachHalfIsReadForItsOrientation)
{
    store_mode(0x0500);

    EXPECT_EQ(player_.m_GetFileMode(CURRENT), 0);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=0 iMenuType=0\""));

    set_panel(ROTATION_TYPE_PORTRAIT);
    EXPECT_EQ(player_.m_GetFileMode(CURRENT), 5);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=0 iMenuType=5\""));
}

TEST_F(ContentLocationTest, ANamedHalfIsReadWhateverThePanel)
{
    store_mode(0x0503);
    EXPECT_EQ(player_.m_GetFileMode(PORTRAIT), 5);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=2 iMenuType=5\""));

    set_panel(ROTATION_TYPE_PORTRAIT);
    EXPECT_EQ(player_.m_GetFileMode(LANDSCAPE), 3);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=1 iMenuType=3\""));
}

TEST_F(ContentLocationTest, AnyOtherModeReadsTheLandscapeHalf)
{
    store_mode(0x0503);
    set_panel(ROTATION_TYPE_PORTRAIT);

    EXPECT_EQ(player_.m_GetFileMode(static_cast<ENDEMO_FILE_MODE>(3)), 3);

    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=3 iMenuType=3\""));
}

TEST_F(ContentLocationTest, TheWholeWordsZeroAndMinusOneAreNeverSplit)
{
    for (const int word : {0, -1}) {
        store_mode(word);
        for (const auto mode : {CURRENT, LANDSCAPE, PORTRAIT})
            EXPECT_EQ(player_.m_GetFileMode(mode), word);
    }
    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(ContentLocationTest, ASelectionIsReadBack)
{
    player_.m_SetFileMode(LANDSCAPE, 200);
    player_.m_SetFileMode(PORTRAIT, 100);

    EXPECT_EQ(player_.m_GetFileMode(LANDSCAPE), 200);
    EXPECT_EQ(player_.m_GetFileMode(PORTRAIT), 100);
}

TEST_F(ContentLocationTest, AWordThatWasNeverStoredMeansPlayAll)
{
    fake_.store.values.erase(ConfigKey::DEMO_MODE);

    EXPECT_EQ(player_.m_GetFileMode(CURRENT), 0);

    EXPECT_EQ(fake_.logs().front(),
              "E \"GetConfigInt key [db/ostrel-demo-player-tv/demo_mode] faild\"");
}

} // namespace
