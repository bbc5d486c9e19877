/**
 * One picture of the video plane in memory that the compositor reads too. Made by the plane, from
 * any thread; the fields that say who has it are the plane's and guarded by its lock.
 */
#pragma once

#include <memory>
#include <utility>

#include "base/descriptor.h"
#include "video_plane/video_plane.h"
#include "video_plane/wayland_handles.h"

namespace platform {

class ShmBuffer final : public PlaneBuffer {
  public:
    /**
     * Memory only, all black, not known to the compositor yet.
     *
     * @return null, with a log line, when there is no memory for it
     */
    static std::unique_ptr<ShmBuffer> create(int width, int height);

    /** Makes the compositor know it and fills in `handle`; once. */
    bool share(wl_shm *shm);

    ~ShmBuffer() override;
    ShmBuffer(const ShmBuffer &) = delete;
    ShmBuffer &operator=(const ShmBuffer &) = delete;

    uint8_t *pixels() override { return pixels_; }
    int width() const override { return width_; }
    int height() const override { return height_; }
    int stride() const override { return width_ * 4; }
    size_t size() const override { return static_cast<size_t>(stride()) * height_; }

    WaylandPtr<wl_buffer> handle; ///< gone once the plane has been closed; the pixels stay
    PlaneBufferPtr held;          ///< itself, while the compositor may still read it

  private:
    ShmBuffer(Descriptor file, int width, int height)
        : file_(std::move(file)), width_(width), height_(height)
    {
    }

    Descriptor file_; // open until share()
    uint8_t *pixels_ = nullptr;
    const int width_;
    const int height_;
};

} // namespace platform
