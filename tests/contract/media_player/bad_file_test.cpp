// What becomes of files that cannot be played, or not to their end.

#include <future>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace player_test {
namespace {

class BadFile : public PlayerTest {
  protected:
    /** Prepares a file and tells what comes of it first. */
    std::string outcome(const std::string &file)
    {
        player_->unprepare();
        const size_t before = events().size();
        if (const int result = prepare(file))
            return "refused " + std::to_string(result);
        if (!wait_for([&] { return events().size() > before; }))
            return "nothing";
        return events()[before];
    }

    /** A clip whose reader stumbles over a frame. @return its path */
    std::string breaks_at(int frame)
    {
        Clip facts;
        facts.frames = frame + 30;
        facts.sound = false;
        // Large enough for the reader to be still far from that frame when the first one is there.
        facts.encoder_options = "bitrate=40000 pass=cbr option-string=nal-hrd=cbr";
        std::string contents = read_file(clip("breaks.mp4", facts));
        const size_t sizes = contents.find("stsz") + 16;
        contents.replace(sizes + 4 * static_cast<size_t>(frame), 4, "\x7f\xff\xff\xff");
        write_file(path("breaks.mp4"), contents);
        return path("breaks.mp4");
    }

    /** Plays a file over and over. */
    testing::AssertionResult looping(const std::string &file)
    {
        platform::PlayerOptions options = usual_options();
        options.make_audio_sink = [this, make = options.make_audio_sink] {
            openings_++;
            return make();
        };
        make_player(options);
        player_->set_looping(true);
        return playing(file);
    }

    std::atomic<int> openings_{0}; ///< how often a looping file was opened
};

TEST_F(BadFile, AMissingFileIsAnError)
{
    EXPECT_EQ(outcome(path("missing.mp4")), "error -2");
}

TEST_F(BadFile, WhatIsNoVideoIsAnError)
{
    write_file(path("empty.mp4"), "");
    write_file(path("text.mp4"), "Shall I compare thee to a summer's day?\n");
    write_file(path("noise.mp4"), std::string(100000, '\x55'));
    mkdir(path("folder.mp4").c_str(), 0700);
    for (const char *name : {"empty.mp4", "text.mp4", "noise.mp4", "folder.mp4"})
        EXPECT_EQ(outcome(path(name)), "error -26476541") << name;
}

TEST_F(BadFile, APipeIsAnErrorAndNotAWait)
{
    ASSERT_EQ(mkfifo(path("pipe.mp4").c_str(), 0600), 0);

    EXPECT_EQ(outcome(path("pipe.mp4")), "error -26476541");
}

TEST_F(BadFile, AFileWithoutItsIndexIsAnError)
{
    const std::string whole = read_file(clip("a.mp4"));
    write_file(path("half.mp4"), whole.substr(0, whole.size() / 2));

    EXPECT_THAT(outcome(path("half.mp4")), StartsWith("error"));
}

TEST_F(BadFile, SoundWithoutAPictureIsAnError)
{
    make_sound(path("song.ogg"));

    EXPECT_THAT(outcome(path("song.ogg")), StartsWith("error"));
}

TEST_F(BadFile, APhotoIsAnError)
{
    make_photo(path("photo.mp4"));

    EXPECT_EQ(outcome(path("photo.mp4")), "error -26476541");
}

TEST_F(BadFile, APictureWithoutADecoderIsAnError)
{
    std::string contents = read_file(clip("a.mkv"));
    const size_t codec = contents.find("V_MPEG4/ISO/AVC");
    ASSERT_NE(codec, std::string::npos);
    write_file(path("odd.mkv"), contents.replace(codec, 15, "V_MPEG4/ISO/XYZ"));

    EXPECT_THAT(outcome(path("odd.mkv")), StartsWith("error"));
    EXPECT_EQ(count("prepared"), 0);
}

TEST_F(BadFile, SoundWithoutADecoderIsToldAndThePicturePlays)
{
    // Another four-letter code of the same length keeps the file whole.
    std::string contents = read_file(clip("a.avi"));
    size_t header = contents.find("auds");
    ASSERT_NE(header, std::string::npos);
    header = contents.find("strf", header);
    ASSERT_NE(header, std::string::npos);
    contents[header + 8] = '\x49';
    contents[header + 9] = '\x5a';
    write_file(path("odd.avi"), contents);

    ASSERT_EQ(prepare(path("odd.avi")), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->start();
    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("error -26476496", "prepared", "completed"));
    EXPECT_GT(shown(), 10u);
}

TEST_F(BadFile, SoundThatCannotBeDecodedDoesNotStopThePicture)
{
    // A page of an Ogg file that does not add up is left out; this one says how the sound is coded.
    std::string contents = read_file(clip("a.ogg"));
    const size_t header = contents.find("\x05vorbis");
    ASSERT_NE(header, std::string::npos);
    contents[header + 20] = static_cast<char>(~contents[header + 20]);
    write_file(path("odd.ogg"), contents);

    ASSERT_TRUE(playing(path("odd.ogg")));
    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_GT(shown(), 10u);
}

TEST_F(BadFile, AFileThatBreaksAfterItsFirstFrameIsCompleted)
{
    const std::string whole = read_file(clip("a.mkv"));
    write_file(path("cut.mkv"), whole.substr(0, whole.size() / 2));
    testing::internal::CaptureStderr();
    ASSERT_TRUE(playing(path("cut.mkv")));

    EXPECT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("cut.mkv is cut short"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_GE(due(), 15u);
    EXPECT_LE(shown(), 50u);
}

TEST_F(BadFile, ABrokenFileThatLoopsGoesRound)
{
    const std::string whole = read_file(clip("a.mkv"));
    write_file(path("cut.mkv"), whole.substr(0, whole.size() * 2 / 3));
    ASSERT_EQ(prepare(path("cut.mkv")), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->start();

    for (int round = 0; round < 2; round++) {
        EXPECT_TRUE(wait_for([this] { return position() > 900; }));
        EXPECT_TRUE(wait_for([this] { return position() < 500; }));
    }
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(BadFile, ALoopThatBreaksIsBegunAnewEachTime)
{
    testing::internal::CaptureStderr();
    ASSERT_TRUE(looping(breaks_at(50)));

    EXPECT_TRUE(wait_for([this] { return openings_ >= 3 && position() < 1000; }));

    EXPECT_THAT(events(), ElementsAre("prepared"));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("breaks.mp4 is broken"));
    EXPECT_EQ(log.find("is broken"), log.rfind("is broken")) << "said once: " << log;
}

TEST_F(BadFile, ALoopThatIsBegunAnewKeepsItsSpeed)
{
    testing::internal::CaptureStderr();
    ASSERT_TRUE(looping(breaks_at(50)));
    ASSERT_TRUE(wait_for([this] { return position() > 200; }));
    ASSERT_EQ(player_->set_rate(2.0), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return openings_ >= 3; }));

    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("speed 2.00 from 0.0 s"));
}

