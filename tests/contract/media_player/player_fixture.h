/**
 * A player that shows its frames on a plane without a screen, a folder for its files, and a record
 * of what it told.
 */
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "clips.h"
#include "media_player/player.h"
#include "video_plane/video_plane.h"

namespace player_test {

/** A copy of what the plane showed. */
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;

    uint32_t at(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }

    /** The colour at a place, as one letter: r, g, b, w for the clip's quarters, k for black. */
    char colour(int x, int y) const;

    /** The colours in the middle of the quarters of a part of it, from the top left clockwise. */
    std::string quarters(int x, int y, int width, int height) const;
    std::string quarters() const { return quarters(0, 0, width, height); }
};

class PlayerTest : public testing::Test {
  protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    void SetUp() override;
    void TearDown() override;

    /** A build with sanitizers is slow to load its decoders: that must not count as a failure. */
    static platform::PlayerOptions usual_options();

    /** Makes the player anew. */
    void make_player(platform::PlayerOptions options = usual_options());

    std::string path(const std::string &name) const { return folder_ + "/" + name; }

    /** Makes a clip in the folder. @return its path */
    std::string clip(const std::string &name, const Clip &facts = {}) const;

    /** Names a file and prepares it; does not wait. */
    int prepare(const std::string &uri);

    /** Prepares a file and waits for it. */
    testing::AssertionResult prepared(const std::string &uri);

    /** Prepares and starts a file, and waits for its first frame. */
    testing::AssertionResult playing(const std::string &uri);

    /** Runs the main loop until something is so. @return false when it is not in time */
    bool wait_for(const std::function<bool()> &condition, double seconds = 40) const;

    /** Waits until something has been told. */
    bool wait_for_event(const std::string &event, double seconds = 40) const;

    /** Waits for anything to be told, while the main loop does not run. */
    bool told_without_main_loop(double seconds);

    /** Runs the main loop for a time in which something must not happen. */
    bool stays(const std::function<bool()> &condition, double seconds) const;

    /** What was told, in its order: "prepared", "completed", "error -2", "interrupted 4", ... */
    std::vector<std::string> events() const;
    int count(const std::string &event) const;

    uint64_t shown() const { return plane_->statistics().presented; }
    /** Pictures whose time has come: a busy machine leaves some out. */
    uint64_t due() const { return shown() + plane_->statistics().dropped; }
    int64_t position() const { return player_->status().position_ms; }
    Picture picture() const;

    std::string folder_;
    std::shared_ptr<platform::VideoPlane> plane_;
    std::shared_ptr<platform::Player> player_;
    std::atomic<std::thread::id> callback_thread_{};
    std::function<void(const std::string &)> on_event_; ///< called inside each callback
    std::function<void(const Picture &)> on_picture_;   ///< sees each picture as it is shown
    int plane_width_ = 320;
    int plane_height_ = 180;

  private:
    void record(const std::string &event);
    void make_plane();

    mutable std::mutex mutex_;
    std::condition_variable told_;
    std::vector<std::string> events_;
    Picture picture_;
};

} // namespace player_test
