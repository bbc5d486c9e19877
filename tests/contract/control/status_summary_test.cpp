// The lines that shop staff read.
#include <functional>
#include <string>

#include <gmock/gmock.h>

#include "control/status_report.h"

namespace {

using platform::ColourSource;
using platform::ContentList;
using platform::Status;
using platform::status_as_json;
using platform::status_nodes;
using platform::status_summary;
using platform::ToneMapping;
using platform::VideoStatus;
using testing::HasSubstr;

/** A set in the middle of its demo. */
Status a_status()
{
    Status status;
    status.player.state = PLAYER_STATE_PLAYING;
    status.player.path = "/demo/b.mp4";
    status.player.position_ms = 12345;
    status.player.duration_ms = 3723000;
    status.list = ContentList{false, {"a.mp4", "b.mp4", "c.jpg"}, 2, 1};
    status.panel = {0, true, std::nullopt, 1920, 1080};
    status.rotation = {true, 211.2, 300, 330};
    status.frames = {1234, 5, 6};
    status.language = "en_US";
    status.popups_blocked = true;
    status.blocked_items["org.example"] = {"broadcasting", "pip"};
    status.usb = {"/media/one", "/media/t\nwo"};
    return status;
}

/** What is told of its film's picture. */
VideoStatus a_video()
{
    VideoStatus video;
    video.decoder = "avdec_h264";
    video.decoder_name = "libav H.264 decoder";
    video.width = 1920;
    video.height = 1080;
    video.frame_rate = 24000.0 / 1001;
    video.format = "I420";
    video.depth = 8;
    video.range = {"limited", ColourSource::Stream};
    video.matrix = {"bt709", ColourSource::Container};
    video.transfer = {"bt709", ColourSource::Container};
    video.primaries = {"bt709", ColourSource::Usual};
    video.exact = true;
    video.shown = 240;
    video.dropped = 2;
    video.late = 7;
    return video;
}

Status with(const std::function<void(Status &)> &change)
{
    Status status = a_status();
    change(status);
    return status;
}

TEST(StatusSummary, TellsEverythingAtAGlance)
{
    EXPECT_EQ(status_summary(a_status()),
              "Playing:        video \"b.mp4\", at 0:12 of 1:02:03\n"
              "File:           /demo/b.mp4\n"
              "List:           landscape, number 2 of 3 (2 videos, 1 photo)\n"
              "Selection:      play all\n"
              "Panel:          landscape, 1920x1080\n"
              "Timed rotation: on, turns in 3 min 32 s (landscape 5 min, portrait 5 min 30 s)\n"
              "Blocked:        pop-ups of the set, broadcasting, pip\n"
              "Frames:         1234 shown, 5 dropped, 6 late\n"
              "Language:       en_US, left to right\n"
              "USB storage:    /media/one, /media/t\\nwo\n");
}

TEST(StatusSummary, IsOfVisibleTextWhateverTheLocaleIsCalled)
{
    const Status status = with([](Status &s) { s.language = "k\xED\xA0\x80\n"; });
    EXPECT_THAT(status_summary(status),
                HasSubstr("Language:       k\\xed\\xa0\\x80\\n, left to right\n"));
}

TEST(StatusSummary, NamesThePhotoThatIsShown)
{
    const Status status = with([](Status &s) {
        s.player = {};
        s.picture = {"/demo/c.jpg", true, 640, 360, "Display P3"};
        s.list->position = 2;
    });
    EXPECT_THAT(status_summary(status), HasSubstr("Playing:        photo \"c.jpg\"\n"
                                                  "File:           /demo/c.jpg\n"
                                                  "List:           landscape, number 3 of 3 "));
    const std::string json = status_as_json(status_nodes(status));
    EXPECT_THAT(json,
                HasSubstr("{\"kind\": \"photo\", \"name\": \"c.jpg\", \"file\": \"/demo/c.jpg\"}"));
    EXPECT_THAT(json,
                HasSubstr(R"("picture": {"file": "/demo/c.jpg", "shown": true, "width": 640, )"
                          R"("height": 360, "colour_profile": "Display P3"}, )"));
}

TEST(StatusSummary, PhotoThatIsNotShownYetIsNotWhatPlays)
{
    const Status status = with([](Status &s) {
        s.player = {};
        s.picture = {"/demo/c.jpg", false, 0, 0};
        s.list.reset();
    });
    EXPECT_THAT(status_summary(status), HasSubstr("Playing:        nothing\n"
                                                  "List:           -\n"));
    EXPECT_THAT(status_as_json(status_nodes(status)),
                HasSubstr("\"playing\": {\"kind\": null, \"name\": null, \"file\": null}, "
                          "\"list\": null"));
}

TEST(StatusSummary, TellsHowAVideoPlays)
{
    const auto line = [](const std::function<void(Status &)> &change) {
        const std::string text = status_summary(with(change));
        return text.substr(0, text.find('\n'));
    };
    const std::string begin = "Playing:        video \"b.mp4\"";
    EXPECT_EQ(line([](Status &s) { s.player.state = PLAYER_STATE_PAUSED; }),
              begin + ", at 0:12 of 1:02:03, paused");
    EXPECT_EQ(line([](Status &s) {
                  s.player.rate = -2.0;
                  s.player.duration_ms = -1;
              }),
              begin + ", at 0:12, backwards at 2 times the speed");
    EXPECT_EQ(line([](Status &s) {
                  s.player.rate = 2.5;
                  s.player.has_subtitle = true;
              }),
              begin + ", at 0:12 of 1:02:03, forwards at 2.5 times the speed, with subtitles");
    EXPECT_EQ(line([](Status &s) {
                  s.player.state = PLAYER_STATE_READY;
                  s.player.position_ms = -1;
              }),
              begin + ", about to start");
}

TEST(StatusSummary, TellsWhenNothingCanBePlayed)
{
    const Status status = with([](Status &s) { s.player.looks_again_ms = 31001; });
    EXPECT_THAT(status_summary(status),
                HasSubstr("Playing:        nothing can be played; looks again in 32 s\n"
                          "File:           /demo/b.mp4\n"));
    EXPECT_THAT(status_as_json(status_nodes(status)), HasSubstr("\"looks_again_ms\": 31001, "));
}

TEST(StatusSummary, TellsOfAVideosPicture)
{
    EXPECT_THAT(status_summary(with([](Status &s) { s.player.video = a_video(); })),
                HasSubstr("/demo/b.mp4\n"
                          "Picture:        1920x1080, 23.976 frames/s, I420 by avdec_h264; "
                          "240 pictures shown, 2 dropped, 7 late\n"
                          "Colours:        range limited (stream), matrix bt709 (container), "
                          "transfer bt709 (container), primaries bt709 (usual), not mapped\n"
                          "List:"));
}

TEST(StatusSummary, TellsWhatIsUnusualAboutAPicture)
{
    const auto line = [](const std::string &name,
                         const std::function<void(VideoStatus &)> &change) {
        const std::string text = status_summary(with([&](Status &s) {
            s.player.video = a_video();
            change(s.player.video);
        }));
        const size_t begin = text.find(name);
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    EXPECT_THAT(line("Picture:",
                     [](VideoStatus &v) {
                         v.pixel_width = 16;
                         v.pixel_height = 15;
                         v.frame_rate = 25;
                         v.interlaced = true;
                         v.hardware = true;
                     }),
                HasSubstr(" 1920x1080 of 16:15 pixels, 25 frames/s, interlaced, I420 by avdec_h264 "
                          "(hardware); "));
    EXPECT_THAT(line("Picture:",
                     [](VideoStatus &v) {
                         v.interlaced = true;
                         v.halved = true;
                     }),
                HasSubstr(" frames/s, interlaced, one picture a frame, I420 by "));
    EXPECT_THAT(line("Picture:",
                     [](VideoStatus &v) {
                         v.frame_rate = 0;
                         v.decoder.clear();
                     }),
                HasSubstr(" 1920x1080, I420; "));
    const auto mapped = [&](ToneMapping mapping, bool exact) {
        const std::string text = line("Colours:", [&](VideoStatus &v) {
            v.mapping = mapping;
            v.exact = exact;
            v.peak = 600;
            v.white = 202.5;
        });
        return text.substr(text.rfind("(usual), ") + 9);
    };
    EXPECT_EQ(mapped(ToneMapping::PQ, true),
              "mapped from PQ by BT.2390, peak 600, white 202.5 cd/m2");
    EXPECT_EQ(mapped(ToneMapping::HLG, true),
              "mapped from HLG by BT.2390, peak 600, white 202.5 cd/m2");
    EXPECT_EQ(mapped(ToneMapping::Ignored, false),
              "high dynamic range ignored, converted by GStreamer");
    EXPECT_EQ(mapped(ToneMapping::None, false), "not mapped, converted by GStreamer");
}

TEST(StatusSummary, TellsOfNoPictureBeforeTheFirstFrameNorOfAPhotos)
{
    EXPECT_EQ(status_summary(a_status()).find("Picture:"), std::string::npos);
    const Status photo = with([](Status &s) {
        s.player.video = a_video();
        s.player.path.clear();
        s.picture = {"/demo/c.jpg", true, 640, 360};
    });
    EXPECT_EQ(status_summary(photo).find("Picture:"), std::string::npos);
}

TEST(StatusSummary, NamesVideosThatArePassedOver)
{
    const Status status = with([](Status &s) {
        s.passed_over = {{"/demo/1\n.mp4", "it is a photo"}, {"/demo/2.mp4", "rub\tbish"}};
    });
    EXPECT_THAT(status_summary(status), HasSubstr("/demo/b.mp4\n"
                                                  "Passed over:    \"1\\n.mp4\", it is a photo\n"
                                                  "                \"2.mp4\", rub\\tbish\n"
                                                  "List:"));
    EXPECT_THAT(status_as_json(status_nodes(status)),
                HasSubstr(R"("passed_over": {"/demo/1\u000a.mp4": "it is a photo", )"
                          R"("/demo/2.mp4": "rub\u0009bish"}, )"));
}

TEST(StatusSummary, CountsStallsOnceThereHaveBeenAny)
{
    const Status status = with([](Status &s) {
        s.player.stalls = 3;
        s.player.last_stall = "/demo/1\n.mp4";
    });
    EXPECT_THAT(status_summary(status), HasSubstr("/demo/b.mp4\n"
                                                  "Stalls:         3, the last in \"1\\n.mp4\"\n"
                                                  "List:"));
    EXPECT_THAT(status_as_json(status_nodes(status)),
                HasSubstr(R"("stalls": 3, "last_stall": "/demo/1\u000a.mp4", )"));
}

TEST(StatusSummary, ListThatCannotBeToldIsUnknown)
{
    EXPECT_THAT(status_summary(with([](Status &s) { s.list.reset(); })),
                HasSubstr("List:           unknown"));
}

TEST(StatusSummary, SelectionIsThatOfTheOrientationInForce)
{
    const auto selection = [](int word, int angle, bool portrait) {
        const Status status = with([&](Status &s) {
            s.selection_word = word;
            s.panel.angle = angle;
            s.list->portrait = portrait;
        });
        const std::string text = status_summary(status);
        const size_t begin = text.find("Selection:      ") + 16;
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    EXPECT_EQ(selection(0, 0, false), "play all");
    EXPECT_EQ(selection(-1, 90, true), "off");
    EXPECT_EQ(selection(0x0102, 0, false), "only number 2, \"b.mp4\"");
    EXPECT_EQ(selection(0x0102, 90, true), "only number 1, \"a.mp4\"");
    EXPECT_EQ(selection(0x0300, 0, false), "play all");
    EXPECT_EQ(selection(0x0300, 270, true), "only number 3, \"c.jpg\"");
    EXPECT_EQ(selection(9, 180, false), "only number 9, which the list does not have");
    EXPECT_EQ(selection(2, 0, true), "only number 2") << "the other list is still playing";
}

TEST(StatusSummary, TellsOfThePanelAndItsTurns)
{
    EXPECT_THAT(status_summary(with([](Status &s) {
                    s.panel = {90, false, std::nullopt, 1920, 1080};
                    s.rotation.left_s.reset();
                })),
                HasSubstr("Panel:          portrait, 1920x1080, does not turn\n"
                          "Timed rotation: on, but the panel does not turn ("));
    EXPECT_THAT(status_summary(with([](Status &s) {
                    s.panel.turning_to = 270;
                    s.rotation.left_s.reset();
                })),
                HasSubstr("Panel:          landscape, 1920x1080, turning to portrait-reverse\n"
                          "Timed rotation: on, turning now ("));
    EXPECT_THAT(status_summary(with([](Status &s) {
                    s.panel = {180, true, std::nullopt, 0, 0};
                })),
                HasSubstr("Panel:          landscape-reverse\n"))
        << "before the window is there";
    EXPECT_THAT(status_summary(with([](Status &s) {
                    s.rotation = {false, {}, 300, 900};
                })),
                HasSubstr("Timed rotation: off (landscape 5 min, portrait 15 min)\n"));
    EXPECT_THAT(status_summary(with([](Status &s) { s.rotation.left_s.reset(); })),
                HasSubstr("Timed rotation: on, but nothing is to be shown on the other side ("));
    EXPECT_THAT(status_summary(with([](Status &s) { s.rotation.left_s = 0.4; })),
                HasSubstr("turns in 1 s ("));
}

TEST(StatusSummary, NothingBlockedAndNoStickAreSaidInSoManyWords)
{
    const Status status = with([](Status &s) {
        s.popups_blocked = false;
        s.blocked_items.clear();
        s.usb->clear();
    });
    EXPECT_THAT(status_summary(status), HasSubstr("Blocked:        none\n"));
    EXPECT_THAT(status_summary(status), HasSubstr("USB storage:    none\n"));
}

TEST(StatusNodes, HoldEverythingForPrograms)
{
    const Status status = with([](Status &s) {
        s.configuration = {{"db/a", 5}, {"db/b", std::nullopt}};
    });
    EXPECT_EQ(
        status_as_json(status_nodes(status)),
        R"({"playing": {"kind": "video", "name": "b.mp4", "file": "/demo/b.mp4"}, )"
        R"("list": {"orientation": "landscape", "number": 2, "length": 3, "videos": 2, )"
        R"("photos": 1, "names": ["a.mp4", "b.mp4", "c.jpg"]}, "selection": 0, )"
        R"("player": {"state": "playing", "file": "/demo/b.mp4", "position_ms": 12345, )"
        R"("duration_ms": 3723000, "rate": 1, "subtitle": false, "looping": false, )"
        R"("looks_again_ms": null, "stalls": 0, "last_stall": null, "video": null}, )"
        R"("picture": {"file": null, "shown": false, "width": 0, "height": 0, )"
        R"("colour_profile": null}, "passed_over": {}, )"
        R"("frames": {"shown": 1234, "dropped": 5, "late": 6}, )"
        R"("panel": {"angle": 0, "rotator": true, "turning_to": null, "width": 1920, )"
        R"("height": 1080}, "timed_rotation": {"on": true, "left_s": 211.2, )"
        R"("landscape_s": 300, "portrait_s": 330}, "language": "en_US", )"
        R"("menu_direction": "ltr", "usb": ["/media/one", "/media/t\u000awo"], )"
        R"("popups_blocked": true, "blocked_items": {"org.example": ["broadcasting", "pip"]}, )"
        R"("config": {"db/a": 5, "db/b": null}})"
        "\n");
    EXPECT_THAT(status_as_json(status_nodes(with([](Status &s) { s.rotation.left_s.reset(); }))),
                HasSubstr("\"left_s\": null"));
    EXPECT_THAT(status_as_json(status_nodes(with([](Status &s) { s.list->portrait = true; }))),
                HasSubstr("\"list\": {\"orientation\": \"portrait\", "));
}

TEST(StatusNodes, HoldEverythingAboutAVideosPicture)
{
    Status status = with([](Status &s) { s.player.video = a_video(); });
    EXPECT_THAT(
        status_as_json(status_nodes(status)),
        HasSubstr(
            R"("video": {"decoder": "avdec_h264", "decoder_name": "libav H.264 decoder", )"
            R"("hardware": false, "width": 1920, "height": 1080, "pixel_width": 1, )"
            R"("pixel_height": 1, "frame_rate": 23.976, "interlaced": false, "halved": false, )"
            R"("format": "I420", "depth": 8, "range": {"value": "limited", "source": "stream"}, )"
            R"("matrix": {"value": "bt709", "source": "container"}, )"
            R"("transfer": {"value": "bt709", "source": "container"}, )"
            R"("primaries": {"value": "bt709", "source": "usual"}, "converter": "own", )"
            R"("mapping": {"kind": "none", "by": null, "peak": null, "white": null}, )"
            R"("shown": 240, "dropped": 2, "late": 7}})"));

    VideoStatus &video = status.player.video;
    video.decoder.clear();
    video.decoder_name.clear();
    video.hardware = true;
    video.interlaced = true;
    video.halved = true;
    video.frame_rate = 0;
    video.mapping = ToneMapping::HLG;
    video.peak = 1000;
    video.white = 203;
    const std::string json = status_as_json(status_nodes(status));
    EXPECT_THAT(json, HasSubstr(R"("decoder": null, "decoder_name": null, "hardware": true, )"));
    EXPECT_THAT(json, HasSubstr(R"("frame_rate": null, "interlaced": true, "halved": true, )"));
    EXPECT_THAT(json, HasSubstr(R"("mapping": {"kind": "hlg", "by": "BT.2390", "peak": 1000, )"
                                R"("white": 203})"));
    video.mapping = ToneMapping::Ignored;
    video.peak = video.white = 0;
    video.exact = false;
    EXPECT_THAT(status_as_json(status_nodes(status)),
                HasSubstr(R"("converter": "gstreamer", "mapping": {"kind": "ignored", )"
                          R"("by": null, "peak": null, "white": null})"));
}

} // namespace