TEST_F(BadFile, ALoopThatBreaksInItsFirstSecondCompletes)
{
    ASSERT_TRUE(looping(breaks_at(20)));

    EXPECT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
    EXPECT_EQ(openings_, 1);
}

TEST_F(BadFile, ALoopThatBreaksAndCannotBeOpenedAgainCompletes)
{
    write_file(path("noise"), std::string(100000, '\x55'));
    const std::string file = breaks_at(50);
    ASSERT_TRUE(looping(file));
    // The one that plays is read on as long as it is open.
    ASSERT_EQ(rename(path("noise").c_str(), file.c_str()), 0);

    EXPECT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_EQ(openings_, 2);
}

TEST_F(BadFile, ABrokenFileCanBeStartedAgain)
{
    std::string contents = read_file(clip("a.flv"));
    for (size_t i = contents.size() / 2; i < contents.size(); i++)
        contents[i] = static_cast<char>(i * 7919 >> 3);
    write_file(path("rubbish.flv"), contents);
    ASSERT_TRUE(playing(path("rubbish.flv")));
    ASSERT_TRUE(wait_for_event("completed"));
    const uint64_t before = shown();

    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([&] { return shown() > before + 10; }));
    EXPECT_TRUE(wait_for([this] { return count("completed") == 2; }));
}

TEST_F(BadFile, AFileThatIsRubbishFromTheMiddleOnIsCompleted)
{
    for (const char *name : {"a.mkv", "a.mp4", "a.avi", "a.ts", "a.flv", "a.ogg", "a.mpeg"}) {
        SCOPED_TRACE(name);
        std::string contents = read_file(clip(name));
        // The index at the end of some containers stays, and points into the rubbish.
        const size_t from = contents.size() / 2;
        const size_t length = contents.size() / 3;
        for (size_t i = from; i < from + length; i++)
            contents[i] = static_cast<char>(i * 7919 >> 3);
        write_file(path(std::string("rubbish-") + name), contents);
        const int before = count("completed");
        ASSERT_TRUE(playing(path(std::string("rubbish-") + name)));
        EXPECT_TRUE(wait_for([&] { return count("completed") == before + 1; }));
        EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
        player_->unprepare();
    }
}

TEST(PlayerPatience, IsShorterWithAFilmThatStallsThanWithOneThatBegins)
{
    EXPECT_EQ(platform::PlayerOptions{}.stall_patience, std::chrono::seconds(10));
    EXPECT_EQ(platform::PlayerOptions{}.first_frame_timeout, std::chrono::seconds(15));
}

TEST_F(BadFile, AFirstFrameThatNeverComesIsAnErrorAfterAWhile)
{
    platform::PlayerOptions options;
    options.first_frame_timeout = std::chrono::milliseconds(700);
    make_player(options);
    // A pipe that nobody writes to, behind a name that is no path.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);

    EXPECT_EQ(outcome("fd://" + std::to_string(ends[0])), "error -26476541");

    player_->unprepare();
    close(ends[0]);
    close(ends[1]);
}

