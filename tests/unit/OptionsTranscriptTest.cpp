// The options in every situation: which row has the focus, what each row does, and what of the
// popup is built when something is missing.

#include <algorithm>

#include "player_lines.h"

using testing::Bool;
using testing::Combine;
using testing::Range;
using testing::Values;

namespace {

// Entry 2 has no dot and so no row; the rows are off, play all, 1 and 3.
const std::vector<std::string> VIDEOS = {"a.mp4", "nodot", "c.mp4"};
const std::vector<std::string> PHOTOS = {"a.jpg", "nodot", "c.jpg"};
constexpr int ROW_INDICES[] = {-1, 0, 1, 3};
constexpr int ROW_COUNT = 4;

std::string row_name(int row)
{
    return row < ROW_COUNT ? "row#" + std::to_string(row + 1) : "null";
}

class OptionsTranscriptTest : public PlayerTest {
  protected:
    OptionsTranscriptTest()
    {
        make_window();
        make_video_player();
        fake_.system.texts = option_texts();
    }

    void open_with(const std::vector<std::string> &names)
    {
        fill_play_list(names);
        player_.m_InitItemList();
        open_popup();
    }

    void set_type(int type) { set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type)); }
    static bool portrait(int type) { return type == 1 || type == 3; }
};

// ---- Which row has the focus ----

class FocusTest : public OptionsTranscriptTest,
                  public testing::WithParamInterface<std::tuple<int, int, int>> {
  protected:
    // The number that is stored for the panel's orientation.
    static int stored_selection(int word, int type)
    {
        if (word == 0 || word == -1)
            return word;
        return portrait(type) ? (word >> 8) & 0xFF : word & 0xFF;
    }

    // The row of a number, or ROW_COUNT.
    static int row_of(int selection)
    {
        return static_cast<int>(std::find(ROW_INDICES, ROW_INDICES + ROW_COUNT, selection) -
                                ROW_INDICES);
    }
};

TEST_P(FocusTest, GoesToTheRowStoredForTheOrientation)
{
    const auto [landscape, upright, type] = GetParam();
    const int word = landscape == -1 ? -1 : landscape | upright << 8;
    open_with(VIDEOS);
    set_type(type);
    fake_.store.values[ConfigKey::DEMO_MODE] = word;
    player_.m_iPlayIndex = 7;
    const int selection = stored_selection(word, type);
    const int row = row_of(selection);
    Lines expected = {"I \"callback enter\"", "I \"\"",
                      "I \"" + std::to_string(selection) + " -1\""};
    if (row < ROW_COUNT)
        expected += {"elm_object_focus_set(genlist#1, true)",
                     "elm_genlist_item_show(" + row_name(row) + ", IN)",
                     "elm_genlist_item_selected_set(" + row_name(row) + ", true)",
                     "elm_object_item_focus_set(" + row_name(row) + ", true)"};
    else
        expected += "W \"pItem is null\"";

    EXPECT_EQ(CPlayerInspector::m_OnSetFocusIdlerCB(controller_.get()), ECORE_CALLBACK_CANCEL);

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(fake_.widgets.focused_row(player_.m_pGenlist), row < ROW_COUNT ? row : -1);
}

INSTANTIATE_TEST_SUITE_P(Selections, FocusTest,
                         Combine(Values(-1, 0, 1, 2, 3, 4, 255), Values(0, 1, 2, 3, 4, 255),
                                 Range(0, 4)));

TEST_F(OptionsTranscriptTest, TheFocusIdlerWithoutAControllerOrListOnlyLogs)
{
    EXPECT_EQ(CPlayerInspector::m_OnSetFocusIdlerCB(nullptr), ECORE_CALLBACK_CANCEL);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"callback enter\""));

    fake_.forget();
    EXPECT_EQ(CPlayerInspector::m_OnSetFocusIdlerCB(controller_.get()), ECORE_CALLBACK_CANCEL);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"callback enter\"", "I \"\"", "W \"pGenList is null\"",
                                        "W \"pItem is null\""));
}

TEST_F(OptionsTranscriptTest, TheFocusFollowsThePointerBesideTheRowsToo)
{
    open_with(VIDEOS);
    for (int row = 0; row <= ROW_COUNT; ++row) {
        fake_.forget();
        fake_.widgets.move_to_row(player_.m_pGenlist, row);
        EXPECT_THAT(fake_.lines(),
                    LinesAre("elm_object_item_focus_set(" + row_name(row) + ", true)"));
    }
}

