#include <mutex>
#include <new>
#include <vector>

#include "video_plane/video_plane.h"

namespace platform {

namespace {

class MemoryBuffer : public PlaneBuffer {
  public:
    MemoryBuffer(int width, int height)
        : width_(width), height_(height), pixels_(static_cast<size_t>(width) * height * 4)
    {
    }
    uint8_t *pixels() override { return pixels_.data(); }
    int width() const override { return width_; }
    int height() const override { return height_; }
    int stride() const override { return width_ * 4; }
    size_t size() const override { return pixels_.size(); }

  private:
    const int width_;
    const int height_;
    std::vector<uint8_t> pixels_;
};

class OffscreenPlane : public VideoPlane {
  public:
    OffscreenPlane(int width, int height, std::function<void(const PlaneBuffer &)> on_present)
        : width_(width), height_(height), on_present_(std::move(on_present))
    {
    }

    int width() const override { return width_; }
    int height() const override { return height_; }

    PlaneBufferPtr acquire() override
    {
        try {
            return std::make_shared<MemoryBuffer>(width_, height_);
        } catch (const std::bad_alloc &) {
            return nullptr;
        }
    }

    bool present(const PlaneBufferPtr &buffer) override { return put_up(buffer, 1); }

    bool present_stand_in(const PlaneBufferPtr &buffer, uint64_t presented) override
    {
        return presented == presented_ && put_up(buffer, 0);
    }

  private:
    bool put_up(const PlaneBufferPtr &buffer, int counts)
    {
        if (!buffer)
            return false;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            shown_ = buffer;
        }
        presented_ += counts;
        if (on_present_)
            on_present_(*buffer);
        return true;
    }

    const int width_;
    const int height_;
    const std::function<void(const PlaneBuffer &)> on_present_;
    std::mutex mutex_;
    PlaneBufferPtr shown_;
};

} // namespace

std::shared_ptr<VideoPlane>
VideoPlane::offscreen(int width, int height, std::function<void(const PlaneBuffer &)> on_present)
{
    return std::make_shared<OffscreenPlane>(width, height, std::move(on_present));
}

} // namespace platform
