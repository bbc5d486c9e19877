#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "settings/settings.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

using platform::Settings;
using store_test::CapturedLog;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class SettingsFile : public testing::Test {
  protected:
    Settings read(const std::string &text)
    {
        store_test::write_file(path_, text);
        const CapturedLog log;
        Settings settings = Settings::read(path_);
        log_ = log.text();
        return settings;
    }

    // What a warning about a line of the file begins with.
    std::string at(int line) const { return path_ + ":" + std::to_string(line) + ": "; }

    store_test::ScratchDir scratch_;
    store_test::Environment state_{"OSTREL_DEMO_STATE_DIR", "/state"};
    store_test::Environment runtime_{"OSTREL_DEMO_RUNTIME_DIR", "/runtime"};
    const std::string path_ = scratch_ / "tv.conf";
    std::string log_;
};

void expect_defaults(const Settings &settings)
{
    EXPECT_FALSE(settings.rotator);
    EXPECT_DOUBLE_EQ(settings.turning_time_s, 3.0);
    EXPECT_EQ(settings.first_rotation_state, 1);
    EXPECT_DOUBLE_EQ(settings.sdr_white, 203);
    EXPECT_FALSE(settings.skip_broken_videos);
    EXPECT_FALSE(settings.follow_folder);
    EXPECT_FALSE(settings.follow_sticks);
    EXPECT_FALSE(settings.disclaimer);
    EXPECT_EQ(settings.store_content_type, 0);
    EXPECT_EQ(settings.menu_orientation, "");
    EXPECT_THAT(settings.usb_mounts, IsEmpty());
    EXPECT_EQ(settings.internal_sink, "");
    EXPECT_EQ(settings.external_sink, "");
    EXPECT_THAT(settings.keys, IsEmpty());
    EXPECT_EQ(settings.language, "");
}

TEST_F(SettingsFile, MissingFileLeavesTheDefaultsSilently)
{
    const CapturedLog log;
    expect_defaults(Settings::read(scratch_ / "no-such-file"));
    EXPECT_EQ(log.text(), "");
}

TEST_F(SettingsFile, EmptyFileLeavesTheDefaultsSilently)
{
    expect_defaults(read(""));
    EXPECT_EQ(log_, "");
}

TEST_F(SettingsFile, EveryKeyIsRead)
{
    const Settings settings = read("[panel]\n"
                                   "rotator = yes\n"
                                   "turning_time_s = 0.25\n"
                                   "first_rotation_state = 2\n"
                                   "[picture]\n"
                                   "sdr_white = 100.5\n"
                                   "[content]\n"
                                   "broken_video = skip\n"
                                   "[product]\n"
                                   "disclaimer = on\n"
                                   "store_content_type = 1\n"
                                   "menu_orientation = rtl\n"
                                   "[usb]\n"
                                   "mounts = /media/a:/media/b/\n"
                                   "[sound]\n"
                                   "internal_sink = speakers\n"
                                   "external_sink = hdmi\n"
                                   "[keys]\n"
                                   "F9 = XF86PanelEnter\n"
                                   "[language]\n"
                                   "language = ko_KR\n");
    EXPECT_TRUE(settings.rotator);
    EXPECT_DOUBLE_EQ(settings.turning_time_s, 0.25);
    EXPECT_EQ(settings.first_rotation_state, 2);
    EXPECT_DOUBLE_EQ(settings.sdr_white, 100.5);
    EXPECT_TRUE(settings.skip_broken_videos);
    EXPECT_TRUE(settings.disclaimer);
    EXPECT_EQ(settings.store_content_type, 1);
    EXPECT_EQ(settings.menu_orientation, "rtl");
    EXPECT_THAT(settings.usb_mounts, ElementsAre("/media/a", "/media/b"));
    EXPECT_EQ(settings.internal_sink, "speakers");
    EXPECT_EQ(settings.external_sink, "hdmi");
    EXPECT_THAT(settings.keys, ElementsAre(Pair("F9", "XF86PanelEnter")));
    EXPECT_EQ(settings.language, "ko_KR");
    EXPECT_EQ(log_, "");
}

