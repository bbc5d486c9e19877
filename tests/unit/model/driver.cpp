#include "driver.h"

#include <array>
#include <memory>
#include <set>
#include <sstream>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "app_data.h"
#include "platform.h"
#include "player/control/OstrelDemoPlayer.h"
#include "player/util/EventManager.h"
#include "player_inspector.h"

// main() of the player, under another name.
int demo_player_main(int argc, char **argv);

namespace model {

namespace {

class Driver {
  public:
    Driver(Outcome &outcome, const testing::TestPartResultArray &complaints)
        : outcome_(outcome), complaints_(complaints), fake_(fake::reset())
    {
        CPlayerInspector::bStarted() = false;
        COstrelDemoUtil::SetWindowRotationType(ROTATION_TYPE_LANDSCAPE);
        fake_.system.resources = {
            {"ostrel_demo/player_img_china_disclaimer.png", "/res/wide.png"},
            {"ostrel_demo/player_img_china_disclaimer_portrait.png", "/res/portrait.png"}};
        for (const char *id :
             {"LANDSCAPE_TIMER_A_MINS", "LANDSCAPE_TIMER_A_MINS_B_SEC", "PORTRAIT_TIMER_A_MINS",
              "PORTRAIT_TIMER_A_MINS_B_SEC", "RESET_P_L_TIMER_A_MINS"}) {
            const std::string name = std::string("TV_SID_ZAVO_MIX_CAAUG_") + id;
            fake_.system.texts[name] = name + " <<A>>:<<B>>";
        }
    }

    void run(const Steps &steps)
    {
        outcome_.step = 0;
        while (outcome_.step < steps.size() && take(steps[outcome_.step]))
            ++outcome_.step;
        if (outcome_.passed() && model_.running())
            take({"terminate", {}, {}});
        // What nobody owned goes with the toolkit.
        fake_.widgets.remove_all();
    }

  private:
    /** @return whether the sequence goes on. */
    bool take(const Step &step)
    {
        if (!model_.possible(step))
            return true;
        ++outcome_.events;
        ++outcome_.happened[step.what];
        static const std::set<std::string> of_the_popup = {
            "elm_velt_popup_add", "elm_genlist_item_class_new",
            "app_context_manager_set_epop_block", "app_context_manager_unset_epop_block"};
        for (const std::string &function : step.failing)
            popup_calls_failed_ |= of_the_popup.count(function) != 0;
        popup_failed_ |= step.fails("elm_velt_popup_add");

        fake_.forget();
        fake_.script = fake::Script();
        for (const std::string &function : step.failing)
            fake_.script.fail_always(function);
        model_.apply(step);
        apply(step);
        fake_.script = fake::Script();

        outcome_.failure = difference();
        if (outcome_.failure.empty())
            outcome_.failure = broken_invariant(app_controller(), popup_calls_failed_);
        if (outcome_.failure.empty() && model_.terminated)
            outcome_.failure = leftover(popup_failed_);
        for (int i = 0; i < complaints_.size(); ++i)
            outcome_.failure += std::string(complaints_.GetTestPartResult(i).message()) + "\n";
        return outcome_.failure.empty() && !model_.terminated;
    }

    std::string difference() const
    {
        std::ostringstream text;
        const auto calls = real_calls();
        if (calls != model_.set.calls) {
            text << "calls expected:\n";
            for (const std::string &line : model_.set.calls)
                text << "  " << line << "\n";
            text << "calls made:\n";
            for (const std::string &line : calls)
                text << "  " << line << "\n";
        }
        return text.str() + state_difference(app_controller(), model_);
    }

    void apply(const Step &step);
    void apply_fact(const Step &step);
    void apply_storage();
    bool apply_program(const Step &step);
    bool apply_media(const Step &step);
    void apply_screen(const Step &step);

