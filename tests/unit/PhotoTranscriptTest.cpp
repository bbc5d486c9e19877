// Every way through the operations on photos: each failure, each position of the panel, each place
// in the list.

#include "player_lines.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PhotoTranscriptTest : public PlayerTest {
  protected:
    PhotoTranscriptTest()
    {
        make_window();
        fill_play_list({"a.jpg", "b.jpg"});
    }

    // What a test orders may stay unused where an earlier failure ends the attempt.
    ~PhotoTranscriptTest() override { fake_.script = fake::Script(); }
};

// ---- OnPlayPhoto ----

struct PhotoCall {
    const char *function;
    const char *error; /**< null when the result does not matter */
};

constexpr PhotoCall PHOTO_CALLS[] = {
    {"pictrel_init_display", "InitDisplayHandle false"},
    {"pictrel_destroy", nullptr},
    {"pictrel_create_from_url", "PICTURE_ERROR_CREATE"},
    {"pictrel_set_window", "PICTURE_ERROR_INIT"},
    {"pictrel_set_geometry_size", "Set Picture size Error"},
    {"pictrel_add_event_callback", nullptr},
    {"pictrel_parse", "PICTURE_ERROR_PARSE"},
};

class PlayPhotoTest : public PhotoTranscriptTest,
                      public testing::WithParamInterface<std::tuple<PhotoCall, int>> {};

// The lines of an attempt that ends with the first failing call whose result matters.
Lines until_failure(const Lines &lines, const PhotoCall &failing, bool &succeeds)
{
    Lines expected;
    for (const std::string &line : lines) {
        expected.push_back(line);
        if (failing.error != nullptr && line.rfind(std::string(failing.function) + "(", 0) == 0) {
            expected.push_back(std::string("E \"") + failing.error + "\"");
            succeeds = false;
            return expected;
        }
    }
    succeeds = true;
    return expected;
}

TEST_P(PlayPhotoTest, EachFailureEndsTheAttemptOrDoesNotMatter)
{
    const PhotoCall &failing = std::get<0>(GetParam());
    const bool display_ready = std::get<1>(GetParam()) > 0;
    const bool picture_shown = std::get<1>(GetParam()) > 1;
    if (picture_shown)
        make_picture();
    player_.m_pPictureDisplay = display_ready ? 1 : 0;
    const int number = picture_shown ? 2 : 1;
    bool succeeds = false;
    const Lines expected = until_failure(
        photo_lines("/demo/a.jpg", number, display_ready, picture_shown), failing, succeeds);
    fake_.script.fail_always(failing.function);

    EXPECT_EQ(player_.OnPlayPhoto("/demo/a.jpg"), succeeds);

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_pPictureDisplay, 1) << "also after a display that failed";
    const std::string made = "picture#" + std::to_string(number);
    const std::string shown = fake_.registry.describe(player_.m_pPicture);
    const std::string function = failing.function;
    if (function == "pictrel_create_from_url" || (function == "pictrel_init_display" && !succeeds))
        EXPECT_EQ(shown, "null");
    else
        EXPECT_EQ(shown, made) << "what was made stays until the next photo";
    if (player_.m_pPicture == nullptr)
        return;
    // Set up behind the window and the size, and before anybody can be told of the picture.
    const bool set_up = function != "pictrel_set_window" && function != "pictrel_set_geometry_size";
    EXPECT_EQ(player_.m_pPicture->render_state, set_up ? 0 : fake::Pictures::FRESH);
    EXPECT_EQ(player_.m_pPicture->user_data, set_up ? controller_.get() : nullptr);
}

INSTANTIATE_TEST_SUITE_P(Calls, PlayPhotoTest,
                         testing::Combine(testing::ValuesIn(PHOTO_CALLS), testing::Range(0, 3)));

// ---- DecodePicture, m_DestroyPhoto ----

TEST_F(PhotoTranscriptTest, DecodingGoesOnWhetherOrNotTheLibraryFollows)
{
    for (const bool callback_fails : {false, true}) {
        for (const bool decode_fails : {false, true}) {
            make_picture();
            if (callback_fails)
                fake_.fail("pictrel_add_event_callback");
            if (decode_fails)
                fake_.fail("pictrel_decode");
            const std::string picture = fake_.registry.describe(player_.m_pPicture);

            player_.DecodePicture(player_.m_pPicture);

            Lines expected = {"I \"\"", "pictrel_add_event_callback(" + picture + ", 1, null)",
                              "pictrel_decode(" + picture + ", 0)"};
            if (decode_fails)
                expected += "E \"\"";
            EXPECT_EQ(fake_.all(), expected);
        }
    }
}

