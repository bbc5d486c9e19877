// A further launch request in every situation: what of the demo is on the screen, what of the
// disclaimer is there, what is chosen by now, and how the panel stands.

#include "disclaimer_lines.h"
#include "launch_lines.h"
#include "start_lines.h"

using testing::Combine;
using testing::Values;

namespace {

/** What became of the first request until the further one comes. */
enum class Before {
    NothingToPlay, /**< there was no content, so the program is about to end */
    NotYetVisible,
    Preparing,      /**< the first video */
    DisclaimerOver, /**< the video plays, the disclaimer's time is over */
    Photo,
    DisclaimerShown, /**< the video plays, the disclaimer lies over it */
};

/** What of the disclaimer came about at the first start, and what comes about at the next. */
enum class Disclaimer { Off, NoLayout, NoImageBox, NoPictures, Complete };

struct Relaunch {
    Before before;
    Disclaimer first;
    Disclaimer next;
    Start start;
    Extras extras;
};

const Extras FOLDER_CONTENTS = {{"folder_path", "/demo/show/"},
                                {"repeat_mode", "no"},
                                {"path_location", "usb"},
                                {"demo_player_mode", "folder_contents_player"}};

class RelaunchScene : public MainTest {
  public:
    explicit RelaunchScene(const Relaunch &now) : now_(now)
    {
        install_disclaimer_pictures(fake_.system);
        fake_.rotator.supported = now_.start.rotator;
        fake_.store.values["db/sysman/rotation_state"] = now_.start.upright() ? 2 : 1;
        fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = now_.start.timed ? 1 : 0;
        fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 0;
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 0;
        fake_.storage.add_folder(
            FOLDER,
            now_.before == Before::NothingToPlay
                ? std::vector<std::string>()
                : std::vector<std::string>{"a.mp4", "b.jpg", "portrait_a.mp4", "portrait_b.jpg"});
        CPlayerInspector::bStarted() = false;
    }

    // What a test orders may stay unused where the request does not come so far.
    ~RelaunchScene() override { fake_.script = fake::Script(); }

    void TestBody() override {}

    void expect_restart()
    {
        run_created([this] {
            go_to_the_moment();
            CPlayerInspector player(*app_controller());
            Ecore_Timer *const disclaimer_timer = player.m_pDisclaimerTimer;
            const bool was_shown = disclaimer_is_shown(player);
            EXPECT_EQ(was_shown,
                      now_.before == Before::DisclaimerShown && overlay() == Overlay::Full);
            EXPECT_EQ(disclaimer_timer != nullptr, was_shown);
            const Lines expected = join({request_lines(now_.extras), start_lines(player)});
            prepare_disclaimer(now_.next);

            fake_.app.launch(now_.extras);

            EXPECT_EQ(fake_.all(), expected);
            EXPECT_EQ(player.m_pDisclaimerTimer, disclaimer_timer) << "a pending one is left alone";
            const bool hidden = plays() && now_.next != Disclaimer::Off;
            EXPECT_EQ(disclaimer_is_shown(player), was_shown && !hidden);
            EXPECT_TRUE(player.m_bRepeat);
            EXPECT_FALSE(player.m_bFolderContentsPlayer);
        });
    }

    void expect_refusal()
    {
        run_created([this] {
            go_to_the_moment();
            CPlayerInspector player(*app_controller());
            const bool was_shown = disclaimer_is_shown(player);

            fake_.app.launch(now_.extras);

            EXPECT_EQ(fake_.all(), request_lines(now_.extras));
            EXPECT_EQ(disclaimer_is_shown(player), was_shown);
        });
    }

  private:
    void go_to_the_moment()
    {
        fake_.app.launch();
        fake_.registry.name(app_controller(), "controller");
        if (starts()) {
            prepare_disclaimer(now_.first);
            fake_.store.values[DEMO_MODE] = 0;
            fake_.widgets.change_visibility(1);
        }
        if (now_.before == Before::Photo) {
            fake_.loop.press_key("XF86NextChapter");
            fake_.loop.drain_pipe();
            fake_.pictures.fire_parsed(PICTREL_RESULT_PARSED);
            fake_.loop.drain_pipe();
            fake_.pictures.fire_decoded(PICTREL_RESULT_DECODED);
            fake_.loop.drain_pipe();
        } else if (plays_video()) {
            fake_.media.fire_prepared();
            fake_.loop.drain_pipe();
        }
        if (now_.before == Before::DisclaimerOver)
            fake_.loop.advance(5.0);
        fake_.script = fake::Script();
        fake_.store.values[DEMO_MODE] = *now_.start.word;
        fake_.store.values[ConfigKey::FILE_MODE] = *now_.start.file_mode;
        // The request itself chooses all when it is for a folder's contents.
        if (is_for_folder_contents(now_.extras))
            now_.start.word = 0;
        fake_.forget();
    }

