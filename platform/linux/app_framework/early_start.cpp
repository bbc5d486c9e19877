#include "app_framework/early_start.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

#include <malloc.h>

#include "app_framework/start_limits.h"
#include "app_framework/start_pace.h"
#include "log/platform_log.h"
#include "media_player/media_system.h"
#include "service_manager/service_manager.h"
#include "window/tv_window.h"

namespace platform {

namespace {

constexpr int COULD_NOT_RUN = 1;

// Blocks of this size and more are mapped by themselves and go back to the system when they are
// freed. The allocator starts with this size, but raises it up to a picture's with the first
// picture that is freed; later ones would lie in the heap between small things that outlive them,
// and what is free there would grow with every change of files.
constexpr int MAPPED_BLOCK = 128 * 1024;

sigset_t ending_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    return signals;
}

} // namespace

void prepare_process()
{
    // While it waits there is nothing yet that would have to be ended in good order.
    if (ServiceManager::get().present())
        pace_start();

    const std::string missing = missing_at_start();
    if (!missing.empty()) {
        PLATFORM_LOGE("app_framework", "the machine gives this program too few %s to start",
                      missing.c_str());
        std::_Exit(COULD_NOT_RUN);
    }

    // A signal that arrives while the toolkit starts waits for the main loop, and then ends the
    // application in the ordinary way.
    const sigset_t signals = ending_signals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    mallopt(M_MMAP_THRESHOLD, MAPPED_BLOCK);
    mallopt(M_TRIM_THRESHOLD, MAPPED_BLOCK);

    prepare_toolkit();

    // It takes the longest by far, so it goes on beside all the rest.
    start_media_system();
}

void let_signals_through()
{
    const sigset_t signals = ending_signals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

} // namespace platform
