/**
 * The fake's main loop: nothing runs by itself. The test moves the clock, lets the loop become
 * idle, or lets the pipe deliver.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <Ecore.h>

namespace fake {

struct Timer {
    double interval;
    Ecore_Task_Cb function;
    void *data;
    int64_t due; /**< microseconds */
};

struct Idler {
    Ecore_Task_Cb function;
    void *data;
};

struct Pipe {
    Ecore_Pipe_Cb handler;
    void *data;
    std::deque<std::vector<unsigned char>> records;
};

struct EventHandler {
    int type;
    Ecore_Event_Handler_Cb function;
    void *data;
};

class MainLoop {
  public:
    static constexpr int EVENT_KEY_DOWN = 101;
    static constexpr int EVENT_DEVICE_ADD = 102;

    /** Moves the clock and fires the timers that fall due, in the order of their times. */
    void advance(double seconds);

    /** Calls every idler once. */
    void run_idle();

    /** Hands every record to its pipe's handler, also those that the handler posts meanwhile. */
    void drain_pipe();

    /** Hands the record that waits longest to its pipe's handler. @return whether there was one. */
    bool deliver_next();

    /** Hands one record to the pipe's handler as it is. */
    void deliver(std::vector<unsigned char> record);

    /** Raises an Ecore event. @return what the handlers returned, in order. */
    std::vector<bool> raise(int type, void *event);

    /** Raises ECORE_EVENT_KEY_DOWN for a key name. */
    std::vector<bool> press_key(const char *key_name);

    /** Intervals of the timers that run, in the order they were made. */
    std::vector<double> timers() const;

    size_t idlers() const;
    size_t queued_records() const;

    double now() const { return static_cast<double>(now_) / 1e6; }

    // Behind the C functions.
    Ecore_Timer *add_timer(double interval, Ecore_Task_Cb function, const void *data);
    void *remove_timer(Ecore_Timer *timer);
    Ecore_Idler *add_idler(Ecore_Task_Cb function, const void *data);
    void *remove_idler(Ecore_Idler *idler);
    Ecore_Pipe *add_pipe(Ecore_Pipe_Cb handler, const void *data);
    void *remove_pipe(Ecore_Pipe *pipe);
    bool write_pipe(Ecore_Pipe *pipe, const void *buffer, unsigned int size);
    Ecore_Event_Handler *add_handler(int type, Ecore_Event_Handler_Cb function, const void *data);
    void *remove_handler(Ecore_Event_Handler *handler);

  private:
    Timer *next_due(int64_t until) const;
    void fire(Timer &timer);

    int64_t now_ = 0;
    // Kept to the end, so that no address is given out twice and a stale handle is recognised.
    std::vector<std::unique_ptr<Timer>> timers_;
    std::vector<std::unique_ptr<Idler>> idlers_;
    std::vector<std::unique_ptr<Pipe>> pipes_;
    std::vector<std::unique_ptr<EventHandler>> handlers_;
};

} // namespace fake