TEST_F(PhotoTranscriptTest, DestroyingReleasesWhatIsThereAndNothingElse)
{
    for (const bool timer : {false, true}) {
        for (const bool picture : {false, true}) {
            for (const bool display : {false, true}) {
                for (const bool failing : {false, true}) {
                    fake_.script = fake::Script();
                    player_.m_DestroyPhoto();
                    player_.m_bSlideShowStarted = false;
                    if (timer)
                        player_.StartSlideShow();
                    if (picture)
                        make_picture();
                    player_.m_pPictureDisplay = display ? 1 : 0;
                    if (failing) {
                        fake_.script.fail_always("pictrel_destroy");
                        fake_.script.fail_always("pictrel_destroy_display");
                    }
                    Lines expected = {"I \"\""};
                    if (timer)
                        expected += "ecore_timer_del(" +
                                    fake_.registry.describe(player_.m_pSlideShowTimer) + ")";
                    if (picture)
                        expected +=
                            "pictrel_destroy(" + fake_.registry.describe(player_.m_pPicture) + ")";
                    if (display)
                        expected += "pictrel_destroy_display(1)";
                    expected += "I \"Destroy end\"";
                    fake_.forget();

                    player_.m_DestroyPhoto();

                    EXPECT_EQ(fake_.all(), expected);
                    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
                    EXPECT_EQ(player_.m_pPicture, nullptr);
                    EXPECT_EQ(player_.m_pPictureDisplay, 0);
                    EXPECT_EQ(player_.m_bSlideShowStarted, timer) << "left as it is";
                }
            }
        }
    }
}

// ---- RenderPicture ----

class RenderTest : public PhotoTranscriptTest, public testing::WithParamInterface<int> {};

TEST_P(RenderTest, ThePositionDecidesHowThePictureIsTurned)
{
    const int type = GetParam();
    make_picture();
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    for (const bool failing : {false, true}) {
        if (failing) {
            for (const char *function :
                 {"pictrel_render", "pictrel_set_mixer_render", "pictrel_rotate"})
                fake_.script.fail_always(function);
        }
        Lines expected = {"I \"Start Render Picture\"", window_type_line(type)};
        if (type >= 1 && type <= 3) {
            const std::string degrees = std::to_string(type == 1 ? 270 : type == 2 ? 180 : 90);
            expected += {"pictrel_set_mixer_render(picture#1, 1)", "pictrel_render(picture#1)",
                         "pictrel_set_mixer_render(picture#1, 0)",
                         "pictrel_rotate(picture#1, " + degrees + ")"};
        } else {
            expected += "pictrel_render(picture#1)";
        }
        player_.m_pPicture->render_state = 0;
        fake_.forget();

        player_.RenderPicture(player_.m_pPicture);

        EXPECT_EQ(fake_.all(), expected) << "no result matters";
        EXPECT_EQ(player_.m_pPicture->render_state, 1);
        EXPECT_EQ(player_.m_pPicture->user_data, controller_.get());
    }
}

INSTANTIATE_TEST_SUITE_P(Types, RenderTest, testing::Range(-1, 6));

TEST_F(PhotoTranscriptTest, WithoutAPictureNothingIsAskedOrLogged)
{
    player_.RenderPicture(nullptr);
    EXPECT_THAT(fake_.all(), IsEmpty());

    player_.DecodePicture(nullptr);
    EXPECT_THAT(fake_.all(), LinesAre("I \"\""));
}

// ---- StartSlideShow, StopSlideShow ----

class SlideShowTest : public PhotoTranscriptTest,
                      public testing::WithParamInterface<std::tuple<bool, unsigned int, size_t>> {
  protected:
    SlideShowTest()
    {
        fake_.rotator.supported = rotator();
        fill_play_list(std::vector<std::string>(size(), "a.jpg"));
        player_.m_uiCurPlayIndex = std::get<1>(GetParam());
        player_.m_iPlayingType = 1;
    }

    static bool rotator() { return std::get<0>(GetParam()); }
    static size_t size() { return std::get<2>(GetParam()); }
    static bool last() { return std::get<1>(GetParam()) + size_t{1} == size(); }
    static Lines timer_added()
    {
        return {rotator() ? "ecore_timer_add(180, controller)" : "ecore_timer_add(5, controller)"};
    }
};

