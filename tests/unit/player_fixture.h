/**
 * What the tests of the controller share: a fresh set, a fresh controller, short words for lines of
 * the transcript, and the steps that bring a controller into a state.
 */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"
#include "player/control/OstrelDemoPlayer.h"
#include "player_inspector.h"

inline constexpr char FOLDER[] = "/opt/data/demo_movie/";

/** The line of a write to the configuration store. */
std::string writes(const std::string &key, int value);

/** Lines without those that start with one of the prefixes. */
Lines without(const Lines &lines, const std::vector<std::string> &prefixes);

/** Several pieces of a transcript in a row. */
Lines join(const std::vector<Lines> &pieces);

/** What quitting the program looks like. */
Lines exit_lines();

class PlayerTest : public ::testing::Test {
  protected:
    PlayerTest();
    ~PlayerTest() override;

    /** Ends the controller's life before the test is over. */
    void destroy_controller();

    /** Fills the play list: ".jpg" names become photos, all others videos. */
    void fill_play_list(const std::vector<std::string> &names);

    /** Turns the window without any report. */
    void set_panel(ENDEMO_ROTATION_TYPE type);

    void make_window();
    void make_event_pipe();
    void make_video_player();
    /** A video player that is already in a state. */
    void make_video_player_in(player_state_e state);
    void make_picture();
    void open_popup();

    /** Creates the controller as at a launch, with these files in the built-in folder. */
    bool create(const std::vector<std::string> &files, bool repeat = true);

    /** As create(), successful and forgotten: ready to start. */
    void created(const std::vector<std::string> &files);

    fake::Platform &fake_;
    std::unique_ptr<COstrelDemoPlayer> controller_;
    CPlayerInspector player_;
};