TEST_F(SettingsFile, NumbersAreReadUpToTheirLimits)
{
    const Settings lowest =
        read("[panel]\nturning_time_s = 0\nfirst_rotation_state = 0\n"
             "[picture]\nsdr_white = 80\n[product]\nstore_content_type = -2147483648\n");
    EXPECT_EQ(lowest.turning_time_s, 0.0);
    EXPECT_EQ(lowest.first_rotation_state, 0);
    EXPECT_EQ(lowest.sdr_white, 80);
    EXPECT_EQ(lowest.store_content_type, INT32_MIN);
    EXPECT_EQ(log_, "");
    const Settings highest =
        read("[panel]\nturning_time_s = 600\nfirst_rotation_state = 3\n"
             "[picture]\nsdr_white = 1000\n[product]\nstore_content_type = 2147483647\n");
    EXPECT_EQ(highest.turning_time_s, 600.0);
    EXPECT_EQ(highest.first_rotation_state, 3);
    EXPECT_EQ(highest.sdr_white, 1000);
    EXPECT_EQ(highest.store_content_type, INT32_MAX);
    EXPECT_EQ(log_, "");
}

TEST_F(SettingsFile, MountsMayBeRepeatedAndHoldColons)
{
    const Settings settings = read("[usb]\nmounts = /media/a:b\nmounts = /media/c:/media/d e\n");
    EXPECT_THAT(settings.usb_mounts, ElementsAre("/media/a:b", "/media/c", "/media/d e"));
}

TEST_F(SettingsFile, LongLineIsReadWhole)
{
    const std::string path = "/" + std::string(5000, 'x');
    EXPECT_THAT(read("[usb]\nmounts = " + path + "\n[panel]\nrotator=yes").usb_mounts,
                ElementsAre(path));
    EXPECT_EQ(log_, "");
}

struct BadValue {
    const char *section;
    const char *line;
    const char *key;
};

// The name that a case has in the list of tests.
void PrintTo(const BadValue &bad, std::ostream *out)
{
    *out << bad.section << " " << bad.line;
}

class SettingsBadValue : public SettingsFile, public testing::WithParamInterface<BadValue> {};

TEST_P(SettingsBadValue, IsNamedWithFileLineAndKeyAndLeavesTheDefault)
{
    const BadValue &bad = GetParam();
    const Settings settings =
        read(std::string("; comment\n\n[") + bad.section + "]\n" + bad.line + "\n");
    expect_defaults(settings);
    EXPECT_THAT(log_, HasSubstr(at(4) + "[" + bad.section + "] " + bad.key + ": "));
    EXPECT_EQ(log_.substr(0, 2), "W/");
}

INSTANTIATE_TEST_SUITE_P(
    All, SettingsBadValue,
    testing::Values(BadValue{"panel", "rotator = perhaps", "rotator"},
                    BadValue{"panel", "turning_time_s = -1", "turning_time_s"},
                    BadValue{"panel", "turning_time_s = nan", "turning_time_s"},
                    BadValue{"panel", "turning_time_s = 600.1", "turning_time_s"},
                    BadValue{"panel", "turning_time_s = 3s", "turning_time_s"},
                    BadValue{"picture", "sdr_white = 79", "sdr_white"},
                    BadValue{"picture", "sdr_white = 1001", "sdr_white"},
                    BadValue{"content", "broken_video = maybe", "broken_video"},
                    BadValue{"panel", "turning_time_s =", "turning_time_s"},
                    BadValue{"panel", "first_rotation_state = 4", "first_rotation_state"},
                    BadValue{"panel", "first_rotation_state = -1", "first_rotation_state"},
                    BadValue{"product", "disclaimer = 2", "disclaimer"},
                    BadValue{"product", "store_content_type = 2147483648", "store_content_type"},
                    BadValue{"product", "store_content_type = 0x1", "store_content_type"},
                    BadValue{"product", "menu_orientation = down", "menu_orientation"},
                    BadValue{"usb", "mounts = media/stick", "mounts"},
                    BadValue{"keys", "F9 =", "F9"},
                    BadValue{"language", "language = Korean", "language"},
                    BadValue{"language", "language = ko-KR", "language"},
                    BadValue{"panel", "rotater = yes", "rotater"},
                    BadValue{"panels", "rotator = yes", "rotator"}));

