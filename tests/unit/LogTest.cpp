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

    const fake::LogLine &last() const { return fake_.transcript.log_lines().back(); }

    // The numbers are those of the platform.
    void expect_last(int priority, int line, const std::string &colored_text)
    {
        EXPECT_EQ(last().priority, priority);
        EXPECT_EQ(last().raw,
                  "LogTest.cpp: TestBody(" + std::to_string(line) + ") > " + colored_text);
    }

    fake::Platform &fake_;
};

TEST_F(LogTest, EachLevelHasItsPriorityPrefixAndColor)
{
    LOGD("text %d of %s", 1, "two");
    expect_last(3, __LINE__ - 1, "\033[32mtext 1 of two\033[0m");
    LOGD("");
    expect_last(3, __LINE__ - 1, "\033[32m\033[0m");
    LOGI("text %d of %s", 1, "two");
    expect_last(4, __LINE__ - 1, "\033[32mtext 1 of two\033[0m");
    LOGI("");
    expect_last(4, __LINE__ - 1, "\033[32m\033[0m");
    LOGW("text %d of %s", 1, "two");
    expect_last(5, __LINE__ - 1, "\033[33mtext 1 of two\033[0m");
    LOGW("");
    expect_last(5, __LINE__ - 1, "\033[33m\033[0m");
    LOGE("text %d of %s", 1, "two");
    expect_last(6, __LINE__ - 1, "\033[31mtext 1 of two\033[0m");
    LOGE("");
    expect_last(6, __LINE__ - 1, "\033[31m\033[0m");
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
