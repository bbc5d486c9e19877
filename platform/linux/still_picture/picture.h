/**
 * One picture on its way from the file to the panel. parse() and decode() work on a thread of the
 * picture's own, which also delivers the events; one that hangs in them is given up by another
 * thread, and left to itself. render() and rotate() draw at once. The functions are for one thread
 * at a time, the events' receiver may call them too.
 */
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "still_picture.h"

#include "base/worker_thread.h"
#include "still_picture/jpeg_reader.h"
#include "still_picture/picture_ahead.h"
#include "unplayable_files/unplayable_files.h"
#include "video_plane/video_plane.h"

namespace platform {

/** Notices that work stands still. Decides only; knows no time, so one that was stopped waits. */
class StandstillWatch {
  public:
    /** Looks in a row that see nothing move, the first one not counted, until it stands still. */
    static constexpr int LOOKS = 5;

    /** @param steps that the work has taken. @return whether it stands still */
    bool look(unsigned int steps)
    {
        in_vain_ = std::exchange(seen_, steps) == steps ? in_vain_ + 1 : 0;
        return in_vain_ >= LOOKS;
    }

  private:
    std::optional<unsigned int> seen_;
    int in_vain_ = 0;
};

/** The record that the application sees is the first part of it. */
class StillPicture : public _pictrel_s, public std::enable_shared_from_this<StillPicture> {
  public:
    /** How long the reading of a picture may stand still before it is given up. */
    static constexpr std::chrono::milliseconds LONGEST_STAND{10000};

    /**
     * Makes a picture that lives until destroy().
     *
     * @param path     any bytes but null
     * @param patience how long its reading may stand still
     */
    static StillPicture *create(std::string path,
                                std::chrono::milliseconds patience = LONGEST_STAND);

    /** The picture that was made last, or null once it has been destroyed. */
    static StillPicture *latest();

    const std::string &path() const { return path_; }
    bool rendered() const { return rendered_; }

    /** Name of the colour profile that was applied; only once it was rendered. */
    const std::string &colour_profile() const { return decoded_->profile.applied; }

    /** Ends it in whatever state; no event comes afterwards. */
    void destroy();

    void set_plane(std::shared_ptr<VideoPlane> plane);
    void set_mixer(bool on);
    void set_callback(pictrel_event_type_e type, pictrel_event_cb callback, void *user_data);

    /* Each returns false, and does nothing, when it is not its turn. */
    bool parse();
    bool decode();
    bool render();
    bool rotate(int degrees);

    StillPicture(std::string path, std::chrono::milliseconds patience);

  private:
    enum class Phase { Created, Parsing, Parsed, Decoding, Decoded, Failed };
    using Time = WorkerThread::Clock::time_point;
    struct Callback {
        pictrel_event_cb function = nullptr;
        void *user_data = nullptr;
    };

    bool begin(Phase from, Phase to, void (StillPicture::*work)(Time));
    bool watch();
    void look_after();
    Size panel() const;
    void read_header(Time asked);
    void read_pixels(Time asked);
    void fail(pictrel_event_type_e type, pictrel_event_result_e result, Time asked,
              const char *reason, UnplayableFile::Kind kind);
    bool show(int degrees, pictrel_event_type_e done);
    void post_event(pictrel_event_type_e type, pictrel_event_result_e result);
    void deliver(pictrel_event_type_e type, pictrel_event_result_e result);
    Phase phase();
    void set_phase(Phase phase);
    bool move_on(Phase from, Phase to);

    const std::string path_;
    const std::chrono::milliseconds patience_;
    std::shared_ptr<StillPicture> self_; // the application's reference
    std::shared_ptr<VideoPlane> plane_;
    bool mixer_ = false;
    bool rendered_ = false;

    std::mutex mutex_; // guards what follows
    Phase phase_ = Phase::Created;
    std::array<Callback, PICTREL_EVENT_RESOURCE_CONFLICT + 1> callbacks_;
    bool destroyed_ = false;
    int delivering_ = 0;
    std::condition_variable delivered_;

    WorkerThread worker_{"still-picture"};
    JpegReader::Progress progress_{worker_.stopping()};

    WorkerThread watch_{"photo-watch"};
    // The watch's own.
    std::optional<Time> look_due_;
    StandstillWatch standstill_;

    // The worker's until the picture is parsed or decoded, read-only then.
    std::unique_ptr<JpegReader> reader_; ///< null also when the pixels are there from the beginning
    std::unique_ptr<DecodedPicture> decoded_;
};

} // namespace platform