// ---- What a row does ----

struct Situation {
    int row; /**< ROW_COUNT for a place below the rows */
    int in_force;
    bool photos;
    bool disclaimer;
    int type;
};

class RowTest : public OptionsTranscriptTest,
                public testing::WithParamInterface<std::tuple<int, int, bool, bool, int>> {
  protected:
    RowTest()
        : now_{std::get<0>(GetParam()), std::get<1>(GetParam()), std::get<2>(GetParam()),
               std::get<3>(GetParam()), std::get<4>(GetParam())}
    {
        open_with(now_.photos ? PHOTOS : VIDEOS);
        if (now_.photos) {
            player_.m_vdcPlayList[1].iType = 1;
            player_.m_iPlayingType = 1;
            make_picture();
        } else {
            fake_.media.state = PLAYER_STATE_PLAYING;
        }
        fake_.system.has_disclaimer = now_.disclaimer;
        player_.m_CreateDisclaimer();
        player_.m_ShowDisclaimer();
        player_.m_iPlayIndex = now_.in_force;
        fake_.store.values[ConfigKey::DEMO_MODE] = 0x0902;
        set_type(now_.type);
    }

    // Storing the number for the panel's orientation.
    Lines storing_lines(int number) const
    {
        if (number == 0 || number == -1)
            return {writes(ConfigKey::DEMO_MODE, number)};
        const bool upright = portrait(now_.type);
        const int word = upright ? number << 8 | 0x02 : number | 0x0900;
        return {std::string("E \"eMode=") + (upright ? "2" : "1") +
                    " iMenuType=" + std::to_string(word) + "\"",
                writes(ConfigKey::DEMO_MODE, word)};
    }

    // What follows for what is on the screen.
    Lines playing_lines(int number) const
    {
        if (number == 0) {
            if (!now_.photos)
                return {};
            return {"I \"\"", "ecore_timer_add(5, controller)"};
        }
        Lines lines = {"D \"" + std::to_string(number) + "\""};
        if (number == -1)
            return lines += exit_lines();
        const std::string path = FOLDER + (now_.photos ? PHOTOS : VIDEOS)[size_t(number) - 1];
        lines += {"D \"" + path + "\"", std::string(now_.photos ? "D \"1 1\"" : "D \"0 0\"")};
        return lines += now_.photos ? photo_lines(path, 2, true, true)
                                    : video_lines(path, "", PLAYER_STATE_PLAYING, false);
    }

    Lines hiding_lines() const
    {
        if (!now_.disclaimer)
            return {};
        return {"evas_object_hide(layout#2)", "evas_object_hide(imagebox#1)",
                "ecore_timer_del(timer#1)"};
    }

    const Situation now_;
};

TEST_P(RowTest, APressChoosesIt)
{
    Lines expected = {"I \"\""};
    int number = now_.in_force;
    if (now_.row < ROW_COUNT) {
        number = ROW_INDICES[now_.row];
        if (number != now_.in_force) {
            expected += hiding_lines();
            expected += storing_lines(number);
            expected += playing_lines(number);
        }
        expected += popup_closing_lines("popup#1");
    }

    fake_.widgets.press_row(player_.m_pGenlist, now_.row);

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_iPlayIndex, number);
}

TEST_P(RowTest, AnotherButtonDoesNothing)
{
    for (const int button : {0, 2, 3}) {
        fake_.forget();
        fake_.widgets.press_row(player_.m_pGenlist, now_.row, button);
        EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    }
    EXPECT_EQ(player_.m_iPlayIndex, now_.in_force);
}

// Nothing registers this callback. It writes the number itself, leaves the disclaimer, and destroys
// the record, so the row must not keep it.
TEST_P(RowTest, TheSelectionCallbackDecidesAlike)
{
    Evas_Object *list = player_.m_pGenlist;
    Elm_Object_Item *item =
        now_.row < ROW_COUNT ? fake_.widgets.row(list, static_cast<size_t>(now_.row)) : nullptr;
    Lines expected;
    int number = now_.in_force;
    if (item != nullptr) {
        number = ROW_INDICES[now_.row];
        if (number != now_.in_force) {
            expected += writes(ConfigKey::DEMO_MODE, number);
            expected += playing_lines(number);
        }
        expected += popup_closing_lines("popup#1");
    }

    CPlayerInspector::m_OnItemSelectedCB(controller_.get(), list, item);
    if (item != nullptr)
        fake_.widgets.take_row_data(list, static_cast<size_t>(now_.row));

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_iPlayIndex, number);
}

