/**
 * The set as the unit tests see it: every C function that the player calls, EFL's included, records
 * its call here and answers from here. There is one at a time; each test begins with reset(). All
 * of it is for one thread.
 */
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "main_loop.h"
#include "media.h"
#include "registry.h"
#include "script.h"
#include "services.h"
#include "transcript.h"
#include "widgets.h"

namespace fake {

/** Texts that the player was given and has to release with free(). */
class Texts {
  public:
    char *give(const std::string &source, const std::string &text);
    /** free() was called. @return where the text came from; empty when it is none of these. */
    std::string taken_back(const void *text);
    /** Where the texts came from that were not released. */
    std::vector<std::string> held() const;

  private:
    std::map<const void *, std::string> sources_;
};

class Platform {
  public:
    Registry registry;
    Script script;
    Transcript transcript;
    Texts texts;
    MainLoop loop;
    Widgets widgets;
    MediaPlayer media;
    Pictures pictures;
    Application app;
    Store store;
    System system;
    Storage storage;
    usb_device_list_s usb_list;
    /** Closed ones as well, so that they are recognised. */
    std::vector<std::unique_ptr<OpenFolder>> open_folders;
    Rotator rotator;
    Power power;
    Keys keys;
    /** Services and blocks that the player holds at the moment, by a readable name. */
    std::vector<std::string> held;

    // What tests ask most.
    Transcript::Lines calls() const { return transcript.calls(); }
    Transcript::Lines logs() const { return transcript.logs(); }
    Transcript::Lines lines() const { return transcript.lines(); }
    Transcript::Lines all() const { return transcript.all(); }
    Transcript::Lines of(std::initializer_list<const char *> prefixes) const
    {
        return transcript.of(prefixes);
    }
    void forget() { transcript.clear(); }
    void fail(const std::string &function, int result = -1, int nth = 1)
    {
        script.fail(function, result, nth);
    }

    /** Everything that the player holds: handles, registrations, blocks, texts. */
    std::vector<std::string> leftovers() const;

    // Behind the C functions.
    template <typename... Args> void call(const char *function, const Args &...args)
    {
        transcript.add(Transcript::Kind::Effect, function, format_call(function, args...));
    }
    template <typename... Args> void query(const char *function, const Args &...args)
    {
        transcript.add(Transcript::Kind::Query, function, format_call(function, args...));
    }
    /** A call with a result. @return an ordered failure, or 0 */
    template <typename... Args> int told(const char *function, const Args &...args)
    {
        call(function, args...);
        return script.result(function);
    }
    template <typename... Args> int asked(const char *function, const Args &...args)
    {
        query(function, args...);
        return script.result(function);
    }
    /** A call on a handle, which is checked. */
    template <typename Handle, typename... Args>
    void call_on(const char *function, Handle *handle, const Args &...args)
    {
        call(function, static_cast<const void *>(checked(function, handle)), args...);
    }
    /** Checks a handle and names it. */
    template <typename T> T *checked(const char *function, T *handle)
    {
        registry.check(function, handle);
        return handle;
    }
    void hold(const std::string &what);
    void release(const std::string &what);
};

/** The set of the running test. */
Platform &platform();

/** A new set; everything about the one before is gone. */
Platform &reset();

} // namespace fake
