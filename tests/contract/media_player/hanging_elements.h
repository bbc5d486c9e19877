/**
 * Elements that hang where a test wants it: a decoder, a reader of files and a sound device. The
 * first two are taken for films once they have a rank; see set_rank().
 */
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "media_player/gst_ptr.h"

namespace player_test {

/** Elements of one kind, and where they hang until the test is over. */
class Hang {
  public:
    /** So many of them, one after the other, hang at the first place from this one on. */
    void arm(int times, uint64_t place = 0)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        place_ = place;
        times_ = times;
    }

    void pass(uint64_t place)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (place < place_ || times_ == 0)
            return;
        times_--;
        hung_++;
        changed_.wait(lock, [this] { return over_; });
    }

    void count_element(int change)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        elements_ += change;
    }

    /** How many of them hang, or did. */
    int hung() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return hung_;
    }

    void end()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        over_ = true;
        changed_.notify_all();
    }

    /** Once it has been ended, and all elements are gone. @return whether they are */
    bool reset()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (elements_ > 0)
            return false;
        times_ = hung_ = 0;
        over_ = false;
        return true;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    uint64_t place_ = 0;
    int times_ = 0;
    int hung_ = 0;
    int elements_ = 0;
    bool over_ = false;
};

Hang &decoders(); ///< places are times
Hang &readers();  ///< places are offsets
Hang &devices();  ///< there is one place

/** Registers "hangingdec" and "hangingsrc", which nothing takes yet. */
void register_hanging_elements();

/** Has an element preferred to all others, or never taken: GST_RANK_NONE. */
void set_rank(const char *element, guint rank);

/** A sound device that hangs when it is opened, if it is to. @param gone it tells first that it is
 * gone */
platform::ElementPtr make_hanging_device(bool gone);

} // namespace player_test
