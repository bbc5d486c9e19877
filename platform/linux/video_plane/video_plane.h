/**
 * The video plane: one opaque picture of the panel's size under what a window shows, shared by the
 * media player and the still pictures. Whatever was presented last stays until the next picture
 * comes; the plane is never blanked.
 *
 * On a Wayland window it is a subsurface with wl_shm buffers; without a window (tests) it is
 * memory only. for_window() and offscreen() are for the main-loop thread, the rest for any thread.
 */
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include <Evas.h>

namespace platform {

/** One picture of the plane: 32-bit XRGB pixels in host byte order (BGRx in memory). */
class PlaneBuffer {
  public:
    virtual ~PlaneBuffer() = default;
    virtual uint8_t *pixels() = 0;
    virtual int width() const = 0;
    virtual int height() const = 0;
    virtual int stride() const = 0; ///< bytes from row to row
    virtual size_t size() const = 0;
};

/** The last reference to go gives the memory back to its plane. */
using PlaneBufferPtr = std::shared_ptr<PlaneBuffer>;

class VideoPlane {
  public:
    struct Statistics {
        uint64_t presented = 0; ///< pictures handed to the compositor
        /** Pictures that were not shown: they came late, or there was no memory for them. */
        uint64_t dropped = 0;
        uint64_t late = 0; ///< of those presented: not ready by their time
    };

    virtual ~VideoPlane() = default;

    /**
     * The plane under a window, made at the first call and kept for the window's life; where the
     * window is drawn in another one, until outer_window_gone().
     *
     * @return null when the window has no surface yet or the compositor lacks subsurfaces
     */
    static std::shared_ptr<VideoPlane> for_window(Evas_Object *window);

    /** The plane of the window that got one last, null when it is gone. */
    static std::shared_ptr<VideoPlane> current();

    /**
     * Takes the plane of a deleted window away, which would have shown black in its place before
     * the window that it was drawn in had gone. Main-loop thread only.
     */
    static void outer_window_gone();

    /**
     * Says whether the windows have anything to show, which planes then lie under, from the
     * window's next frame on. Under windows that have not the compositor would blend every picture
     * with nothing. Main-loop thread only.
     */
    static void set_covered(bool covered);

    /**
     * Has somebody told, once, that the compositor has been given a first picture, of whichever
     * plane has one next. The call comes from the thread that presents it. Any thread.
     */
    static void call_when_shown(std::function<void()> callback);

    /** A plane without a screen; `on_present` sees each picture, on the presenting thread. */
    static std::shared_ptr<VideoPlane>
    offscreen(int width, int height, std::function<void(const PlaneBuffer &)> on_present = {});

    /** Native panel size in pixels. */
    virtual int width() const = 0;
    virtual int height() const = 0;

    /**
     * A buffer of the panel's size to draw into; its contents are undefined.
     *
     * @return null when there is no memory for one
     */
    virtual PlaneBufferPtr acquire() = 0;

    /**
     * Shows a buffer and keeps it until the compositor has let go of it. It must not be drawn into
     * after that.
     *
     * @return false when the plane has been closed
     */
    virtual bool present(const PlaneBufferPtr &buffer) = 0;

    /**
     * Shows what stands in for a picture, until the next one comes; it is none of those that are
     * counted or told of.
     *
     * @param presented pictures that the plane has had, as the caller knows
     * @return false when it has had another one since, has been closed, or is one for tests
     */
    virtual bool present_stand_in(const PlaneBufferPtr & /*buffer*/, uint64_t /*presented*/)
    {
        return false;
    }

    /** Counts since the plane was made, of all who show pictures on it. Any thread; no lock. */
    Statistics statistics() const { return {presented_, dropped_, late_}; }

    /** Counts a picture that its owner gave up before present(). Any thread; no lock. */
    void count_dropped() { ++dropped_; }

    /** Counts a picture that was presented after its time. Any thread; no lock. */
    void count_late() { ++late_; }

  protected:
    /** To be told by a plane when the compositor has been given its first picture. */
    static void tell_shown();

    std::atomic<uint64_t> presented_{0};

  private:
    std::atomic<uint64_t> dropped_{0};
    std::atomic<uint64_t> late_{0};
};

} // namespace platform
