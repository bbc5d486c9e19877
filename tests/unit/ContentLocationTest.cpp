#include "player_fixture.h"

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

    // The folders that were looked for, the built-in one and those on sticks.
    Lines looked_at() const { return fake_.of({"opendir", "stat"}); }
};

// ---- m_GetFolderPath ----

TEST_F(ContentLocationTest, WithoutFolderContentsModeTheBuiltInFolderIsUsed)
{
    player_.m_bFolderContentsPlayer = false;
    player_.m_bUsbLocation = true;
    player_.m_strFolderPath = "/demo/elsewhere/";
    fake_.storage.sticks = {"/media/a"};

    EXPECT_EQ(player_.m_GetFolderPath(), "/opt/data/demo_movie/");

    EXPECT_THAT(looked_at(), LinesAre("opendir(\"/opt/data/demo_movie/\")"));
}

TEST_F(ContentLocationTest, WithoutABuiltInFolderThereIsNone)
{
    fake_.fail("opendir");

    EXPECT_EQ(player_.m_GetFolderPath(), "");

    EXPECT_THAT(looked_at(), LinesAre("opendir(\"/opt/data/demo_movie/\")"));
}

// With a slash at its end or without one.
TEST_F(ContentLocationTest, WithFolderContentsModeTheLaunchFolderIsTakenAsItStands)
{
    player_.m_bFolderContentsPlayer = true;
    for (const char *folder : {"/demo/elsewhere/", "/demo/without-slash", ""}) {
        player_.m_strFolderPath = folder;
        EXPECT_EQ(player_.m_GetFolderPath(), folder);
    }

    EXPECT_THAT(looked_at(), IsEmpty());
}

// ---- m_GetPlaybackFolderPath ----

TEST_F(ContentLocationTest, TheFolderIsLookedForOnUsbStorage)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/demo");

    EXPECT_EQ(player_.m_GetFolderPath(), "/media/a/demo/");

    EXPECT_THAT(looked_at(), LinesAre("stat(\"/media/a/demo/\")"));
    EXPECT_EQ(fake_.logs().back(), "I \"path existed:/media/a/demo/\"");
    EXPECT_THAT(fake_.of({"usb_device_get_device_list"}),
                LinesAre("usb_device_get_device_list(8)"));
    EXPECT_NE(player_.m_hUsbDeviceList, nullptr);
}

TEST_F(ContentLocationTest, TheFirstStickThatHoldsTheFolderIsUsed)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a", "/media/b", "/media/c"};
    fake_.storage.add_folder("/media/b/demo");
    fake_.storage.add_folder("/media/c/demo");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/b/demo/");

    EXPECT_THAT(looked_at(), LinesAre("stat(\"/media/a/demo/\")", "stat(\"/media/b/demo/\")"));
    EXPECT_EQ(fake_.logs().back(), "I \"path existed:/media/b/demo/\"");
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

    // Nothing about the outcome: opening the folder will fail and tell.
    EXPECT_THAT(looked_at(), LinesAre("stat(\"/media/a/demo/\")", "stat(\"/media/b/demo/\")"));
    EXPECT_EQ(fake_.logs().back(), "I \"\"");
}

TEST_F(ContentLocationTest, AListThatBreaksOffEndsTheSearch)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a", "/media/b"};
    fake_.storage.add_folder("/media/b/demo");
    fake_.fail("usb_device_list_get_next");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "/media/a/demo/");

    EXPECT_THAT(looked_at(), LinesAre("stat(\"/media/a/demo/\")"));
}

TEST_F(ContentLocationTest, WithoutAnyStickThereIsNoFolder)
{
    use_usb("demo");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "");

    EXPECT_THAT(looked_at(), IsEmpty());
}

TEST_F(ContentLocationTest, AFirstStickThatCannotBeTakenIsNoFolder)
{
    use_usb("demo");
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/demo");
    fake_.fail("usb_device_list_get_first");

    EXPECT_EQ(player_.m_GetPlaybackFolderPath(), "");

    EXPECT_THAT(looked_at(), IsEmpty());
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

    EXPECT_THAT(fake_.all(),
                LinesAre("getResourcePath(\"org.tizen.video-player-tv\", \"pictures/a.png\")",
                         "freeResourcePath(\"/usr/share/a.png\")",
                         "I \"pictures/a.png path[/usr/share/a.png]\""));
}

TEST_F(ContentLocationTest, AMissingResourceYieldsAnEmptyPath)
{
    EXPECT_EQ(player_.m_GetResourcePath("none.png"), "");

    EXPECT_THAT(fake_.all(),
                LinesAre("getResourcePath(\"org.tizen.video-player-tv\", \"none.png\")",
                         "I \"none.png path[]\""));
}

// ---- m_SetFileMode, m_GetFileMode ----

/** A word in the store, a selection of one half of it, and the word with that selection. */
struct Half {
    int mode; /**< an ENDEMO_FILE_MODE, or what counts as one */
    ENDEMO_ROTATION_TYPE panel;
    int word;
    int selection;
    int stored = 0; /**< not looked at where a selection is read */
};

class FileModeTest : public ContentLocationTest, public testing::WithParamInterface<Half> {
  protected:
    FileModeTest()
    {
        set_panel(GetParam().panel);
        fake_.store.values[ConfigKey::DEMO_MODE] = GetParam().word;
    }

    const ENDEMO_FILE_MODE mode_ = static_cast<ENDEMO_FILE_MODE>(GetParam().mode);
};

