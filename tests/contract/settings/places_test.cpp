#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>

#include "settings/places.h"
#include "settings/settings.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

using store_test::CapturedLog;
using store_test::Environment;
using testing::EndsWith;
using testing::HasSubstr;

/** The home folder in the user's entry; a user without an entry when null. */
char *home_in_entry = nullptr;

} // namespace

// The linker sends the calls of this program's own objects here.
extern "C" int __wrap_getpwuid_r(uid_t, passwd *entry, char *, size_t, passwd **found);

int __wrap_getpwuid_r(uid_t, passwd *entry, char *, size_t, passwd **found)
{
    entry->pw_dir = home_in_entry;
    *found = home_in_entry ? entry : nullptr;
    return 0;
}

namespace {

class Places : public testing::Test {
  protected:
    store_test::ScratchDir scratch_;
    Environment conf_{"OSTREL_DEMO_TV_CONF"};
    Environment state_{"OSTREL_DEMO_STATE_DIR"};
    Environment runtime_{"OSTREL_DEMO_RUNTIME_DIR"};
    Environment resource_{"OSTREL_DEMO_RESOURCE_DIR"};
    Environment config_home_{"XDG_CONFIG_HOME"};
    Environment state_home_{"XDG_STATE_HOME"};
    Environment runtime_home_{"XDG_RUNTIME_DIR"};
    Environment home_{"HOME", scratch_ / "home"};
};

TEST_F(Places, StateFollowsOurVariableThenXdgThenHome)
{
    EXPECT_EQ(platform::find_state_dir(), scratch_ / "home/.local/state/ostrel-demo-player-tv");
    const Environment xdg("XDG_STATE_HOME", "/xdg/state/");
    EXPECT_EQ(platform::find_state_dir(), "/xdg/state/ostrel-demo-player-tv");
    const Environment own("OSTREL_DEMO_STATE_DIR", "/own/state/");
    EXPECT_EQ(platform::find_state_dir(), "/own/state");
}

TEST_F(Places, RelativeXdgVariableIsIgnored)
{
    const Environment xdg("XDG_STATE_HOME", "state");
    EXPECT_EQ(platform::find_state_dir(), scratch_ / "home/.local/state/ostrel-demo-player-tv");
}

TEST_F(Places, WithoutHomeTheUsersEntryNamesIt)
{
    const Environment home("HOME");
    std::string named = "/somewhere/";
    home_in_entry = named.data();
    EXPECT_EQ(platform::find_state_dir(), "/somewhere/.local/state/ostrel-demo-player-tv");
    named = "nowhere";
    EXPECT_EQ(platform::find_state_dir(), "/var/lib/ostrel-demo-player-tv");
    home_in_entry = nullptr;
    EXPECT_EQ(platform::find_state_dir(), "/var/lib/ostrel-demo-player-tv");
}

TEST_F(Places, RelativeOwnVariableBecomesAbsolute)
{
    const Environment own("OSTREL_DEMO_STATE_DIR", "state");
    EXPECT_EQ(platform::find_state_dir(), std::filesystem::current_path().string() + "/state");
}

TEST_F(Places, RuntimeFollowsOurVariableThenXdg)
{
    const Environment xdg("XDG_RUNTIME_DIR", "/xdg/run");
    EXPECT_EQ(platform::find_runtime_dir(), "/xdg/run/ostrel-demo-player-tv");
    const Environment own("OSTREL_DEMO_RUNTIME_DIR", "/own/run");
    EXPECT_EQ(platform::find_runtime_dir(), "/own/run");
}

TEST_F(Places, RuntimeWithoutXdgIsPrivateToTheUser)
{
    const std::string path = platform::find_runtime_dir();
    struct stat status = {};
    ASSERT_EQ(lstat(path.c_str(), &status), 0) << path;
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_uid, geteuid());
    EXPECT_EQ(status.st_mode & 0022, 0u);
    EXPECT_EQ(path, "/tmp/ostrel-demo-player-tv-" + std::to_string(getuid()));
}

TEST_F(Places, ConfigurationIsTheUsersOrTheNamedOne)
{
    const std::string users = scratch_ / "home/.config/ostrel-demo-player-tv/tv.conf";
    store_test::write_file(users, "");
    EXPECT_EQ(platform::find_tv_conf(), users);

    const Environment named("OSTREL_DEMO_TV_CONF", scratch_ / "other.conf");
    const CapturedLog log;
    EXPECT_EQ(platform::find_tv_conf(), scratch_ / "other.conf");
    EXPECT_THAT(log.text(), HasSubstr("which is not there"));
}

TEST_F(Places, ResourcesAreTheNamedOrTheInstalledOnes)
{
    EXPECT_THAT(platform::find_resource_dir(), EndsWith("/ostrel-demo-player-tv"));
    const Environment own("OSTREL_DEMO_RESOURCE_DIR", scratch_ / "res/");
    EXPECT_EQ(platform::find_resource_dir(), scratch_ / "res");
}

TEST_F(Places, SettingsHoldThePlaces)
{
    const Environment state("OSTREL_DEMO_STATE_DIR", "/s");
    const Environment runtime("OSTREL_DEMO_RUNTIME_DIR", "/r");
    const Environment resource("OSTREL_DEMO_RESOURCE_DIR", "/d");
    const platform::Settings settings = platform::Settings::read("");
    EXPECT_EQ(settings.state_dir, "/s");
    EXPECT_EQ(settings.runtime_dir, "/r");
    EXPECT_EQ(settings.resource_dir, "/d");
}

} // namespace
