// Which changes of a folder are changes of what is played.

#include <filesystem>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "content_watch/folder_state.h"
#include "store_support/scratch.h"

namespace {

namespace fs = std::filesystem;
using platform::folder_state;

class FolderStateTest : public testing::Test {
  protected:
    void SetUp() override
    {
        for (const char *name : {"a.mp4", "b.jpg", "a.srt", "readme.pdf"})
            store_test::write_file(folder_ / name, name);
    }

    /** Whether the folder counts as another one after this. */
    bool differs_after(const std::function<void()> &change) const
    {
        const auto before = folder_state(folder_.path());
        EXPECT_TRUE(before);
        change();
        return folder_state(folder_.path()) != before;
    }

    const store_test::ScratchDir folder_;
};

TEST_F(FolderStateTest, FilesThatArePlayedAndTheirSubtitlesCount)
{
    EXPECT_EQ(folder_state(folder_.path())->files, 3u);
    for (const char *name : {"c.mkv", "portrait_c.jpeg", "b.ass"})
        EXPECT_TRUE(differs_after([&] { store_test::write_file(folder_ / name, ""); })) << name;
}

TEST_F(FolderStateTest, OtherNamesDoNot)
{
    for (const char *name : {".a.mp4.Yx12aB", ".hidden", "c.png", "notes"})
        EXPECT_FALSE(differs_after([&] { store_test::write_file(folder_ / name, ""); })) << name;
    EXPECT_FALSE(differs_after([&] { store_test::write_file(folder_ / "readme.pdf", "more"); }));
}

TEST_F(FolderStateTest, NameSizeAndTimeOfAFileCount)
{
    EXPECT_TRUE(differs_after([&] { fs::rename(folder_ / "a.mp4", folder_ / "c.mp4"); }));
    EXPECT_TRUE(differs_after([&] { fs::remove(folder_ / "b.jpg"); }));
    const timespec times[2] = {{1, 0}, {1, 0}};
    const std::string film = folder_ / "c.mp4";
    EXPECT_TRUE(differs_after([&] { utimensat(AT_FDCWD, film.c_str(), times, 0); }));
    EXPECT_TRUE(differs_after([&] {
        std::ofstream(film, std::ios::app) << "more";
        utimensat(AT_FDCWD, film.c_str(), times, 0);
    }));
}

TEST_F(FolderStateTest, TheSameFilesInAnotherFolderAreTheSame)
{
    const store_test::ScratchDir other;
    fs::copy(folder_.path(), other.path());
    for (const auto &entry : fs::directory_iterator(folder_.path()))
        fs::last_write_time(other / entry.path().filename().string(), entry.last_write_time());
    EXPECT_EQ(folder_state(other.path()), folder_state(folder_.path()));
}

TEST_F(FolderStateTest, AFolderThatIsNotThereHasNone)
{
    EXPECT_FALSE(folder_state(folder_ / "missing"));
}

} // namespace