    Outcome &outcome_;
    const testing::TestPartResultArray &complaints_;
    fake::Platform &fake_;
    Model model_;
    bool popup_calls_failed_ = false;
    bool popup_failed_ = false;
};

void Driver::apply(const Step &step)
{
    if (step.what == "set")
        apply_fact(step);
    else if (step.what == "content" || step.what == "no-content" || step.what == "sticks")
        apply_storage();
    else if (step.what == "config" && step.text(1) == "-")
        fake_.store.values.erase(step.text());
    else if (step.what == "config")
        fake_.store.values[step.text()] = step.number(1);
    else if (!apply_program(step) && !apply_media(step))
        apply_screen(step);
}

void Driver::apply_fact(const Step &step)
{
    const std::string fact = step.text();
    const int value = step.number(1);
    if (fact == "window")
        fake_.widgets.window_prepared = value != 0;
    else if (fact == "rotator")
        fake_.rotator.supported = value != 0;
    else if (fact == "disclaimer")
        fake_.system.has_disclaimer = value != 0;
    else if (fact == "backlight")
        fake_.system.store_content_type = value;
    else if (fact == "right-to-left")
        fake_.system.ui_orientation = value;
    else if (fact == "language")
        fake_.system.language = step.text(1);
    else if (fact == "sound")
        fake_.system.sound_route = value;
    else if (fact == "resources" && value == 0)
        fake_.system.resources.clear();
    else if (fact == "resources")
        fake_.system.resources = {
            {"ostrel_demo/player_img_china_disclaimer.png", "/res/wide.png"},
            {"ostrel_demo/player_img_china_disclaimer_portrait.png", "/res/portrait.png"}};
}

void Driver::apply_storage()
{
    fake_.storage = fake::Storage();
    fake_.storage.sticks = model_.set.facts.sticks;
    for (const auto &[path, names] : model_.set.facts.folders)
        fake_.storage.add_folder(path, names);
}

bool Driver::apply_program(const Step &step)
{
    const std::string &what = step.what;
    if (what == "create") {
        fake_.app.create();
    } else if (what == "launch") {
        fake::Application::Extras extras;
        for (const std::string &argument : step.arguments) {
            const size_t equal = argument.find('=');
            extras[argument.substr(0, equal)] = argument.substr(equal + 1);
        }
        fake_.app.launch(extras);
    } else if (what == "terminate") {
        fake_.app.terminate();
    } else if (what == "pause") {
        fake_.app.pause();
    } else if (what == "resume") {
        fake_.app.resume();
    } else if (what == "language") {
        fake_.app.change_language();
    } else if (what == "power" && step.text() == "state") {
        fake_.power.change_state(static_cast<device_power_state_e>(0));
    } else if (what == "power") {
        fake_.power.raise(step.text());
    } else if (what == "change") {
        fake_.store.change(step.text(), step.number(1));
    } else if (what == "tell") {
        fake_.store.tell_next();
    } else if (what == "wait") {
        fake_.loop.advance(step.number() / 1000.0);
    } else if (what == "idle") {
        fake_.loop.run_idle();
    } else if (what == "deliver") {
        fake_.loop.deliver_next();
    } else if (what == "key") {
        fake_.loop.press_key(step.text().c_str());
    } else if (what == "record") {
        stPipeRecord record = {step.number(), step.number(1), 0, 0, 0, 0};
        CPlayerInspector::m_OnHandleEcorePipeCB(app_controller(), &record, sizeof record);
    } else if (what == "null-record") {
        CPlayerInspector::m_OnHandleEcorePipeCB(app_controller(), nullptr, 0);
    } else {
        return false;
    }
    return true;
}

bool Driver::apply_media(const Step &step)
{
    const std::string &what = step.what;
    const int number = step.number();
    if (what == "prepared")
        fake_.media.fire_prepared();
    else if (what == "completed")
        fake_.media.fire_completed();
    else if (what == "error")
        fake_.media.fire_error(number);
    else if (what == "interrupted")
        fake_.media.fire_interrupted(static_cast<player_interrupted_code_e>(number));
    else if (what == "subtitle")
        fake_.media.fire_subtitle(1000, "Hello");
    else if (what == "parsed")
        fake_.pictures.fire_parsed(static_cast<pictrel_event_result_e>(number));
    else if (what == "decoded")
        fake_.pictures.fire_decoded(static_cast<pictrel_event_result_e>(number));
    else if (what == "conflict")
        fake_.pictures.fire_conflict(number);
    else if (what == "rotator")
        fake_.rotator.report(number);
    else
        return false;
    return true;
}

void Driver::apply_screen(const Step &step)
{
    const std::string &what = step.what;
    const int number = step.number();
    const CPlayerInspector player(*app_controller());
    fake::Widgets &widgets = fake_.widgets;
    if (what == "visible")
        widgets.change_visibility(number);
    else if (what == "turn")
        widgets.turn_window(number);
    else if (what == "press")
        widgets.press(widgets.window(), number);
    else if (what == "resize")
        widgets.fire(widgets.window(), EVAS_CALLBACK_RESIZE, nullptr);
    else if (what == "row")
        widgets.press_row(player.m_pGenlist, number);
    else if (what == "hover")
        widgets.move_to_row(player.m_pGenlist, number);
    else if (what == "focus")
        widgets.focus_row(player.m_pGenlist, static_cast<size_t>(number));
    else if (what == "list-key")
        widgets.press_key(player.m_pGenlist, step.text().c_str());
    else if (what == "list-shown")
        widgets.fire(player.m_pGenlist, EVAS_CALLBACK_SHOW, nullptr);
    else if (what == "ok")
        widgets.fire_smart(widgets.get("button", model_.buttons_made), "clicked");
    else if (what == "ok-press")
        widgets.press(widgets.get("button", model_.buttons_made), number);
    else if (what == "popup-timeout")
        widgets.fire_smart(player.m_pPopup, "timeout");
    else
        ADD_FAILURE() << "no such step: " << to_text(step);
}

} // namespace

Outcome play(const Steps &steps)
{
    Outcome outcome;
    testing::TestPartResultArray complaints;
    {
        // The fake's own complaints, above all about handles that are used after their end.
        testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &complaints);
        Driver driver(outcome, complaints);
        fake::platform().app.script = [&] { driver.run(steps); };
        std::string name = "ostrel-demo-player-tv";
        std::array<char *, 2> arguments = {name.data(), nullptr};
        demo_player_main(1, arguments.data());
        CEventManager::ReleaseInstance();
    }
    if (outcome.passed() && complaints.size() != 0)
        outcome.failure = complaints.GetTestPartResult(0).message();
    return outcome;
}

} // namespace model
