#include "player_fixture.h"

#include <optional>

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

// Each mode with each panel, each word in the store and each selection. No word means that the key
// cannot be read, which leaves zero.
class FileModeTest : public ContentLocationTest,
                     public testing::WithParamInterface<std::tuple<int, int>> {
  protected:
    FileModeTest() { set_panel(panel()); }

    static ENDEMO_FILE_MODE mode()
    {
        return static_cast<ENDEMO_FILE_MODE>(std::get<0>(GetParam()));
    }
    static ENDEMO_ROTATION_TYPE panel()
    {
        return static_cast<ENDEMO_ROTATION_TYPE>(std::get<1>(GetParam()));
    }
    static bool upright()
    {
        return panel() == ROTATION_TYPE_PORTRAIT || panel() == ROTATION_TYPE_PORTRAIT_REVERSE;
    }

    void store(std::optional<int> word)
    {
        if (word)
            fake_.store.values[ConfigKey::DEMO_MODE] = *word;
        else
            fake_.store.values.erase(ConfigKey::DEMO_MODE);
        fake_.forget();
    }

    static Lines told(int mode, int number)
    {
        return {"E \"eMode=" + std::to_string(mode) + " iMenuType=" + std::to_string(number) +
                "\""};
    }

    const std::vector<std::optional<int>> words_ = {
        std::nullopt, 0, -1, 1, 0x0102, 0x0500, 0x0005, 0x0F0F, 0xFFFF, 0x12345678, -2};
};

TEST_P(FileModeTest, ASelectionGoesToItsHalf)
{
    const int effective = mode() != 0 ? mode() : upright() ? 2 : 1;
    for (const std::optional<int> word : words_) {
        for (const int selection : {1, 2, 3, 0x10, 0xFF, 0x123, -2}) {
            SCOPED_TRACE(testing::Message()
                         << "word " << word.value_or(0) << " selection " << selection);
            store(word);

            player_.m_SetFileMode(mode(), selection);

            const auto old = static_cast<unsigned int>(word.value_or(0));
            const auto chosen = static_cast<unsigned int>(selection);
            const auto stored = static_cast<int>(
                effective == 2 ? chosen % 0x100 * 0x100 + old % 0x100 : chosen | (old & 0xFF00));
            EXPECT_EQ(fake_.lines(),
                      join({told(effective, stored), {writes(ConfigKey::DEMO_MODE, stored)}}));
        }
    }
}

TEST_P(FileModeTest, PlayAllAndLeaveReplaceTheWholeWord)
{
    for (const std::optional<int> word : words_) {
        for (const int selection : {0, -1}) {
            store(word);

            player_.m_SetFileMode(mode(), selection);

            EXPECT_THAT(fake_.lines(), LinesAre(writes(ConfigKey::DEMO_MODE, selection)));
        }
    }
}

TEST_P(FileModeTest, ASelectionIsReadFromItsHalf)
{
    const bool upper = mode() == 2 || (mode() == 0 && upright());
    for (const std::optional<int> word : words_) {
        SCOPED_TRACE(testing::Message() << "word " << word.value_or(0));
        store(word);

        const int read = player_.m_GetFileMode(mode());

        EXPECT_THAT(fake_.lines(), IsEmpty());
        if (word.value_or(0) == 0 || word.value_or(0) == -1) {
            EXPECT_EQ(read, word.value_or(0));
            continue;
        }
        const auto number = static_cast<unsigned int>(*word);
        const auto half = static_cast<int>((upper ? number / 0x100 : number) % 0x100);
        EXPECT_EQ(read, half);
        EXPECT_EQ(fake_.logs().back(), told(mode(), half).front());
    }
}

TEST_P(FileModeTest, ASelectionThatCannotBeStoredIsLost)
{
    store(0x0102);
    fake_.fail("vconf_set_int");

    player_.m_SetFileMode(mode(), 3);

    EXPECT_EQ(fake_.lines().back(),
              "E \"SetConfigInt key db/ostrel-demo-player-tv/demo_mode,fail\"");
    EXPECT_EQ(fake_.store.get(ConfigKey::DEMO_MODE), 0x0102);
}

INSTANTIATE_TEST_SUITE_P(ModesAndPanels, FileModeTest,
                         testing::Combine(testing::Values(0, 1, 2, 3, -1),
                                          testing::Values(0, 1, 2, 3)));

TEST_F(ContentLocationTest, ASelectionReplacesTheOldOneOfItsHalf)
{
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0102;

    player_.m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 3);
    EXPECT_EQ(fake_.store.get(ConfigKey::DEMO_MODE), 0x0103);

    set_panel(ROTATION_TYPE_PORTRAIT);
    player_.m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 3);
    EXPECT_EQ(fake_.store.get(ConfigKey::DEMO_MODE), 0x0303);
    EXPECT_EQ(player_.m_GetFileMode(ENDEMO_FILE_MODE_CURRENT), 3);

    player_.m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 0);
    for (const auto mode :
         {ENDEMO_FILE_MODE_CURRENT, ENDEMO_FILE_MODE_LANDSCAPE, ENDEMO_FILE_MODE_PORTRAIT})
        EXPECT_EQ(player_.m_GetFileMode(mode), 0) << mode;
}

} // namespace
