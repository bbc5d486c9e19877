#include "app_framework/start_pace.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "base/regular_file.h"
#include "log/platform_log.h"
#include "service_manager/service_manager.h"
#include "settings/places.h"

namespace platform {

namespace {

using std::chrono::milliseconds;

// A player that has lived for this long has had pictures on the screen, and may start anew for as
// long as the machine stands.
constexpr milliseconds SHORT_LIFE(10000);
// So many end by chance: a key, a stick that was pulled, a folder that was being filled.
constexpr int NO_WAIT_AFTER = 1;
constexpr milliseconds FIRST_WAIT(250);
constexpr int MOST_DOUBLINGS = 5; // 8 s: with the start itself the screen is dark for under 10
constexpr int LONGEST_WAIT_AFTER = NO_WAIT_AFTER + 1 + MOST_DOUBLINGS;

constexpr size_t LONGEST_RECORD = 100;

std::optional<StartRecord> read_record(const std::string &file)
{
    std::string text;
    int short_lives = 0;
    long long began = 0;
    if (read_regular_file(file, LONGEST_RECORD, text) != 0 ||
        std::sscanf(text.c_str(), "%d %lld", &short_lives, &began) != 2)
        return std::nullopt;
    return StartRecord{short_lives, milliseconds(began)};
}

bool write_record(const std::string &file, const StartRecord &record)
{
    std::error_code failure; // is seen when the file is opened
    std::filesystem::create_directories(std::filesystem::path(file).parent_path(), failure);
    std::filesystem::remove(file, failure); // it may be a pipe, which would be waited for
    std::ofstream out(file);
    out << record.short_lives << ' ' << record.began.count() << '\n' << std::flush;
    return out.good();
}

} // namespace

StartRecord next_start(const std::optional<StartRecord> &former, milliseconds now)
{
    // A record from the future is one of an earlier run of the machine.
    const bool short_life = former && former->began <= now && former->began > now - SHORT_LIFE;
    const int short_lives =
        short_life ? std::clamp(former->short_lives, 0, LONGEST_WAIT_AFTER) + 1 : 0;
    return {short_lives, now + wait_after(short_lives)};
}

milliseconds wait_after(int short_lives)
{
    if (short_lives <= NO_WAIT_AFTER)
        return milliseconds(0);
    return FIRST_WAIT * (1 << std::min(short_lives - NO_WAIT_AFTER - 1, MOST_DOUBLINGS));
}

milliseconds note_start(const std::string &file, milliseconds now)
{
    const StartRecord record = next_start(read_record(file), now);
    if (!write_record(file, record)) {
        PLATFORM_LOGW("app_framework", "the start cannot be noted in %s", file.c_str());
        return milliseconds(0);
    }
    return record.began - now;
}

void pace_start()
{
    using std::chrono::steady_clock;
    const auto now =
        std::chrono::duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    const milliseconds wait = note_start(find_runtime_dir() + "/start", now);
    if (wait <= milliseconds(0))
        return;
    PLATFORM_LOGW("app_framework",
                  "the players before this one ended soon; this one waits for %lld ms",
                  static_cast<long long>(wait.count()));
    ServiceManager::get().tell_status("The players before this one ended soon; waiting.");
    std::this_thread::sleep_for(wait);
}

} // namespace platform
