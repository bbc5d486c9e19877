// Loaded in front of the player by the end-to-end tests, so that they need not wait for minutes, or
// have all the time they want to look at what is gone after seconds. The player has no such switch
// and knows nothing of it: its timers are made of the same numbers as ever.
//
// TIMER_SPEED         how many times as fast timers run: 100 makes five minutes of three seconds,
//                     0.1 makes three seconds last for thirty
// TIMER_SPEED_ABOVE   only timers of at least this many seconds (default: 1)

#include <cmath>
#include <cstdlib>

#include <Ecore.h>

#include "next.h"

namespace {

double number_from(const char *variable, double otherwise)
{
    const char *text = std::getenv(variable);
    const double number = text ? std::strtod(text, nullptr) : otherwise;
    return std::isfinite(number) && number > 0.0 ? number : otherwise;
}

double at_test_speed(double seconds)
{
    static const double speed = number_from("TIMER_SPEED", 1.0);
    static const double above = number_from("TIMER_SPEED_ABOVE", 1.0);
    return seconds >= above ? seconds / speed : seconds;
}

} // namespace

Ecore_Timer *ecore_timer_add(double seconds, Ecore_Task_Cb callback, const void *data)
{
    static auto *const original = next<decltype(ecore_timer_add)>("ecore_timer_add");
    return original(at_test_speed(seconds), callback, data);
}

void ecore_timer_interval_set(Ecore_Timer *timer, double seconds)
{
    static auto *const original =
        next<decltype(ecore_timer_interval_set)>("ecore_timer_interval_set");
    original(timer, at_test_speed(seconds));
}