TEST_F(BadFile, AMediaSystemThatIsSlowToStartIsWaitedFor)
{
    platform::PlayerOptions options;
    options.first_frame_timeout = std::chrono::seconds(4);
    std::promise<bool> set_up;
    options.set_up = [started = set_up.get_future().share()](const std::atomic<bool> &) {
        return started.get();
    };
    make_player(options);
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);

    EXPECT_TRUE(stays([this] { return events().empty(); }, 4.5));
    set_up.set_value(true);

    EXPECT_TRUE(wait_for_event("prepared"));
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(BadFile, AFileThatDoesNotCloseIsLeftToItself)
{
    platform::PlayerOptions options;
    std::promise<void> begun;
    std::promise<bool> opened;
    options.set_up = [&begun, open = opened.get_future().share()](const std::atomic<bool> &) {
        begun.set_value();
        return open.get();
    };
    make_player(options);
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);
    begun.get_future().wait();
    std::promise<void> destroyed;
    std::thread patience([&opened, end = destroyed.get_future()] {
        end.wait_for(std::chrono::seconds(10));
        opened.set_value(false);
    });
    testing::internal::CaptureStderr();

    player_->destroy();

    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("a file is slow to close; it is left to itself"));
    destroyed.set_value();
    patience.join();
}

TEST_F(BadFile, AWaitForTheMediaSystemIsGivenUpWithItsFile)
{
    platform::PlayerOptions options;
    std::promise<void> begun;
    options.set_up = [&begun](const std::atomic<bool> &stopping) {
        begun.set_value();
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!stopping && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        return false;
    };
    make_player(options);
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);
    begun.get_future().wait();
    testing::internal::CaptureStderr();

    player_->destroy();

    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(testing::HasSubstr("slow to close")));
}

TEST_F(BadFile, AMediaSystemThatDoesNotStartIsAnError)
{
    platform::PlayerOptions options;
    options.set_up = [](const std::atomic<bool> &) { return false; };
    make_player(options);

    EXPECT_EQ(outcome(clip("a.mp4")), "error -38");
}

TEST_F(BadFile, SoundThatNeverArrivesDoesNotStopThePicture)
{
    platform::PlayerOptions options;
    options.first_frame_timeout = std::chrono::seconds(8);
    options.make_audio_sink = [] {
        platform::ElementPtr sink = platform::make_element("fakesink");
        const platform::PadPtr pad(gst_element_get_static_pad(sink.get(), "sink"));
        gst_pad_add_probe(
            pad.get(), GST_PAD_PROBE_TYPE_BUFFER,
            [](GstPad *, GstPadProbeInfo *, gpointer) { return GST_PAD_PROBE_DROP; }, nullptr,
            nullptr);
        return sink;
    };
    make_player(options);
    Clip endless;
    endless.frames = 1800;

    ASSERT_EQ(prepare(clip("a.mp4", endless)), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for_event("prepared"));
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(BadFile, ALostSoundDeviceLeavesThePicturePlaying)
{
    static std::atomic<GstElement *> device{nullptr};
    platform::PlayerOptions options = usual_options();
    options.make_audio_sink = [] {
        platform::ElementPtr sink = platform::make_element("fakeaudiosink");
        device = sink.get();
        return sink;
    };
    make_player(options);
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for([this] { return position() > 300; }));
    const uint64_t before = shown();

    GST_ELEMENT_ERROR(device.load(), RESOURCE, WRITE, ("the device is gone"), (nullptr));

    ASSERT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    // A busy machine leaves frames out.
    EXPECT_GT(shown(), before + 5);
}

TEST_F(BadFile, ASoundDeviceThatDoesNotOpenLeavesThePicturePlaying)
{
    platform::PlayerOptions options = usual_options();
    options.make_audio_sink = [] {
        platform::ElementPtr sink = platform::make_element("alsasink");
        g_object_set(sink.get(), "device", "no such device", nullptr);
        return sink;
    };
    make_player(options);

    ASSERT_TRUE(playing(clip("a.mp4")));

    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
}

TEST_F(BadFile, AnythingInANameIsPlayed)
{
    const std::string original = clip("a.mp4");
    const std::string names[] = {"two words.mp4",       "100%25 #1? & more.mp4",
                                 "new\nline.mp4",       "\xff\xfe not utf-8.mp4",
                                 "\xed\x95\x9c.mp4",    "'quote\".mp4",
                                 std::string(255, 'n'), "file:name.mp4",
                                 "back\\slash.mp4",     "http:.mp4"};
    for (const std::string &name : names) {
        SCOPED_TRACE(name);
        write_file(path(name), read_file(original));
        EXPECT_EQ(outcome(path(name)), "prepared");
    }
    const std::string folder = path("file:");
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    write_file(folder + "/b.mp4", read_file(original));
    EXPECT_EQ(outcome(folder + "//b.mp4"), "prepared");
}

TEST_F(BadFile, AUriIsTakenAsItIs)
{
    const std::string file = clip("a.mp4");

    EXPECT_EQ(outcome("file://" + file), "prepared");
    EXPECT_EQ(outcome("file://" + path("missing.mp4")), "error -2");
}

} // namespace
} // namespace player_test
