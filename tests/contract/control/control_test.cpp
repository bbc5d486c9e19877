// tvctl and the control service, from one process to another over a real bus.
#include <string>

#include "control_fixture.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Control : public ControlFixture {
  protected:
    void SetUp() override { start_player(); }
};

TEST_F(Control, KeyIsPressedByTheSetsName)
{
    EXPECT_EQ(tvctl({"key", "XF86RaiseChannel"}).status, 0);
    EXPECT_TRUE(player_says("key XF86RaiseChannel"));
}

TEST_F(Control, UnknownKeyIsRefusedWithTheNearestName)
{
    const Outcome outcome = tvctl({"key", "AudioPlya"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("no key \"AudioPlya\"; is it XF86AudioPlay?"));
    EXPECT_EQ(tvctl({"key", "xf86back"}).err,
              "tvctl: the set has no key \"xf86back\"; is it XF86Back?\n");
    EXPECT_EQ(tvctl({"key", "certainly not a key"}).err,
              "tvctl: the set has no key \"certainly not a key\"\n");
    EXPECT_EQ(tvctl({"key", std::string(5000, 'x')}).status, 1);
    for (const char *bad : {"\xFF", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_EQ(tvctl({"key", bad}).err, "tvctl: the argument is no valid text\n");
    EXPECT_EQ(tvctl({"key", ""}).status, 1);
    EXPECT_EQ(player_->out_text(), "");
}

TEST_F(Control, PanelIsTurned)
{
    EXPECT_EQ(tvctl({"panel", "portrait"}).status, 0);
    EXPECT_TRUE(player_says("panel 90"));
    EXPECT_EQ(tvctl({"panel", "portrait"}).status, 0) << "it stands there already";
    EXPECT_EQ(tvctl({"panel", "landscape-reverse"}).status, 0);
    EXPECT_TRUE(player_says("panel 180"));
}

TEST_F(Control, PowerEventIsRaisedAndTheCallerAnsweredThoughThePlayerEnds)
{
    EXPECT_EQ(tvctl({"power", "standby"}).status, 0);
    EXPECT_TRUE(player_says("power standby"));
    EXPECT_EQ(tvctl({"power", "off"}).status, 0);
    EXPECT_TRUE(player_says("power off"));
    EXPECT_EQ(player_->finish(), 0) << player_->err_text();
    const Outcome outcome = tvctl({"power", "off"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.err, "tvctl: no player is running in this login\n");
}

TEST_F(Control, LanguageIsChangedAndAnnounced)
{
    EXPECT_EQ(tvctl({"language", "ar_AE"}).status, 0);
    EXPECT_TRUE(player_says("language changed"));
    const std::string status = tvctl({"status"}).out;
    EXPECT_THAT(status, HasSubstr("Language:       ar_AE, right to left\n"));
}

TEST_F(Control, SomethingElseThanALanguageIsRefused)
{
    const Outcome outcome = tvctl({"language", "Korean"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("ko_KR"));
}

TEST_F(Control, UsbFolderIsAddedAndRemoved)
{
    EXPECT_EQ(tvctl({"usb", "add", scratch_ / "stick"}).status, 0);
    EXPECT_THAT(tvctl({"status"}).out, HasSubstr("USB storage:    " + (scratch_ / "stick") + "\n"));
    EXPECT_EQ(tvctl({"usb", "remove", scratch_ / "stick"}).status, 0);
    EXPECT_THAT(tvctl({"status"}).out, HasSubstr("USB storage:    none\n"));
}

TEST_F(Control, UsbFolderMayHaveAnyName)
{
    const std::string folder = scratch_ / "st\xFFick\n%n";
    std::filesystem::create_directory(folder);
    EXPECT_EQ(tvctl({"usb", "add", folder}).status, 0);
    EXPECT_THAT(tvctl({"status"}).out, HasSubstr("st\\xffick\\n%n\n"));
    EXPECT_THAT(tvctl({"status", "--json"}).out, HasSubstr("st\\udcffick\\u000a%n\""));
}

TEST_F(Control, UsbFolderThatIsNotThereIsRefused)
{
    const Outcome added = tvctl({"usb", "add", scratch_ / "missing"});
    EXPECT_EQ(added.status, 1);
    EXPECT_THAT(added.err, EndsWith("missing is no folder\n"));
    EXPECT_EQ(tvctl({"usb", "remove", scratch_ / "stick"}).status, 1);
}

TEST_F(Control, ARefusalIsInThePlayersLogToo)
{
    EXPECT_EQ(tvctl({"usb", "add", scratch_ / "missing"}).status, 1);
    player_->signal(SIGTERM);
    EXPECT_EQ(player_->finish(), 0);
    EXPECT_THAT(player_->err_text(), HasSubstr("W/PLATFORM"));
    EXPECT_THAT(player_->err_text(), HasSubstr("UsbAdd refused: "));
}

TEST_F(Control, LaunchRequestIsHandedOverWithAnyBytes)
{
    EXPECT_EQ(tvctl({"launch", "--folder_path", "/a b/\xFF/", "--repeat_mode=no", "--extra",
                     "other=x=y", "--mode", ""})
                  .status,
              0);
    EXPECT_TRUE(player_says("launch folder_path=/a b/\xFF/ mode= other=x=y repeat_mode=no"));
}

TEST_F(Control, LaunchRequestWithoutExtrasIsHandedOver)
{
    EXPECT_EQ(tvctl({"launch"}).status, 0);
    EXPECT_TRUE(player_says("launch"));
}

TEST_F(Control, StatusTellsWhatThePlatformKnows)
{
    ASSERT_EQ(tvctl({"config", "set", "landscape_timer", "4"}).status, 0);
    const Outcome outcome = tvctl({"status", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, StartsWith("{\"playing\": {\"kind\": \"video\", "));
    for (const char *part :
         {"\"name\": \"a \\\"b\\\"\\u000a\\udcff.mp4\"",
          "\"list\": null",
          "\"selection\": 0",
          "\"state\": \"playing\"",
          "\"timed_rotation\": {\"on\": false",
          "\"landscape_s\": 420",
          "\"file\": \"/demo/a \\\"b\\\"\\u000a\\udcff.mp4\"",
          "\"position_ms\": 1500",
          "\"duration_ms\": 60000",
          "\"rate\": 2",
          "\"subtitle\": true",
          "\"frames\": {\"shown\": 1234, \"dropped\": 1, \"late\": 2}",
          "\"angle\": 0",
          "\"rotator\": true",
          "\"turning_to\": null",
          "\"language\": \"en_US\"",
          "\"menu_direction\": \"ltr\"",
          "\"usb\": []",
          "\"popups_blocked\": false",
          "\"blocked_items\": {\"org.example.app\": [\"broadcasting\", \"pip\"]}",
          "\"db/ostrel-demo-player-tv/landscape_timer\": 4",
          "\"memory/ostrel-demo-player-tv/playback_status\": null"})
        EXPECT_THAT(outcome.out, HasSubstr(part));

    const std::string text = tvctl({"status"}).out;
    EXPECT_THAT(text, StartsWith("Playing:        video \"a \"b\"\\n\\xff.mp4\", at 0:01 of 1:00, "
                                 "forwards at 2 times the speed, with subtitles\n"
                                 "File:           /demo/a \"b\"\\n\\xff.mp4\n"
                                 "List:           unknown"));
    EXPECT_THAT(text, HasSubstr("Blocked:        broadcasting, pip\n"));
    EXPECT_THAT(text, HasSubstr("(landscape 7 min, portrait 5 min)\n"));
}

TEST_F(Control, PlayerThatWasKilledIsNoPlayer)
{
    player_->signal(SIGKILL);
    player_->finish();
    EXPECT_EQ(tvctl({"status"}).status, 3);
}

TEST_F(Control, PlayerThatHangsIsNotWaitedForForever)
{
    player_->signal(SIGSTOP);
    const Outcome outcome = tvctl({"status"});
    player_->signal(SIGCONT);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "tvctl: the player does not answer\n");
}

TEST_F(Control, SignalEndsTheServiceCleanly)
{
    player_->signal(SIGTERM);
    EXPECT_EQ(player_->finish(), 0) << player_->err_text();
}

class ControlOfAFixedSet : public ControlFixture {};

TEST_F(ControlOfAFixedSet, PanelWithoutARotatorIsRefused)
{
    store_test::write_file(scratch_ / "tv.conf", "[panel]\nrotator = no\n");
    start_player();
    const Outcome outcome = tvctl({"panel", "portrait"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("does not turn its panel"));
}

TEST_F(ControlOfAFixedSet, TurnIsRefusedWhileThePanelTurnsElsewhere)
{
    store_test::write_file(scratch_ / "tv.conf", "[panel]\nrotator = yes\nturning_time_s = 600\n");
    start_player();
    EXPECT_EQ(tvctl({"panel", "portrait"}).status, 0);
    EXPECT_EQ(tvctl({"panel", "portrait"}).status, 0) << "it turns there already";
    EXPECT_THAT(tvctl({"status", "--json"}).out, HasSubstr("\"turning_to\": 90"));
    const Outcome outcome = tvctl({"panel", "landscape"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "tvctl: the panel is turning to 90 degrees\n");
}

TEST_F(ControlOfAFixedSet, BusWithoutAPlayerAndNoBusAtAllMeanNoPlayer)
{
    const Outcome no_bus = tvctl({"key", "Return"});
    EXPECT_EQ(no_bus.status, 3);
    EXPECT_EQ(no_bus.err, "tvctl: there is no session bus to find a player on\n");
    start_bus();
    const Outcome no_player = tvctl({"key", "Return"});
    EXPECT_EQ(no_player.status, 3);
    EXPECT_EQ(no_player.err, "tvctl: no player is running in this login\n");
}

TEST_F(ControlOfAFixedSet, LaunchWithoutAPlayerSaysHowToStartOne)
{
    start_bus();
    const Outcome plain = tvctl({"launch"});
    EXPECT_EQ(plain.status, 3);
    EXPECT_EQ(plain.err, "tvctl: no player is running in this login\n"
                         "tvctl: to start one, run: ostrel-demo-player-tv\n");
    const Outcome outcome =
        tvctl({"launch", "--folder_path", "/it's here/", "--repeat_mode=no", "--extra", "a b=c"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, EndsWith("run: ostrel-demo-player-tv --extra 'a b=c' --folder_path "
                                      "'/it'\\''s here/' --repeat_mode no\n"));
}

} // namespace
