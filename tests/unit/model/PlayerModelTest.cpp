// Long random sequences against the model, and the model's own tools.

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "driver.h"
#include "generator.h"
#include "runner.h"

namespace {

constexpr int SEQUENCE_LENGTH = 200;

long from_environment(const char *name, long otherwise)
{
    const char *value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : std::strtol(value, nullptr, 0);
}

std::string with_numbers(const model::Steps &steps)
{
    std::string text;
    for (size_t i = 0; i < steps.size(); ++i)
        text += "  " + std::to_string(i) + "  " + model::to_text(steps[i]) + "\n";
    return text;
}

} // namespace

TEST(PlayerModel, RandomSequencesDoWhatTheModelSays)
{
    const auto seed = static_cast<uint64_t>(from_environment("MODEL_SEED", 1));
    const long events = from_environment("MODEL_EVENTS", 50000);

    const model::Report report = model::play_many(seed, events, SEQUENCE_LENGTH);

    if (report.failed) {
        const model::Steps shortest =
            model::shrink(model::make_sequence(report.seed, SEQUENCE_LENGTH));
        FAIL() << "after " << report.events << " events, with MODEL_SEED=" << report.seed << ": "
               << report.failure << "\nThe shortest sequence that fails; write it to a file and "
               << "name that in MODEL_REPLAY:\n"
               << model::to_text(shortest) << "with it: " << model::try_steps(shortest);
    }
    EXPECT_GE(report.events, events);
    // A kind of step that never happens tests nothing.
    if (events >= 50000) {
        for (const char *what :
             {"launch",   "visible",   "key",      "deliver",       "record",   "null-record",
              "prepared", "completed", "error",    "interrupted",   "subtitle", "parsed",
              "decoded",  "conflict",  "tell",     "turn",          "rotator",  "wait",
              "press",    "row",       "hover",    "focus",         "list-key", "list-shown",
              "idle",     "ok",        "ok-press", "popup-timeout", "change",   "config",
              "resize",   "language",  "pause",    "resume",        "power",    "terminate"}) {
            const auto count = report.happened.find(what);
            EXPECT_TRUE(count != report.happened.end() && count->second >= 10)
                << what << " hardly ever happens";
        }
    }
}

TEST(PlayerModel, ASequenceFromAFileDoesWhatTheModelSays)
{
    const char *name = std::getenv("MODEL_REPLAY");
    // Without a file a short sequence of every day.
    std::string text = "content /opt/data/demo_movie/ a.mp4 p.jpg\n"
                       "config db/ostrel-demo-player-tv/demo_mode 0\n"
                       "create\nlaunch\nvisible 1\nprepared\ndeliver\ncompleted\ndeliver\n"
                       "parsed 0\ndeliver\ndecoded 3\ndeliver\nwait 5000\nterminate\n";
    if (name != nullptr && *name != '\0') {
        std::ifstream file(name);
        ASSERT_TRUE(file) << "cannot read " << name;
        std::ostringstream content;
        content << file.rdbuf();
        text = content.str();
    }
    const model::Steps steps = model::parse_steps(text);
    ASSERT_FALSE(steps.empty());

    const model::Outcome outcome = model::play(steps);

    EXPECT_TRUE(outcome.passed()) << "at step " << outcome.step << ": " << outcome.failure << "\n"
                                  << with_numbers(steps);
    EXPECT_GT(outcome.events, 0);
}

TEST(PlayerModel, StepsReadAsTheyAreWritten)
{
    const model::Steps steps = model::make_sequence(7, 300);

    EXPECT_GT(steps.size(), 100U);
    EXPECT_EQ(model::to_text(model::parse_steps(model::to_text(steps))), model::to_text(steps));
}

TEST(PlayerModel, ASeedGivesTheSameSequenceEachTime)
{
    EXPECT_EQ(model::to_text(model::make_sequence(11, 200)),
              model::to_text(model::make_sequence(11, 200)));
    EXPECT_NE(model::to_text(model::make_sequence(11, 200)),
              model::to_text(model::make_sequence(12, 200)));
}