    void prepare_disclaimer(Disclaimer disclaimer)
    {
        fake_.system.has_disclaimer = disclaimer != Disclaimer::Off;
        if (disclaimer == Disclaimer::NoLayout)
            fake_.fail("elm_velt_layout_add");
        if (disclaimer == Disclaimer::NoImageBox)
            fake_.fail("elm_velt_imagebox_add");
        if (disclaimer == Disclaimer::NoPictures)
            fake_.system.resources.clear();
    }

    static std::string failing(Disclaimer disclaimer)
    {
        return disclaimer == Disclaimer::NoLayout     ? "elm_velt_layout_add"
               : disclaimer == Disclaimer::NoImageBox ? "elm_velt_imagebox_add"
               : disclaimer == Disclaimer::NoPictures ? "resources"
                                                      : "nothing";
    }

    bool starts() const
    {
        return now_.before != Before::NothingToPlay && now_.before != Before::NotYetVisible;
    }

    bool plays_video() const
    {
        return now_.before == Before::DisclaimerShown || now_.before == Before::DisclaimerOver;
    }

    // Whether the further request sets an entry up.
    bool plays() const
    {
        return now_.before != Before::NothingToPlay && now_.start.mode() != -1 &&
               !now_.start.turns();
    }

    Overlay overlay() const
    {
        if (!starts() || now_.first == Disclaimer::Off || now_.first == Disclaimer::NoLayout)
            return Overlay::None;
        return now_.first == Disclaimer::NoImageBox ? Overlay::Half : Overlay::Full;
    }

    bool disclaimer_is_shown(const CPlayerInspector &player) const
    {
        return player.m_pDisclaimerImageBox != nullptr &&
               fake_.widgets.visible(player.m_pDisclaimerRootLayout) &&
               fake_.widgets.visible(player.m_pDisclaimerImageBox);
    }

    std::string name_of(const void *handle) const
    {
        return handle == nullptr ? "" : fake_.registry.describe(handle);
    }

    Lines start_lines(const CPlayerInspector &player) const
    {
        if (now_.before == Before::NothingToPlay)
            return {"I \"play list is empty\""};
        const Start &start = now_.start;
        Lines lines = selection_lines(start);
        if (start.mode() == -1)
            return join({lines, {"I \"\""}, exit_lines()});
        lines += panel_check_lines(start);
        if (start.turns())
            return lines;

        lines += disclaimer_creation_lines(now_.next != Disclaimer::Off, overlay(), start.upright(),
                                           failing(now_.next));
        lines += timed_rotation_lines(start, name_of(player.m_pZavoTimer));
        lines += "D \"" + std::to_string(start.mode()) + "\"";
        lines += folder_lines();
        const bool photo_before = now_.before == Before::Photo;
        const bool photo = start.mode() == 2;
        const std::string path = std::string(FOLDER) + (start.upright() ? "portrait_" : "") +
                                 (photo ? "b.jpg" : "a.mp4");
        return lines += entry_lines(path, "", photo,
                                    {photo_before, photo_before ? 1 : 0,
                                     plays_video() ? PLAYER_STATE_PLAYING : PLAYER_STATE_IDLE,
                                     name_of(player.m_pSlideShowTimer)},
                                    false);
    }