INSTANTIATE_TEST_SUITE_P(Rows, RowTest,
                         Combine(Range(0, ROW_COUNT + 1), Values(-1, 0, 1, 3), Bool(), Bool(),
                                 Range(0, 4)));

TEST_F(OptionsTranscriptTest, TheSelectionCallbackWithoutAControllerDoesNothing)
{
    open_with(VIDEOS);

    CPlayerInspector::m_OnItemSelectedCB(nullptr, player_.m_pGenlist,
                                         fake_.widgets.row(player_.m_pGenlist, 2));

    EXPECT_THAT(fake_.lines(), testing::IsEmpty());
}

// ---- What is built when something is missing ----

class PopupTest : public OptionsTranscriptTest, public testing::WithParamInterface<std::string> {
  protected:
    // Name of an object, or null when its making is what fails.
    static std::string made(const std::string &function, const std::string &name)
    {
        return GetParam() == function ? "null" : name;
    }

    static Lines popup_lines()
    {
        const std::string popup = made("elm_velt_popup_add", "popup#1");
        const std::string layout = made("elm_velt_layout_add", "layout#1");
        const std::string list = made("elm_velt_genlist_add", "genlist#1");
        return {"I \"\"",
                "elm_velt_popup_add(window#1)",
                "elm_velt_popup_style_set(" + popup + ", 0)",
                "elm_popup_orient_set(" + popup + ", CENTER)",
                "elm_velt_popup_title_set(" + popup + ", \"Demo\")",
                "elm_velt_layout_add(" + popup + ")",
                "elm_velt_layout_type_set(" + layout + ", 1)",
                "elm_velt_object_size_min_set(" + layout + ", 960, 440)",
                "elm_velt_object_resize_policy_set(" + layout + ", 4, 1)",
                "elm_velt_layout_align_set(" + layout + ", 5)",
                "elm_velt_genlist_add(" + layout + ")",
                "elm_velt_genlist_listoption_enable(" + list + ", true)",
                "elm_velt_object_resize_policy_set(" + list + ", 4, 1)",
                "elm_genlist_select_mode_set(" + list + ", DEFAULT)",
                "elm_velt_layout_item_append(" + layout + ", " + list + ", 960, 440)",
                "elm_velt_popup_content_set(" + popup + ", " + layout + ", 960, 440)",
                "elm_genlist_item_class_new()"};
    }

    static Lines button_lines()
    {
        const std::string popup = made("elm_velt_popup_add", "popup#1");
        Lines lines = {"elm_velt_button_add(" + popup + ")"};
        if (GetParam() == "elm_velt_button_add")
            return lines;
        return lines += {"elm_velt_button_style_set(button#1, 0, 0)",
                         "elm_velt_button_text_set(button#1, \"OK\")",
                         "elm_velt_popup_button_focus_set(" + popup + ", 5)",
                         "elm_velt_popup_button_set(" + popup + ", button#1, 0)",
                         "evas_object_smart_callback_add(button#1, \"clicked\", controller)",
                         "evas_object_event_callback_add(button#1, MOUSE_IN, controller)",
                         "evas_object_event_callback_add(button#1, MOUSE_DOWN, controller)"};
    }

    static Lines wiring_lines()
    {
        const std::string popup = made("elm_velt_popup_add", "popup#1");
        const std::string list = made("elm_velt_genlist_add", "genlist#1");
        Lines lines = {"elm_popup_timeout_set(" + popup + ", 30)",
                       "evas_object_smart_callback_add(" + popup + ", \"timeout\", controller)"};
        for (const char *event : {"KEY_DOWN", "SHOW", "MOUSE_IN", "MOUSE_DOWN"})
            lines += "evas_object_event_callback_add(" + list + ", " + event + ", controller)";
        lines += {"elm_genlist_item_class_free(row-class#1)", "I \"Block E-POP = 1 \"",
                  std::string("app_context_manager_set_epop_block()")};
        if (GetParam() == "app_context_manager_set_epop_block")
            lines += "E \"app_context_manager_set_epop_block falied\"";
        return lines += "evas_object_show(" + popup + ")";
    }
};

