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

    fake::Platform &fake_;
};

TEST_F(LogTest, EachLevelHasItsColorAndPrefix)
{
    const int line = __LINE__ + 1;
    LOGI("text %d of %s", 1, "two");

    const std::string prefix = "LogTest.cpp: TestBody(" + std::to_string(line) + ") > ";
    EXPECT_EQ(last().raw, prefix + "\033[32mtext 1 of two\033[0m");
    EXPECT_EQ(last().priority, DLOG_INFO);
}

TEST_F(LogTest, DebugIsGreen)
{
    LOGD("d");

    EXPECT_NE(last().raw.find(") > \033[32md\033[0m"), std::string::npos) << last().raw;
    EXPECT_EQ(last().priority, DLOG_DEBUG);
}

TEST_F(LogTest, WarningIsYellow)
{
    LOGW("w");

    EXPECT_NE(last().raw.find(") > \033[33mw\033[0m"), std::string::npos) << last().raw;
    EXPECT_EQ(last().priority, DLOG_WARN);
}

TEST_F(LogTest, ErrorIsRed)
{
    LOGE("e");

    EXPECT_NE(last().raw.find(") > \033[31me\033[0m"), std::string::npos) << last().raw;
    EXPECT_EQ(last().priority, DLOG_ERROR);
}

TEST_F(LogTest, AnEmptyTextStillHasPrefixAndColor)
{
    LOGD("");

    EXPECT_NE(last().raw.find(": TestBody("), std::string::npos) << last().raw;
    EXPECT_NE(last().raw.find(") > \033[32m\033[0m"), std::string::npos) << last().raw;
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