    Relaunch now_;
};

class RelaunchTest : public testing::TestWithParam<std::tuple<Before, Disclaimer, Disclaimer>> {};

/** What is chosen when the further request comes, and by which request. */
struct Choice {
    int word;
    Extras extras;
};

// To leave, all, the video of one orientation with the photo of the other; and a request that
// itself chooses all.
const Choice CHOICES[] = {{-1, {}}, {0, {}}, {0x0201, {}}, {0x0102, {}}, {0x0102, FOLDER_CONTENTS}};

// A selection for both orientations alike needs no other file mode; a disclaimer that fails to be
// built fails alike in all of them.
std::vector<Start> starts_for(const Choice &choice, Disclaimer next)
{
    const bool halves = choice.word > 0 && choice.extras.empty();
    const bool fails = next != Disclaimer::Off && next != Disclaimer::Complete;
    if (fails && (choice.word != 0 || !choice.extras.empty()))
        return {};
    std::vector<Start> starts;
    for (const int panel : {0, 1}) {
        for (int file_mode = 1; file_mode <= (halves ? 2 : 1); ++file_mode) {
            starts.push_back({false, panel, file_mode, choice.word, false});
            if (fails)
                continue;
            starts.push_back({true, panel, file_mode, choice.word, false});
            starts.push_back({true, panel, file_mode, choice.word, true});
        }
    }
    return starts;
}

TEST_P(RelaunchTest, StartsTheOldListAnewWithANewDisclaimer)
{
    const auto &[before, first, next] = GetParam();
    for (const Choice &choice : CHOICES) {
        for (const Start &start : starts_for(choice, next)) {
            SCOPED_TRACE(testing::Message()
                         << "word " << choice.word << ", file mode " << *start.file_mode
                         << ", panel " << start.panel << ", rotator " << start.rotator << ", timed "
                         << start.timed << ", extras " << choice.extras.size());
            RelaunchScene({before, first, next, start, choice.extras}).expect_restart();
            if (HasFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Disclaimers, RelaunchTest,
    Combine(Values(Before::NotYetVisible, Before::Preparing, Before::DisclaimerOver, Before::Photo,
                   Before::DisclaimerShown),
            Values(Disclaimer::Off, Disclaimer::NoImageBox, Disclaimer::Complete),
            Values(Disclaimer::Off, Disclaimer::NoLayout, Disclaimer::NoImageBox,
                   Disclaimer::NoPictures, Disclaimer::Complete)));

INSTANTIATE_TEST_SUITE_P(WithoutContent, RelaunchTest,
                         Combine(Values(Before::NothingToPlay), Values(Disclaimer::Complete),
                                 Values(Disclaimer::Off, Disclaimer::Complete)));

class RefusedRelaunchTest : public testing::TestWithParam<std::tuple<Before, Disclaimer>> {};

TEST_P(RefusedRelaunchTest, LeavesEverythingAsItIs)
{
    const auto &[before, disclaimer] = GetParam();
    for (const Extras &extras :
         {Extras{{"__K_RELOCATE_BELOW", "com.norvane.tv.aod"}}, Extras{{"mode", "factory_start"}},
          Extras{{"mode", "factory_stop"}}}) {
        SCOPED_TRACE(extras.begin()->second);
        RelaunchScene({before, disclaimer, disclaimer, {false, 0, 1, 0, false}, extras})
            .expect_refusal();
    }
}

INSTANTIATE_TEST_SUITE_P(Disclaimers, RefusedRelaunchTest,
                         Combine(Values(Before::NotYetVisible, Before::Photo,
                                        Before::DisclaimerShown),
                                 Values(Disclaimer::Off, Disclaimer::Complete)));

// The timer of the first disclaimer ends the second one early.
TEST_F(MainTest, AfterARelaunchTheOldTimerHidesTheNewDisclaimer)
{
    install_disclaimer_pictures(fake_.system);
    fake_.system.has_disclaimer = true;
    run_created([this] {
        fake_.app.launch();
        CPlayerInspector::bStarted() = false;
        for (const double seconds : {3.0, 1.0}) {
            // The second time it is a relaunch.
            if (!CPlayerInspector::bStarted())
                fake_.widgets.change_visibility(1);
            else
                fake_.app.launch();
            fake_.media.fire_prepared();
            fake_.loop.drain_pipe();
            fake_.loop.advance(seconds);
        }
        fake_.forget();

        fake_.loop.advance(1.0);

        EXPECT_THAT(fake_.all(), LinesAre("evas_object_hide(imagebox#2)",
                                          "evas_object_hide(layout#2)", "ecore_timer_del(timer#2)",
                                          "I \"time out, evas hide, delete timer\""));
        fake_.forget();
        fake_.loop.advance(10.0);
        EXPECT_THAT(fake_.all(), testing::IsEmpty());
    });
}

} // namespace