TEST_P(PopupTest, IsBuiltAsFarAsItGoes)
{
    fill_play_list(VIDEOS);
    player_.m_InitItemList();
    const bool has_class = GetParam() != "elm_genlist_item_class_new";
    if (GetParam() != "nothing")
        fake_.fail(GetParam());
    fake_.forget();
    Lines expected = popup_lines();
    if (has_class) {
        const std::string append = "elm_velt_genlist_item_append(" +
                                   made("elm_velt_genlist_add", "genlist#1") +
                                   ", row-class#1, C_TextTile_SingleLine_02, null, NONE, null, "
                                   "controller)";
        expected += Lines(size_t{ROW_COUNT}, append);
        expected += button_lines();
        expected += wiring_lines();
    } else {
        expected += "W \"pItemClass is null\"";
    }

    EXPECT_EQ(player_.m_CreatePopUp(), has_class);

    EXPECT_EQ(fake_.lines(), expected);
    const bool has_popup = GetParam() != "elm_velt_popup_add";
    EXPECT_EQ(player_.m_pPopup != nullptr, has_popup);
    EXPECT_EQ(player_.DestroyPopup(), has_popup);
    fake_.loop.advance(0.5);
    EXPECT_EQ(player_.m_pPopup, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Failures, PopupTest,
                         Values("nothing", "elm_velt_popup_add", "elm_velt_layout_add",
                                "elm_velt_genlist_add", "elm_genlist_item_class_new",
                                "elm_velt_button_add", "app_context_manager_set_epop_block"));

// ---- Closing ----

class ClosingTest : public OptionsTranscriptTest,
                    public testing::WithParamInterface<std::tuple<bool, bool>> {};

TEST_P(ClosingTest, HidesLetsPopUpsThroughAndTakesDownHalfASecondLater)
{
    const auto [again, unblocking_fails] = GetParam();
    open_with({"a.mp4"});
    if (again) {
        player_.DestroyPopup();
        fake_.loop.advance(0.4);
    }
    Lines expected = popup_closing_lines("popup#1", again ? "timer#1" : "");
    if (unblocking_fails) {
        fake_.fail("app_context_manager_unset_epop_block");
        expected.insert(expected.begin() + 4, "E \"app_context_manager_unset_epop_block falied\"");
    }
    fake_.forget();

    EXPECT_TRUE(player_.DestroyPopup());

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_NE(player_.m_pPopup, nullptr);
    fake_.forget();
    fake_.loop.advance(0.4);
    EXPECT_EQ(fake_.lines(), Lines());
    fake_.loop.advance(0.1);
    // Each of the three rows destroys its record.
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "evas_object_del(genlist#1)", "D \"\"", "D \"\"", "D \"\"",
                         "evas_object_del(layout#1)", "evas_object_del(popup#1)"));
    EXPECT_EQ(player_.m_pDestroyPopupTimer, nullptr);
    EXPECT_EQ(fake_.loop.timers(), std::vector<double>());
}

INSTANTIATE_TEST_SUITE_P(Cases, ClosingTest, Combine(Bool(), Bool()));

// ---- m_SelectSoundSpeaker ----

class SpeakerTest : public OptionsTranscriptTest,
                    public testing::WithParamInterface<std::tuple<int, std::string>> {};

TEST_P(SpeakerTest, IsToggledUnlessTheSetRefuses)
{
    const auto &[route, failing] = GetParam();
    fake_.system.sound_route = route;
    if (failing != "nothing")
        fake_.fail(failing);
    Lines expected;
    if (failing != "sound_manager_get_speaker_selection") {
        const std::string target = route == 0 ? "8" : "0";
        expected +=
            "I \"enCurOutputRoute = " + std::to_string(route) + ",enOutputRoute = " + target + "\"";
        expected += "sound_manager_set_speaker_selection(" + target + ")";
        if (failing == "sound_manager_set_speaker_selection")
            expected += "E \"select speaker failed\"";
    }

    player_.m_SelectSoundSpeaker();

    EXPECT_EQ(fake_.lines(), expected);
}

INSTANTIATE_TEST_SUITE_P(Routes, SpeakerTest,
                         Combine(Values(-1, 0, 1, 3, 7, 8, 9),
                                 Values("nothing", "sound_manager_get_speaker_selection",
                                        "sound_manager_set_speaker_selection")));

} // namespace