class StoredSelectionTest : public FileModeTest {};

TEST_P(StoredSelectionTest, GoesToItsHalf)
{
    player_.m_SetFileMode(mode_, GetParam().selection);

    const bool upright = GetParam().panel % 2 == 1;
    const int effective = mode_ != ENDEMO_FILE_MODE_CURRENT ? GetParam().mode
                          : upright                         ? ENDEMO_FILE_MODE_PORTRAIT
                                                            : ENDEMO_FILE_MODE_LANDSCAPE;
    EXPECT_THAT(fake_.lines(), LinesAre("E \"eMode=" + std::to_string(effective) + " iMenuType=" +
                                            std::to_string(GetParam().stored) + "\"",
                                        writes(ConfigKey::DEMO_MODE, GetParam().stored)));
}

constexpr auto FLAT = ROTATION_TYPE_LANDSCAPE;
constexpr auto UPRIGHT = ROTATION_TYPE_PORTRAIT;

INSTANTIATE_TEST_SUITE_P(OfThePanel, StoredSelectionTest,
                         testing::Values(Half{0, FLAT, 0x0102, 3, 0x0103},
                                         Half{0, UPRIGHT, 0x0102, 3, 0x0302},
                                         Half{0, ROTATION_TYPE_LANDSCAPE_REVERSE, 0, 3, 0x0003},
                                         Half{0, ROTATION_TYPE_PORTRAIT_REVERSE, 0, 3, 0x0300}));

// Whatever is neither the panel nor portrait counts as landscape.
INSTANTIATE_TEST_SUITE_P(OfOneOrientation, StoredSelectionTest,
                         testing::Values(Half{1, UPRIGHT, 0x0102, 3, 0x0103},
                                         Half{2, FLAT, 0x0102, 3, 0x0302},
                                         Half{3, UPRIGHT, 0x0102, 3, 0x0103},
                                         Half{-1, UPRIGHT, 0x0102, 3, 0x0103}));

// A portrait selection is cut to its eight bits, a landscape one is not; the word keeps sixteen.
INSTANTIATE_TEST_SUITE_P(OfManyBits, StoredSelectionTest,
                         testing::Values(Half{1, FLAT, 0x0402, 0x123, 0x0523},
                                         Half{2, FLAT, 0x0402, 0x123, 0x2302},
                                         Half{1, FLAT, 0x12345678, 5, 0x5605},
                                         Half{2, FLAT, 0x12345678, 5, 0x0578},
                                         Half{1, FLAT, -2, 5, 0xFF05}, Half{2, FLAT, -2, 5, 0x05FE},
                                         Half{1, FLAT, 0, -2, -2}, Half{2, FLAT, 0, -2, 0xFE00}));

class ReadSelectionTest : public FileModeTest {};

TEST_P(ReadSelectionTest, ComesFromItsHalf)
{
    EXPECT_EQ(player_.m_GetFileMode(mode_), GetParam().selection);

    EXPECT_EQ(fake_.logs().back(), "E \"eMode=" + std::to_string(GetParam().mode) +
                                       " iMenuType=" + std::to_string(GetParam().selection) + "\"");
}

INSTANTIATE_TEST_SUITE_P(Words, ReadSelectionTest,
                         testing::Values(Half{0, FLAT, 0x0102, 2}, Half{0, UPRIGHT, 0x0102, 1},
                                         Half{1, UPRIGHT, 0x0500, 0}, Half{2, FLAT, 0x0500, 5},
                                         Half{3, UPRIGHT, 0x0102, 2}, Half{-1, FLAT, 0x0102, 2},
                                         Half{1, FLAT, 0x12345678, 0x78},
                                         Half{2, FLAT, 0x12345678, 0x56}, Half{1, FLAT, -2, 0xFE},
                                         Half{2, FLAT, -2, 0xFF}));

TEST_F(ContentLocationTest, PlayAllAndLeaveAreTheWholeWord)
{
    for (const int selection : {0, -1}) {
        fake_.store.values[ConfigKey::DEMO_MODE] = 0x0102;
        for (const auto mode :
             {ENDEMO_FILE_MODE_CURRENT, ENDEMO_FILE_MODE_LANDSCAPE, ENDEMO_FILE_MODE_PORTRAIT}) {
            fake_.forget();

            player_.m_SetFileMode(mode, selection);

            EXPECT_THAT(fake_.lines(), LinesAre(writes(ConfigKey::DEMO_MODE, selection)));
            EXPECT_EQ(player_.m_GetFileMode(mode), selection);
        }
    }
}

TEST_F(ContentLocationTest, AnUnreadableWordIsPlayAllAndNothingIsKeptOfIt)
{
    fake_.store.values.erase(ConfigKey::DEMO_MODE);
    EXPECT_EQ(player_.m_GetFileMode(ENDEMO_FILE_MODE_CURRENT), 0);

    player_.m_SetFileMode(ENDEMO_FILE_MODE_PORTRAIT, 3);
    EXPECT_EQ(fake_.store.get(ConfigKey::DEMO_MODE), 0x0300);
}

TEST_F(ContentLocationTest, ASelectionThatCannotBeStoredIsLost)
{
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0102;
    fake_.fail("vconf_set_int");

    player_.m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 3);

    EXPECT_EQ(fake_.lines().back(),
              "E \"SetConfigInt key db/ostrel-demo-player-tv/demo_mode,fail\"");
    EXPECT_EQ(fake_.store.get(ConfigKey::DEMO_MODE), 0x0102);
}

} // namespace