TEST_F(SettingsFile, WarningNamesTheLineBehindALongOne)
{
    read("[usb]\nmounts = /" + std::string(3000, 'x') + "\n[panel]\nrotator = perhaps\n");
    EXPECT_THAT(log_, HasSubstr(at(4)));
}

TEST_F(SettingsFile, LineThatIsNeitherSectionNorValueIsNamedAndTheRestRead)
{
    EXPECT_TRUE(read("[panel]\nnonsense\nrotator = yes\n").rotator);
    EXPECT_THAT(log_, HasSubstr(at(2)));
}

TEST_F(SettingsFile, FolderOrPipeInTheFilesPlaceLeavesTheDefaults)
{
    const CapturedLog log;
    expect_defaults(Settings::read(scratch_.path()));
    ASSERT_EQ(mkfifo((scratch_ / "pipe").c_str(), 0600), 0);
    expect_defaults(Settings::read(scratch_ / "pipe"));
    EXPECT_THAT(log.text(), HasSubstr(scratch_.path() + " cannot be read"));
    EXPECT_THAT(log.text(), HasSubstr("pipe cannot be read"));
}

TEST_F(SettingsFile, BinaryRubbishLeavesTheDefaults)
{
    std::string rubbish;
    for (int i = 0; i < 20000; ++i)
        rubbish += static_cast<char>(i * 7919 >> 3);
    expect_defaults(read(rubbish));
}

TEST_F(SettingsFile, FileLargerThanAMebibyteIsRefused)
{
    std::string text = "[panel]\nrotator = yes\n";
    text.resize(size_t{1024} * 1024, '\n');
    EXPECT_TRUE(read(text).rotator);
    EXPECT_EQ(log_, "");
    expect_defaults(read(text + "\n"));
    EXPECT_THAT(log_, HasSubstr("larger than 1 MiB"));
}

TEST_F(SettingsFile, ExampleHoldsOnlyTheDefaults)
{
    const CapturedLog log;
    expect_defaults(Settings::read(EXAMPLE_TV_CONF));
    EXPECT_EQ(log.text(), "");
}

TEST_F(SettingsFile, KioskPassesOverBrokenVideosFollowsItsContentAndIsElseAsUsual)
{
    const CapturedLog log;
    Settings settings = Settings::read(KIOSK_TV_CONF);
    for (bool *const differs :
         {&settings.skip_broken_videos, &settings.follow_folder, &settings.follow_sticks})
        EXPECT_TRUE(std::exchange(*differs, false));
    expect_defaults(settings);
    EXPECT_EQ(log.text(), "");
}

// With its lines taken out of the comments, every key of the example is a key we know.
TEST_F(SettingsFile, ExampleNamesNoUnknownKey)
{
    std::istringstream lines(store_test::read_file(EXAMPLE_TV_CONF));
    std::string uncommented;
    int keys = 0;
    for (std::string line; std::getline(lines, line); uncommented += line + "\n") {
        // Prose has a blank behind its semicolon.
        if (line.size() > 1 && line[0] == ';' && line[1] != ' ') {
            line.erase(0, 1);
            ++keys;
        }
    }
    const Settings settings = read(uncommented);
    EXPECT_EQ(keys, 15);
    EXPECT_EQ(settings.usb_mounts.size(), 2u);
    EXPECT_EQ(settings.language, "ko_KR");
    EXPECT_EQ(log_, "");
}

} // namespace
