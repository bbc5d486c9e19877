#include "unplayable_files/fruitless_rounds.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"

namespace platform {
namespace {

constexpr auto FIRST_PAUSE = std::chrono::milliseconds(1000);
constexpr auto LONGEST_PAUSE = std::chrono::milliseconds(60000);

/** Those of a list that are looked for in it again; one that comes again is enough. */
constexpr size_t MOST_FILES = 4096;

} // namespace

FruitlessRounds &FruitlessRounds::get()
{
    // Never destroyed: threads of files that close slowly may outlive the program's other parts.
    static auto &rounds = *new FruitlessRounds;
    return rounds;
}

FruitlessRounds::Verdict FruitlessRounds::on_passed_over(const std::string &path,
                                                         bool its_own_fault, uint64_t shown)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (std::exchange(shown_, shown) != shown) {
        begin_round();
        pause_ = {};
    }
    Verdict verdict;
    if (passed_over_.count(path) > 0) {
        const auto former =
            std::exchange(pause_, std::clamp(2 * pause_, FIRST_PAUSE, LONGEST_PAUSE));
        verdict.pause = pause_;
        verdict.give_up = pause_ == LONGEST_PAUSE && !all_own_faults_;
        if (pause_ != former && !verdict.give_up)
            PLATFORM_LOGW("player",
                          "nothing that is to be played can be opened; the player looks again in "
                          "%d s",
                          static_cast<int>(pause_.count() / 1000));
        if (listener_ && !verdict.give_up)
            listener_();
        begin_round();
    }
    if (passed_over_.size() < MOST_FILES)
        passed_over_.insert(path);
    all_own_faults_ = all_own_faults_ && its_own_fault;
    return verdict;
}

void FruitlessRounds::set_listener(std::function<void()> listener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    listener_ = std::move(listener);
}

void FruitlessRounds::begin_round()
{
    passed_over_.clear();
    all_own_faults_ = true;
}

} // namespace platform
