#include "runner.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "driver.h"
#include "generator.h"
#include "platform.h"

namespace model {

namespace {

constexpr unsigned int LIMIT_S = 60; // of one sequence
constexpr size_t KINDS = 64;

/** What the child tells; it lies in memory that both processes see. */
struct Shared {
    uint64_t seed = 0;
    long events = 0;
    char failure[16384] = {};
    struct {
        char what[24];
        long count;
    } happened[KINDS] = {};
};

class SharedMemory {
  public:
    SharedMemory()
    {
        void *place = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (place == MAP_FAILED)
            std::abort();
        shared_ = new (place) Shared();
    }
    ~SharedMemory() { munmap(shared_, sizeof(Shared)); }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    Shared *operator->() const { return shared_; }
    Shared &operator*() const { return *shared_; }

  private:
    Shared *shared_;
};

void tell(const SharedMemory &shared, const std::string &failure)
{
    std::snprintf(shared->failure, sizeof shared->failure, "%s", failure.c_str());
}

bool leaks()
{
#if defined(__SANITIZE_ADDRESS__)
    fake::reset();
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
}

/** Runs `work` in a child. @return what it told, or how it ended. @param quiet no output of it */
std::string in_a_child(const SharedMemory &shared, bool quiet, const std::function<void()> &work)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0)
        return "no process for the sequence";
    if (child == 0) {
        if (quiet) {
            const int nowhere = open("/dev/null", O_WRONLY);
            dup2(nowhere, STDOUT_FILENO);
            dup2(nowhere, STDERR_FILENO);
        }
        alarm(LIMIT_S);
        work();
        // Not exit(): the end of the test program is the parent's.
        _exit(shared->failure[0] == '\0' ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (shared->failure[0] != '\0')
        return shared->failure;
    if (WIFSIGNALED(status))
        return WTERMSIG(status) == SIGALRM
                   ? "the sequence does not come to its end"
                   : "the player died of signal " + std::to_string(WTERMSIG(status));
    return WEXITSTATUS(status) == 0 ? "" : "the player died; its last words are above";
}

void note(Shared &shared, const Outcome &outcome)
{
    shared.events += outcome.events;
    for (const auto &[what, count] : outcome.happened) {
        for (auto &entry : shared.happened) {
            if (entry.what[0] == '\0')
                std::snprintf(entry.what, sizeof entry.what, "%s", what.c_str());
            if (what == entry.what) {
                entry.count += count;
                break;
            }
        }
    }
}

} // namespace

Report play_many(uint64_t first_seed, long events, int length)
{
    // Leaks are looked for once a batch; only when there is one, each sequence is looked at.
    constexpr uint64_t BATCH = 50;

    Report report;
    for (uint64_t first = first_seed; !report.failed && report.events < events; first += BATCH) {
        const SharedMemory shared;
        const long wanted = events - report.events;
        std::string failure = in_a_child(shared, false, [&] {
            for (uint64_t seed = first; seed < first + BATCH && shared->events < wanted; ++seed) {
                shared->seed = seed;
                alarm(LIMIT_S);
                const Outcome outcome = play(make_sequence(seed, length));
                note(*shared, outcome);
                tell(shared, outcome.failure);
                if (!outcome.passed())
                    return;
            }
            if (leaks())
                tell(shared, "memory is lost");
        });
        uint64_t failing_seed = shared->seed;
        if (failure == "memory is lost") {
            for (uint64_t seed = first; seed <= shared->seed; ++seed) {
                failing_seed = seed;
                if (!try_steps(make_sequence(seed, length)).empty())
                    break;
            }
        }
        report.events += shared->events;
        for (const auto &entry : shared->happened) {
            if (entry.count != 0)
                report.happened[entry.what] += entry.count;
        }
        report.failed = !failure.empty();
        report.failure = failure;
        report.seed = failing_seed;
    }
    return report;
}

std::string try_steps(const Steps &steps)
{
    const SharedMemory shared;
    return in_a_child(shared, true, [&] {
        tell(shared, play(steps).failure);
        if (shared->failure[0] == '\0' && leaks())
            tell(shared, "memory is lost");
    });
}

// Delta debugging: leave out ever smaller pieces for as long as the rest still fails; at the end
// the same with the failing functions of each step.
Steps shrink(Steps steps)
{
    for (size_t piece = std::max<size_t>(steps.size() / 2, 1);; piece /= 2) {
        bool shorter = false;
        for (size_t start = 0; start < steps.size();) {
            Steps rest = steps;
            const size_t end = std::min(start + piece, steps.size());
            rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(start),
                       rest.begin() + static_cast<std::ptrdiff_t>(end));
            if (try_steps(rest).empty()) {
                start = end;
            } else {
                steps = rest;
                shorter = true;
            }
        }
        if (piece == 1 && !shorter)
            break;
        if (piece == 1)
            piece = 2; // once more: a step may have been needed only by one that is gone
    }
    for (Step &step : steps) {
        for (size_t i = step.failing.size(); i-- > 0;) {
            const std::string function = step.failing[i];
            step.failing.erase(step.failing.begin() + static_cast<std::ptrdiff_t>(i));
            if (try_steps(steps).empty())
                step.failing.insert(step.failing.begin() + static_cast<std::ptrdiff_t>(i),
                                    function);
        }
    }
    return steps;
}

} // namespace model