TEST_P(SlideShowTest, OneTimerIsArmedAndOnlyTheShowsOwnIsStopped)
{
    const bool end_timer = rotator() && last();

    player_.StartSlideShow();

    EXPECT_EQ(fake_.all(), join({{"I \"\""}, rotator_lines(rotator()), timer_added()}));
    EXPECT_TRUE(player_.m_bSlideShowStarted);
    EXPECT_EQ(player_.m_pPhotoPlayEndTimer != nullptr, end_timer);
    EXPECT_EQ(player_.m_pSlideShowTimer != nullptr, !end_timer);

    fake_.forget();
    player_.StartSlideShow();
    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "I \"slideshow timer already started\""));

    fake_.forget();
    player_.StopSlideShow();
    EXPECT_EQ(fake_.all(),
              end_timer ? Lines({"I \"\""}) : Lines({"I \"\"", "ecore_timer_del(timer#1)"}));
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_EQ(player_.m_pPhotoPlayEndTimer != nullptr, end_timer);

    fake_.forget();
    player_.StopSlideShow();
    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "I \"slideshow not started\""));
}

TEST_P(SlideShowTest, ARotatorInTroubleIsNoRotator)
{
    fake_.rotator.status = DISPLAY_ROTATOR_ERROR;
    player_.StartSlideShow();

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
    EXPECT_NE(player_.m_pSlideShowTimer, nullptr);
}

TEST_P(SlideShowTest, TheTimerPlaysTheNextFileOnce)
{
    make_picture();
    player_.StartSlideShow();
    const unsigned int index = std::get<1>(GetParam());
    const size_t next = (index + 1) % size();
    fake_.forget();

    fake_.loop.advance(rotator() ? 179.9 : 4.9);
    EXPECT_THAT(fake_.all(), IsEmpty());
    fake_.loop.advance(0.2);

    EXPECT_EQ(fake_.all(), join({{"I \"\""},
                                 folder_lines(),
                                 {"D \"/opt/data/demo_movie/a.jpg\"", "D \"1 1\""},
                                 photo_lines("/opt/data/demo_movie/a.jpg", 2, true, true)}));
    EXPECT_EQ(player_.m_uiCurPlayIndex, next);
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_EQ(player_.m_pPhotoPlayEndTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
    EXPECT_TRUE(player_.m_bSlideShowStarted) << "until the next photo is decoded";
}

// The index may lie behind the end of a list that was rebuilt.
INSTANTIATE_TEST_SUITE_P(Places, SlideShowTest,
                         testing::Combine(testing::Bool(), testing::Range(0U, 4U),
                                          testing::Range(size_t{1}, size_t{4})));

// ---- Picture callbacks ----

TEST_F(PhotoTranscriptTest, EveryResultIsPostedAsItCame)
{
    make_event_pipe();
    make_picture();
    player_.DecodePicture(player_.m_pPicture);
    for (int result = -1; result <= 11; ++result) {
        const std::string number = std::to_string(result);
        fake_.forget();
        fake_.pictures.fire_parsed(static_cast<pictrel_event_result_e>(result));
        EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "I \"iEventID = 4 iParam1 = " + number + "\"",
                                          "ecore_pipe_write(4, " + number + ")"));
        fake_.forget();
        fake_.pictures.fire_decoded(static_cast<pictrel_event_result_e>(result));
        EXPECT_THAT(fake_.all(), LinesAre("I \"result_code:" + number + "\"",
                                          "I \"iEventID = 5 iParam1 = " + number + "\"",
                                          "ecore_pipe_write(5, " + number + ")"));
    }
}

TEST_F(PhotoTranscriptTest, OnlyALostPictureEndsTheProgram)
{
    make_event_pipe();
    make_picture();
    for (int result = -1; result <= 11; ++result) {
        fake_.forget();
        fake_.pictures.fire_conflict(result);
        Lines expected = {"W \"OstrelDemo player is terminated by Resource Conflict result_code:" +
                          std::to_string(result) + "\""};
        if (result == 10)
            expected += exit_lines();
        EXPECT_EQ(fake_.all(), expected);
    }
}

} // namespace
