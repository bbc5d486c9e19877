#include "player/util/Log.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"

namespace {

class LogTest : public testing::Test {
  protected:
    LogTest() : fake_(fake::reset()) {}

    // One line with a text and one without, written one behind the other. The numbers are those of
    // the platform.
    void expect_both(int priority, int first_line, const std::string &color)
    {
        const std::vector<fake::LogLine> &lines = fake_.transcript.log_lines();
        ASSERT_EQ(lines.size(), 2U);
        const std::string texts[] = {"text 1 of two", ""};
        for (size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(lines[i].priority, priority);
            EXPECT_EQ(lines[i].raw, "LogTest.cpp: TestBody(" +
                                        std::to_string(first_line + static_cast<int>(i)) + ") > " +
                                        color + texts[i] + "\033[0m");
        }
        fake_.forget();
    }

    fake::Platform &fake_;
};

TEST_F(LogTest, EachLevelHasItsPriorityPrefixAndColor)
{
    LOGD("text %d of %s", 1, "two");
    LOGD("");
    expect_both(3, __LINE__ - 2, "\033[32m");
    LOGI("text %d of %s", 1, "two");
    LOGI("");
    expect_both(4, __LINE__ - 2, "\033[32m");
    LOGW("text %d of %s", 1, "two");
    LOGW("");
    expect_both(5, __LINE__ - 2, "\033[33m");
    LOGE("text %d of %s", 1, "two");
    LOGE("");
    expect_both(6, __LINE__ - 2, "\033[31m");
}

TEST_F(LogTest, LinesKeepTheirOrder)
{
    LOGD("one");
    LOGI("two");
    LOGW("three");
    LOGE("four");

    EXPECT_THAT(fake_.logs(), LinesAre("D \"one\"", "I \"two\"", "W \"three\"", "E \"four\""));
}

TEST_F(LogTest, TheBaseNameIsWhatFollowsTheLastSlash)
{
    EXPECT_STREQ(LogBaseName("/a/b/File.cpp"), "File.cpp");
    EXPECT_STREQ(LogBaseName("File.cpp"), "File.cpp");
    EXPECT_STREQ(LogBaseName("folder/"), "");
    EXPECT_STREQ(LogBaseName(""), "");
}

} // namespace
