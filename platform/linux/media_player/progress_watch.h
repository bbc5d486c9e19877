/**
 * Watches whether a file's frames still come: one that stalls without a word, one that has told
 * that it is broken and shows what was decoded before, and one that will soon have shown them all.
 * They decide only. One thread at a time, which tells the time.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace platform {

/**
 * Decoders hang, and some readers lose their way in a broken file without a word. A file stalls
 * when the end of its pipeline has long had nothing in hand and waits for a frame; the wait for a
 * frame's time is none, however slow the slides. Sooner it is given up where its end should have
 * been reached. Time counts only as far as it is looked at: what passes while the machine stands
 * still, this process with it, is nobody's stall.
 */
class StallWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** What can be seen of a file's play. */
    struct Progress {
        uint64_t shown = 0; ///< pictures so far
        bool held = false;  ///< no frame is to be expected: paused, sought, stepping
        double rate = 1.0;
        std::optional<std::chrono::nanoseconds> position; ///< of the newest picture
        std::optional<std::chrono::nanoseconds> length;

        uint64_t arrivals = 0; ///< frames and gaps so far, those that come too late included
        bool in_hand = false;  ///< the newest of them waits for its time, or is being shown
        std::optional<std::chrono::nanoseconds> clock; ///< that frames wait for, while it runs
        uint64_t coded = 0;                            ///< frames that went to the decoder so far
        bool decoding = false; ///< what parses and decodes the picture is at work
        uint64_t sound = 0;    ///< pieces of sound so far
        bool sounding = false; ///< the newest, or a pause between them, waits for its time
        bool hangs = false;    ///< it does not come back from what it was asked, held or not
    };

    /** @param patience the time without a frame that is a stall; it is looked at ten times in it */
    explicit StallWatch(std::chrono::milliseconds patience) : patience_(patience) {}

    /** The play begins. */
    void start(Time now);
    void stop() { due_.reset(); }

    /** It is past whatever it stalled at, or something else was to blame. */
    void forgive() { restarted_ = false; }

    /** When to check() next, if ever. */
    std::optional<Time> due() const { return due_; }

    enum class Verdict {
        Wait,
        Restart, ///< it stalls, for the first time: open it anew where it stands
        GiveUp,  ///< it stalls again
        AtEnd,   ///< no frame comes, and it should have come to its end
    };
    Verdict check(const Progress &progress, Time now);

  private:
    std::chrono::nanoseconds interval() const { return patience_ / 10; }

    const std::chrono::nanoseconds patience_;
    std::optional<Time> due_;
    Time last_look_;
    Progress seen_;                       ///< at the last look
    std::chrono::nanoseconds still_{0};   ///< since it was seen to go on
    std::chrono::nanoseconds waiting_{0}; ///< for a frame
    bool restarted_ = false;
};

/**
 * A file that broke: when what it had decoded has been shown, and whether to begin it anew. A file
 * that plays over and over is begun anew each time, unless too little of it can be shown.
 */
class BreakWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** What can be seen of a file's play. */
    struct Progress {
        uint64_t shown = 0;   ///< frames so far
        bool playing = false; ///< frames are to be expected
        bool looping = false;
        std::optional<std::chrono::nanoseconds> position; ///< of the newest frame
    };

    /** Whether the pipeline has seen an error. */
    bool broken() const { return broken_; }

    /** A new pipeline is as good as new. */
    void on_new_pipeline();

    /** @return false when that is known already and being waited for */
    bool on_broken(uint64_t shown, Time now);

    /** A file that broke before it was started still owes its first frame. */
    void on_start(Time now);

    /** The file is begun anew. @param shown frames so far */
    void on_restart(uint64_t shown) { shown_before_ = shown; }

    /** The file has come to its end. */
    void stop() { due_.reset(); }

    std::optional<Time> due() const { return due_; }

    enum class Verdict { Wait, Restart, End };
    Verdict check(const Progress &progress, Time now);

  private:
    bool broken_ = false;
    std::optional<Time> due_;
    uint64_t shown_ = 0;        ///< at the last check
    uint64_t shown_before_ = 0; ///< when it was begun
};

/** When a file that plays on its own will soon be over, so that another can be opened meanwhile. */
class EndWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** What can be seen of a file's play. */
    struct Progress {
        std::optional<std::chrono::nanoseconds> position; ///< of the newest frame
        std::optional<std::chrono::nanoseconds> length;
    };

    /** The file begins to play, or plays another way than before. */
    void start(Time now) { due_ = now; }
    void stop() { due_.reset(); }

    /** When to check() next, if ever. */
    std::optional<Time> due() const { return due_; }

    /** @return true, once, when the end is near; never as long as nothing tells the length */
    bool check(const Progress &progress, Time now);

  private:
    std::optional<Time> due_;
};

} // namespace platform
