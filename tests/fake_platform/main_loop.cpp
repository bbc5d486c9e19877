#include "main_loop.h"

#include <cmath>

#include <Ecore_Input.h>
#include <gtest/gtest.h>

#include "platform.h"

namespace fake {
namespace {

bool alive(const void *handle)
{
    return platform().registry.alive(handle);
}

// Ends what a handle stands for. @return its data, or null when it did not live.
template <typename Kind> void *end(const char *function, const void *handle)
{
    if (!platform().registry.kill(function, handle))
        return nullptr;
    return static_cast<const Kind *>(handle)->data;
}

int64_t microseconds(double seconds)
{
    return std::llround(seconds * 1e6);
}

} // namespace

void MainLoop::advance(double seconds)
{
    const int64_t end = now_ + microseconds(seconds);
    while (Timer *timer = next_due(end)) {
        now_ = timer->due;
        fire(*timer);
    }
    now_ = end;
}

Timer *MainLoop::next_due(int64_t until) const
{
    Timer *next = nullptr;
    for (const auto &timer : timers_) {
        if (alive(timer.get()) && timer->due <= until && (!next || timer->due < next->due))
            next = timer.get();
    }
    return next;
}

void MainLoop::fire(Timer &timer)
{
    const bool renew = timer.function(timer.data) == ECORE_CALLBACK_RENEW;
    if (!alive(&timer))
        return;
    if (renew)
        timer.due += microseconds(timer.interval);
    else
        platform().registry.kill("ecore_timer_del", &timer);
}

void MainLoop::run_idle()
{
    const size_t count = idlers_.size();
    for (size_t i = 0; i < count; ++i) {
        Idler &idler = *idlers_[i];
        if (!alive(&idler))
            continue;
        const bool renew = idler.function(idler.data) == ECORE_CALLBACK_RENEW;
        if (!renew && alive(&idler))
            platform().registry.kill("ecore_idler_del", &idler);
    }
}

void MainLoop::drain_pipe()
{
    while (deliver_next()) {
    }
}

bool MainLoop::deliver_next()
{
    for (const auto &entry : pipes_) {
        Pipe &pipe = *entry;
        if (!alive(&pipe) || pipe.records.empty())
            continue;
        std::vector<unsigned char> record = std::move(pipe.records.front());
        pipe.records.pop_front();
        pipe.handler(pipe.data, record.data(), static_cast<unsigned int>(record.size()));
        return true;
    }
    return false;
}

void MainLoop::deliver(std::vector<unsigned char> record)
{
    for (const auto &pipe : pipes_) {
        if (alive(pipe.get())) {
            pipe->handler(pipe->data, record.data(), static_cast<unsigned int>(record.size()));
            return;
        }
    }
    ADD_FAILURE() << "no pipe to deliver a record through";
}

std::vector<bool> MainLoop::raise(int type, void *event)
{
    std::vector<bool> results;
    for (size_t i = 0; i < handlers_.size(); ++i) {
        EventHandler &handler = *handlers_[i];
        if (handler.type == type && alive(&handler))
            results.push_back(handler.function(handler.data, type, event) != 0);
    }
    return results;
}

std::vector<bool> MainLoop::press_key(const char *key_name)
{
    Ecore_Event_Key event = {};
    event.keyname = key_name;
    event.key = key_name;
    return raise(EVENT_KEY_DOWN, &event);
}

std::vector<double> MainLoop::timers() const
{
    std::vector<double> intervals;
    for (const auto &timer : timers_) {
        if (alive(timer.get()))
            intervals.push_back(timer->interval);
    }
    return intervals;
}

size_t MainLoop::idlers() const
{
    size_t count = 0;
    for (const auto &idler : idlers_)
        count += alive(idler.get()) ? 1 : 0;
    return count;
}

size_t MainLoop::queued_records() const
{
    size_t count = 0;
    for (const auto &pipe : pipes_)
        count += alive(pipe.get()) ? pipe->records.size() : 0;
    return count;
}

Ecore_Timer *MainLoop::add_timer(double interval, Ecore_Task_Cb function, const void *data)
{
    if (interval <= 0.0) {
        ADD_FAILURE() << "ecore_timer_add() with the interval " << interval;
        return nullptr;
    }
    timers_.push_back(std::make_unique<Timer>(
        Timer{interval, function, const_cast<void *>(data), now_ + microseconds(interval)}));
    platform().registry.add(timers_.back().get(), "timer");
    return reinterpret_cast<Ecore_Timer *>(timers_.back().get());
}

void *MainLoop::remove_timer(Ecore_Timer *timer)
{
    return end<Timer>("ecore_timer_del", timer);
}

Ecore_Idler *MainLoop::add_idler(Ecore_Task_Cb function, const void *data)
{
    idlers_.push_back(std::make_unique<Idler>(Idler{function, const_cast<void *>(data)}));
    platform().registry.add(idlers_.back().get(), "idler");
    return reinterpret_cast<Ecore_Idler *>(idlers_.back().get());
}

void *MainLoop::remove_idler(Ecore_Idler *idler)
{
    return end<Idler>("ecore_idler_del", idler);
}

Ecore_Pipe *MainLoop::add_pipe(Ecore_Pipe_Cb handler, const void *data)
{
    pipes_.push_back(std::make_unique<Pipe>(Pipe{handler, const_cast<void *>(data), {}}));
    platform().registry.add(pipes_.back().get(), "pipe");
    return reinterpret_cast<Ecore_Pipe *>(pipes_.back().get());
}

void *MainLoop::remove_pipe(Ecore_Pipe *pipe)
{
    return end<Pipe>("ecore_pipe_del", pipe);
}

bool MainLoop::write_pipe(Ecore_Pipe *pipe, const void *buffer, unsigned int size)
{
    if (!platform().registry.check("ecore_pipe_write", pipe))
        return false;
    const auto *bytes = static_cast<const unsigned char *>(buffer);
    reinterpret_cast<Pipe *>(pipe)->records.emplace_back(bytes, bytes + size);
    return true;
}

Ecore_Event_Handler *MainLoop::add_handler(int type, Ecore_Event_Handler_Cb function,
                                           const void *data)
{
    handlers_.push_back(
        std::make_unique<EventHandler>(EventHandler{type, function, const_cast<void *>(data)}));
    platform().registry.add(handlers_.back().get(),
                            type == EVENT_KEY_DOWN ? "key-down handler" : "device-add handler");
    return reinterpret_cast<Ecore_Event_Handler *>(handlers_.back().get());
}

void *MainLoop::remove_handler(Ecore_Event_Handler *handler)
{
    return end<EventHandler>("ecore_event_handler_del", handler);
}

} // namespace fake
