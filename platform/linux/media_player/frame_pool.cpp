#include "media_player/frame_pool.h"

#include <list>
#include <memory>
#include <mutex>

#include <gst/video/gstvideometa.h>
#include <gst/video/gstvideopool.h>

namespace {

/** Buffers that their decoder has given back while somebody still reads the same memory. */
struct Readers {
    std::mutex mutex;
    std::list<GstBuffer *> buffers;
};

struct FramePool {
    GstVideoBufferPool base;
    Readers *still_read; ///< ours; GObject memory knows no constructors
};

struct FramePoolClass {
    GstVideoBufferPoolClass base;
};

GType frame_pool_get_type();

G_DEFINE_TYPE(FramePool, frame_pool, GST_TYPE_VIDEO_BUFFER_POOL)

Readers &readers_of(gpointer pool)
{
    return *static_cast<FramePool *>(pool)->still_read;
}

GstBufferPoolClass *parent()
{
    return GST_BUFFER_POOL_CLASS(frame_pool_parent_class);
}

// The memory is the process's own: where it is holds as long as there is the buffer.
gboolean map_briefly(GstVideoMeta *meta, guint plane, GstMapInfo *info, gpointer *data,
                     gint *stride, GstMapFlags flags)
{
    if (!gst_buffer_map(meta->buffer, info, flags))
        return FALSE;
    *data = info->data + meta->offset[plane];
    *stride = meta->stride[plane];
    gst_buffer_unmap(meta->buffer, info);
    return TRUE;
}

gboolean keep_unmapped(GstVideoMeta *, guint, GstMapInfo *)
{
    return TRUE;
}

GstFlowReturn frame_pool_alloc(GstBufferPool *pool, GstBuffer **buffer,
                               GstBufferPoolAcquireParams *params)
{
    const GstFlowReturn result = parent()->alloc_buffer(pool, buffer, params);
    if (result != GST_FLOW_OK)
        return result;
    if (GstVideoMeta *meta = gst_buffer_get_video_meta(*buffer)) {
        meta->map = map_briefly;
        meta->unmap = keep_unmapped;
    }
    return GST_FLOW_OK;
}

void frame_pool_release(GstBufferPool *pool, GstBuffer *buffer)
{
    if (gst_buffer_is_all_memory_writable(buffer)) {
        parent()->release_buffer(pool, buffer);
        return;
    }
    Readers &readers = readers_of(pool);
    const std::lock_guard<std::mutex> lock(readers.mutex);
    readers.buffers.push_back(buffer);
}

// What is still being read goes for good with its last reader.
void release_what_nobody_reads(GstBufferPool *pool, bool all)
{
    Readers &readers = readers_of(pool);
    const std::lock_guard<std::mutex> lock(readers.mutex);
    readers.buffers.remove_if([&](GstBuffer *buffer) {
        const bool released = all || gst_buffer_is_all_memory_writable(buffer);
        if (released)
            parent()->release_buffer(pool, buffer);
        return released;
    });
}

GstFlowReturn frame_pool_acquire(GstBufferPool *pool, GstBuffer **buffer,
                                 GstBufferPoolAcquireParams *params)
{
    release_what_nobody_reads(pool, false);
    return parent()->acquire_buffer(pool, buffer, params);
}

gboolean frame_pool_stop(GstBufferPool *pool)
{
    release_what_nobody_reads(pool, true);
    return parent()->stop(pool);
}

void frame_pool_finalize(GObject *object)
{
    const std::unique_ptr<Readers> last(reinterpret_cast<FramePool *>(object)->still_read);
    G_OBJECT_CLASS(frame_pool_parent_class)->finalize(object); // stops the pool
}

void frame_pool_class_init(FramePoolClass *type)
{
    auto *pool = GST_BUFFER_POOL_CLASS(type);
    pool->alloc_buffer = frame_pool_alloc;
    pool->acquire_buffer = frame_pool_acquire;
    pool->release_buffer = frame_pool_release;
    pool->stop = frame_pool_stop;
    G_OBJECT_CLASS(type)->finalize = frame_pool_finalize;
}

void frame_pool_init(FramePool *pool)
{
    pool->still_read = new Readers;
}

} // namespace

namespace platform {

PoolPtr make_frame_pool()
{
    auto *pool = GST_BUFFER_POOL(g_object_new(frame_pool_get_type(), nullptr));
    return PoolPtr(GST_BUFFER_POOL(gst_object_ref_sink(pool)));
}

} // namespace platform
