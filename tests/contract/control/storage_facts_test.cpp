// The list that a file stands in, told from its folder.
#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "control/storage_facts.h"
#include "store_support/scratch.h"
#include "turkish_locale.h"

namespace {

using platform::content_list_of;
using platform::ContentList;
using testing::UnorderedElementsAre;

class ContentListTest : public testing::Test {
  protected:
    void add(const std::string &name) { store_test::write_file(folder_ / name, "x"); }

    /** The list of a file, as if the player had made its list `seconds` after the last change. */
    std::optional<ContentList> list_of(const std::string &name, time_t seconds = 1,
                                       bool direct_backlight = false) const
    {
        struct stat status = {};
        stat(folder_.path().c_str(), &status);
        timespec made = status.st_ctim;
        made.tv_sec += seconds;
        return content_list_of(folder_ / name, direct_backlight, made);
    }

    std::vector<std::string> names(const std::string &of, bool direct_backlight = false) const
    {
        const auto list = list_of(of, 1, direct_backlight);
        return list ? list->names : std::vector<std::string>{"no list"};
    }

    const store_test::ScratchDir folder_;
};

TEST_F(ContentListTest, HoldsTheFilesOfOneOrientationVideosFirst)
{
    for (const char *name : {"b.jpg", "a.mp4", "portrait_c.mkv", "PORTRAIT_d.JPEG", "e.TS",
                             "notes.txt", "e.srt", "portrait.avi", "no extension"})
        add(name);
    const auto landscape = list_of("b.jpg");
    ASSERT_TRUE(landscape);
    EXPECT_FALSE(landscape->portrait);
    EXPECT_THAT(landscape->names, UnorderedElementsAre("a.mp4", "b.jpg", "e.TS", "portrait.avi"));
    EXPECT_EQ(landscape->videos, 3u);
    EXPECT_EQ(landscape->position, 3u) << "the one photo stands behind the videos";

    const auto portrait = list_of("portrait_c.mkv");
    ASSERT_TRUE(portrait);
    EXPECT_TRUE(portrait->portrait);
    EXPECT_THAT(portrait->names, UnorderedElementsAre("portrait_c.mkv", "PORTRAIT_d.JPEG"));
    EXPECT_EQ(portrait->position, 0u);
}

TEST_F(ContentListTest, CountsAsThePlayerCountsExtensions)
{
    for (const char *name : {"a.mp", "b.", ".hidden.mkv", "c.smp4", "d.mp4x", "e.jpe"})
        add(name);
    EXPECT_THAT(names("a.mp"), UnorderedElementsAre("a.mp", "b.", ".hidden.mkv", "e.jpe"));
    EXPECT_THAT(names("a.mp", true),
                UnorderedElementsAre("a.mp", "b.", ".hidden.mkv", "c.smp4", "e.jpe"));
}

TEST_F(ContentListTest, CountsNamesAlikeInATurkishLocale)
{
    for (const char *name : {"CLIP.AVI", "PORTRAIT_X.MP4"})
        add(name);
    const TurkishLocale locale;
    EXPECT_THAT(names("CLIP.AVI"), UnorderedElementsAre("CLIP.AVI"));
    EXPECT_THAT(names("PORTRAIT_X.MP4"), UnorderedElementsAre("PORTRAIT_X.MP4"));
}

TEST_F(ContentListTest, OrderIsThatOfTheDirectory)
{
    for (int i = 0; i < 40; ++i)
        add(std::to_string(i * 7919 % 1000) + ".mp4");
    std::vector<std::string> in_directory;
    for (const auto &entry : std::filesystem::directory_iterator(folder_.path()))
        in_directory.push_back(entry.path().filename());
    EXPECT_EQ(names(in_directory.front()), in_directory);
    const auto list = list_of(in_directory[17]);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->position, 17u);
}

TEST_F(ContentListTest, FolderThatWasChangedSinceTellsNothing)
{
    add("a.mp4");
    EXPECT_TRUE(list_of("a.mp4", 1));
    EXPECT_FALSE(list_of("a.mp4", 0));
    EXPECT_FALSE(list_of("a.mp4", -1));
}

TEST_F(ContentListTest, FilesThatWerePassedOverAreLeftOutWhenTheyAreGone)
{
    add("a.mp4");
    std::filesystem::create_symlink("nowhere", folder_ / "link.mp4");
    platform::StorageQuestion question;
    for (const char *name : {"a.mp4", "gone.mp4", "a.mp4/below.mp4", "link.mp4"})
        question.passed_over.push_back({folder_ / name, "rubbish"});

    const auto left = platform::read_storage(question).passed_over;

    ASSERT_TRUE(left);
    ASSERT_EQ(left->size(), 2u);
    EXPECT_EQ((*left)[0].path, folder_ / "a.mp4");
    EXPECT_EQ((*left)[1].path, folder_ / "link.mp4");
    EXPECT_EQ((*left)[1].why, "rubbish");
}

TEST_F(ContentListTest, FileThatIsNotThereOrInNoListTellsNothing)
{
    add("a.mp4");
    add("a.srt");
    EXPECT_FALSE(list_of("b.mp4"));
    EXPECT_FALSE(list_of("a.srt"));
    EXPECT_FALSE(list_of("nowhere/a.mp4"));
    EXPECT_FALSE(list_of(""));
    EXPECT_FALSE(content_list_of("", false, {}));
    EXPECT_FALSE(content_list_of("a.mp4", false, {}));
}

} // namespace
