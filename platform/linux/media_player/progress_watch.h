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
 * Some readers lose their way in a broken file without a word. A file is given up when no frame has
 * come for long, though its end should have been reached; slow slides are not to be mistaken for
 * it.
 */
class StallWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** What can be seen of a file's play. */
    struct Progress {
        uint64_t shown = 0; ///< frames so far
        bool held = false;  ///< no frame is to be expected: paused, sought, stepping
        double rate = 1.0;
        std::optional<std::chrono::nanoseconds> position; ///< of the newest frame
        std::optional<std::chrono::nanoseconds> length;
    };

    void start(Time now);
    void stop() { due_.reset(); }

    /** When to check() next, if ever. */
    std::optional<Time> due() const { return due_; }

    /** @return why the file is to be given up, a literal; null: it is not */
    const char *check(const Progress &progress, Time now);

  private:
    std::optional<Time> due_;
    Time last_progress_;
    uint64_t shown_ = 0; ///< at the last progress
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
