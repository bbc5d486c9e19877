/**
 * The picture that is read and decoded before anybody has asked for it: one at most. Any thread.
 */
#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/orientation.h"
#include "base/regular_file.h"
#include "base/worker_thread.h"
#include "still_picture/colour_profile.h"
#include "still_picture/image.h"
#include "still_picture/jpeg_reader.h"

namespace platform {

/** All that is known of a picture when it has been decoded. */
struct DecodedPicture {
    Size stored;             ///< as it is in the file, not upright
    Orientation orientation; ///< what brings it upright
    Image image;             ///< in the colours of sRGB
    ProfileUse profile;
};

class PictureAhead {
  public:
    /** The one of this process. */
    static PictureAhead &get();

    /** Has the look-ahead open pictures here, for the plane that is there then. Main loop. */
    void join_lookahead();

    /** Begins to decode a picture for a panel of a size, in the place of any other. */
    void open(const std::string &path, const Size &panel);

    /** Waits until the one that was opened has been decoded, or could not be; for tests. */
    void wait_until_done();

    /** Lets go of it. */
    void drop();

    /**
     * Hands a picture over that is wanted, and waits for it if need be. Lets go of any other.
     *
     * @param panel    size of the panel
     * @param progress moves as long as the one that is waited for does; cancelled, it ends the wait
     * @return null when there is none for this panel, it could not be decoded or has changed since
     */
    std::unique_ptr<DecodedPicture> take(const std::string &path, const Size &panel,
                                         JpegReader::Progress &progress);

  private:
    struct Work {
        std::string path;
        Size panel;
        std::optional<FileStamp> stamp; ///< the worker's until the result is there
        std::promise<std::unique_ptr<DecodedPicture>> promise;
        std::future<std::unique_ptr<DecodedPicture>> result = promise.get_future();
        WorkerThread thread{"picture-ahead"};
        JpegReader::Progress progress{thread.stopping()};

        void decode();
    };

    std::shared_ptr<Work> exchange(std::shared_ptr<Work> next);

    std::mutex mutex_;
    std::shared_ptr<Work> work_;
};

} // namespace platform
