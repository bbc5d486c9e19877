// A frame that its decoder still needs goes on to the sink without being copied.

#include <memory>

#include <gst/video/gstvideometa.h>
#include <gst/video/gstvideopool.h>
#include <gtest/gtest.h>

#include "media_player/frame_pool.h"
#include "media_player/plane_sink.h"

namespace player_test {
namespace {

using platform::BufferPtr;

class FramePool : public testing::Test {
  protected:
    void SetUp() override
    {
        gst_init(nullptr, nullptr);
        gst_video_info_set_format(&info_, GST_VIDEO_FORMAT_I420, 64, 32);
        caps_.reset(gst_video_info_to_caps(&info_));
        pool_ = platform::make_frame_pool();
        GstStructure *config = gst_buffer_pool_get_config(pool_.get());
        gst_buffer_pool_config_set_params(config, caps_.get(),
                                          static_cast<guint>(GST_VIDEO_INFO_SIZE(&info_)), 0, 0);
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
        ASSERT_TRUE(gst_buffer_pool_set_config(pool_.get(), config));
        ASSERT_TRUE(gst_buffer_pool_set_active(pool_.get(), TRUE));
    }

    void TearDown() override { EXPECT_TRUE(gst_buffer_pool_set_active(pool_.get(), FALSE)); }

    BufferPtr acquire()
    {
        GstBuffer *buffer = nullptr;
        EXPECT_EQ(gst_buffer_pool_acquire_buffer(pool_.get(), &buffer, nullptr), GST_FLOW_OK);
        return BufferPtr(buffer);
    }

    static GstMemory *memory(const BufferPtr &buffer)
    {
        return gst_buffer_peek_memory(buffer.get(), 0);
    }

    // An address tells nothing: what was let go of comes back at the same one.
    static void mark(const BufferPtr &buffer)
    {
        gst_mini_object_set_qdata(GST_MINI_OBJECT(memory(buffer)), mark_, &mark_, nullptr);
    }

    static bool is_marked(const BufferPtr &buffer)
    {
        return gst_mini_object_get_qdata(GST_MINI_OBJECT(memory(buffer)), mark_) != nullptr;
    }

    static inline GQuark mark_ = g_quark_from_static_string("first frame");
    GstVideoInfo info_ = {};
    platform::CapsPtr caps_;
    platform::PoolPtr pool_;
};

TEST_F(FramePool, SharesAFrameThatIsMappedForWriting)
{
    const BufferPtr drawn = acquire();
    GstVideoFrame decoder;
    ASSERT_TRUE(gst_video_frame_map(&decoder, &info_, drawn.get(), GST_MAP_READWRITE));
    const BufferPtr handed_on(gst_buffer_copy(drawn.get()));
    auto *last = static_cast<uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&decoder, GST_VIDEO_COMP_V));
    last[1] = 77;

    EXPECT_EQ(memory(handed_on), memory(drawn));
    GstVideoFrame sink;
    ASSERT_TRUE(gst_video_frame_map(&sink, &info_, handed_on.get(), GST_MAP_READ));
    const auto *seen =
        static_cast<const uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&sink, GST_VIDEO_COMP_V));
    EXPECT_EQ(seen[1], 77);
    gst_video_frame_unmap(&sink);
    gst_video_frame_unmap(&decoder);
}

TEST_F(FramePool, GivesAFrameOutAgainWhenNobodyReadsIt)
{
    BufferPtr drawn = acquire();
    mark(drawn);
    BufferPtr handed_on(gst_buffer_copy(drawn.get()));
    drawn.reset();
    const BufferPtr second = acquire();
    EXPECT_FALSE(is_marked(second));

    handed_on.reset();
    const BufferPtr third = acquire();
    EXPECT_TRUE(is_marked(third));
}

TEST_F(FramePool, StopsWhileAFrameIsStillRead)
{
    BufferPtr drawn = acquire();
    const BufferPtr handed_on(gst_buffer_copy(drawn.get()));
    drawn.reset();
    ASSERT_TRUE(gst_buffer_pool_set_active(pool_.get(), FALSE));

    GstVideoFrame sink;
    ASSERT_TRUE(gst_video_frame_map(&sink, &info_, handed_on.get(), GST_MAP_READ));
    EXPECT_EQ(GST_VIDEO_FRAME_WIDTH(&sink), 64);
    gst_video_frame_unmap(&sink);
}

TEST_F(FramePool, IsWhatTheSinkOffersToDecoders)
{
    const platform::ElementPtr sink =
        platform::make_plane_sink(std::make_shared<platform::FrameOutput>(
            std::make_shared<platform::DisplaySettings>(), platform::REFERENCE_WHITE));
    const platform::PadPtr pad(gst_element_get_static_pad(sink.get(), "sink"));
    gst_pad_set_active(pad.get(), TRUE);
    GstQuery *query = gst_query_new_allocation(caps_.get(), TRUE);
    ASSERT_TRUE(gst_pad_query(pad.get(), query));

    ASSERT_EQ(gst_query_get_n_allocation_pools(query), 1u);
    GstBufferPool *offered = nullptr;
    gst_query_parse_nth_allocation_pool(query, 0, &offered, nullptr, nullptr, nullptr);
    EXPECT_EQ(G_OBJECT_TYPE(offered), G_OBJECT_TYPE(pool_.get()));
    EXPECT_TRUE(gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr));
    gst_object_unref(offered);
    gst_query_unref(query);
}

} // namespace
} // namespace player_test
