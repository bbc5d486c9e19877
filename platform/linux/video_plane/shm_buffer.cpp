#include "video_plane/shm_buffer.h"

#include <cerrno>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

#include "log/platform_log.h"

namespace platform {

namespace {

bool no_memory(const char *step)
{
    PLATFORM_LOGW("video plane", "no memory for another picture: %s: %s", step, strerror(errno));
    return false;
}

} // namespace

std::unique_ptr<ShmBuffer> ShmBuffer::create(int width, int height)
{
    const auto bytes = static_cast<int64_t>(width) * height * 4;
    if (width <= 0 || height <= 0 || bytes > INT32_MAX) {
        errno = EINVAL; // wl_shm counts the bytes of a pool in 32 bits
        no_memory("size");
        return nullptr;
    }
    Descriptor file(memfd_create("video-plane", MFD_CLOEXEC));
    if (!file) {
        no_memory("memfd_create");
        return nullptr;
    }
    std::unique_ptr<ShmBuffer> buffer(new ShmBuffer(std::move(file), width, height));
    const int number = buffer->file_.number();
    if (ftruncate(number, bytes) < 0) {
        no_memory("ftruncate");
        return nullptr;
    }
    // Populated at once, so that the streaming thread does not fault in thousands of pages while
    // it converts its first frames.
    void *memory =
        mmap(nullptr, buffer->size(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, number, 0);
    if (memory == MAP_FAILED) {
        no_memory("mmap");
        return nullptr;
    }
    buffer->pixels_ = static_cast<uint8_t *>(memory);
    return buffer;
}

bool ShmBuffer::share(wl_shm *shm)
{
    const WaylandPtr<wl_shm_pool> pool(
        wl_shm_create_pool(shm, file_.number(), static_cast<int32_t>(size())));
    file_ = Descriptor();
    if (pool)
        handle.reset(wl_shm_pool_create_buffer(pool.get(), 0, width_, height_, stride(),
                                               WL_SHM_FORMAT_XRGB8888));
    return handle ? true : no_memory("wl_shm");
}

ShmBuffer::~ShmBuffer()
{
    if (pixels_)
        munmap(pixels_, size());
}

} // namespace platform
