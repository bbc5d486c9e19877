// The routes on a real PulseAudio server with two sinks that nobody hears: where streams go is told
// by the server's own tool. The settings are read once per process and the same in all tests.
#include <chrono>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "sound_route.h"
#include "store_support/scratch.h"

namespace {

using store_test::Child;
using testing::ElementsAre;
using testing::IsEmpty;

class RealSoundServer : public testing::Test {
  protected:
    void SetUp() override
    {
        store_test::write_file(scratch_ / "tv.conf",
                               "[sound]\ninternal_sink = speakers\nexternal_sink = hdmi\n");
        // The configuration of the machine stays out of it: "-n".
        server_ = std::make_unique<Child>(std::vector<std::string>{
            PULSEAUDIO, "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            "--disable-shm=yes", "--load=module-null-sink sink_name=speakers",
            "--load=module-null-sink sink_name=hdmi",
            "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket()});
        ASSERT_TRUE(wait_until([&] { return pactl({"info"}).first == 0; })) << server_->err_text();
        // Whichever sink the server likes better at its start.
        ASSERT_EQ(pactl({"set-default-sink", "speakers"}).first, 0);
    }

    void TearDown() override
    {
        streams_.clear();
        server_->signal(SIGTERM);
        server_->finish();
    }

    std::string socket() const { return scratch_ / "socket"; }

    /** Looks at a condition until it holds, taking in meanwhile what the server writes. */
    bool wait_until(const std::function<bool()> &condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline || !server_->read_some(20))
                return false;
        }
        return true;
    }

    /** Asks the server. @return the tool's exit status and what it wrote */
    static std::pair<int, std::string> pactl(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), PACTL);
        Child tool(arguments);
        const int status = tool.finish();
        return {status, tool.out_text()};
    }

    /** A program that plays silence, and is heard of by the server when this returns. */
    void play()
    {
        const size_t before = sinks_of_streams().size();
        streams_.push_back(std::make_unique<Child>(
            std::vector<std::string>{PACAT, "--raw", "--rate=8000", "--channels=1", "/dev/zero"}));
        ASSERT_TRUE(wait_until([&] { return sinks_of_streams().size() == before + 1; }));
    }

    static std::string default_sink()
    {
        std::string name = pactl({"get-default-sink"}).second;
        return name.substr(0, name.find('\n'));
    }

    /** Names of the sinks that the streams go to, in the order in which they began. */
    static std::vector<std::string> sinks_of_streams()
    {
        std::vector<std::string> names;
        std::istringstream streams(pactl({"list", "short", "sink-inputs"}).second);
        for (std::string line; std::getline(streams, line);) {
            std::istringstream fields(line);
            std::string stream, sink;
            fields >> stream >> sink;
            names.push_back(sink_name(sink));
        }
        return names;
    }

    static std::string sink_name(const std::string &index)
    {
        std::istringstream sinks(pactl({"list", "short", "sinks"}).second);
        for (std::string line; std::getline(sinks, line);) {
            std::istringstream fields(line);
            std::string number, name;
            fields >> number >> name;
            if (number == index)
                return name;
        }
        return "no sink";
    }

    const store_test::ScratchDir scratch_;
    const store_test::Environment conf_{"OSTREL_DEMO_TV_CONF", scratch_ / "tv.conf"};
    const store_test::Environment address_{"PULSE_SERVER", "unix:" + socket()};
    const store_test::Environment cookie_{"PULSE_COOKIE", scratch_ / "cookie"};
    const store_test::Environment home_{"HOME", scratch_.path()};
    const store_test::Environment runtime_{"XDG_RUNTIME_DIR", scratch_.path()};
    const store_test::Environment bus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
    const store_test::Environment display_{"DISPLAY"};
    std::unique_ptr<Child> server_;
    std::vector<std::unique_ptr<Child>> streams_;
};

TEST_F(RealSoundServer, RoutesMoveEveryStreamThatPlays)
{
    play();
    play();
    ASSERT_THAT(sinks_of_streams(), ElementsAre("speakers", "speakers"));
    int route = -1;
    EXPECT_EQ(sound_manager_get_speaker_selection(&route), 0);
    EXPECT_EQ(route, SOUND_SPEAKER_INTERNAL);

    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_EXTERNAL), 0);
    EXPECT_THAT(sinks_of_streams(), ElementsAre("hdmi", "hdmi"));
    EXPECT_EQ(default_sink(), "hdmi");
    EXPECT_EQ(sound_manager_get_speaker_selection(&route), 0);
    EXPECT_EQ(route, SOUND_SPEAKER_EXTERNAL);

    // What starts to play later follows the route in force.
    play();
    EXPECT_THAT(sinks_of_streams(), ElementsAre("hdmi", "hdmi", "hdmi"));

    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_INTERNAL), 0);
    EXPECT_THAT(sinks_of_streams(), ElementsAre("speakers", "speakers", "speakers"));
    EXPECT_EQ(default_sink(), "speakers");
}

TEST_F(RealSoundServer, RouteIsSwitchedWhileNothingPlays)
{
    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_EXTERNAL), 0);
    EXPECT_EQ(default_sink(), "hdmi");
    EXPECT_THAT(sinks_of_streams(), IsEmpty());
}

TEST_F(RealSoundServer, SinkThatWasUnpluggedIsRefusedAndWhatPlaysStaysWhereItIs)
{
    play();
    std::istringstream modules(pactl({"list", "short", "modules"}).second);
    std::string number;
    for (std::string line; std::getline(modules, line);) {
        if (line.find("sink_name=hdmi") != std::string::npos)
            number = line.substr(0, line.find('\t'));
    }
    ASSERT_EQ(pactl({"unload-module", number}).first, 0);
    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_EXTERNAL), -1);
    EXPECT_THAT(sinks_of_streams(), ElementsAre("speakers"));
    EXPECT_EQ(default_sink(), "speakers");
}

TEST_F(RealSoundServer, ServerThatEndedIsNoServerAndItsSuccessorIsFound)
{
    int route = -1;
    EXPECT_EQ(sound_manager_get_speaker_selection(&route), 0);
    server_->signal(SIGTERM);
    server_->finish();
    EXPECT_EQ(sound_manager_get_speaker_selection(&route), -1);
    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_EXTERNAL), -1);
    SetUp();
    EXPECT_EQ(sound_manager_set_speaker_selection(SOUND_SPEAKER_EXTERNAL), 0);
    EXPECT_EQ(default_sink(), "hdmi");
}

} // namespace
