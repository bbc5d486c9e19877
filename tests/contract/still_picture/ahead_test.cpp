// A picture that is decoded before it is asked for.

#include "still_picture/picture_ahead.h"
#include "still_picture/picture_test.h"

namespace platform_test {
namespace {

using platform::PictureAhead;
using testing::ElementsAre;

class PictureAheadTest : public PictureTest {
  protected:
    void TearDown() override
    {
        PictureAhead::get().drop();
        PictureTest::TearDown();
    }

    /** One that has to be turned to be upright. */
    void write_photo(const std::string &name) const
    {
        JpegOrder order;
        order.width = 80;
        order.height = 40;
        order.color = quarters(80, 40);
        order.app1 = {exif_with_orientation(6)};
        write_jpeg(file(name), order);
    }

    static void open_ahead(const std::string &path)
    {
        PictureAhead::get().open(path, {WIDTH, HEIGHT});
    }

    /** Whether it has been decoded ahead; it is let go of then. */
    static bool has(const std::string &path, const platform::Size &panel = {WIDTH, HEIGHT})
    {
        const std::atomic<bool> never{false};
        platform::JpegReader::Progress progress{never};
        return PictureAhead::get().take(path, panel, progress) != nullptr;
    }
};

TEST_F(PictureAheadTest, ItIsHandedOverOnce)
{
    write_photo("a.jpg");
    open_ahead(file("a.jpg"));

    EXPECT_TRUE(has(file("a.jpg")));
    EXPECT_FALSE(has(file("a.jpg")));
}

TEST_F(PictureAheadTest, NothingElseIsHandedOver)
{
    write_photo("a.jpg");
    write_photo("b.jpg");
    open_ahead(file("a.jpg"));
    EXPECT_FALSE(has(file("b.jpg"))) << "another file";

    open_ahead(file("a.jpg"));
    EXPECT_FALSE(has(file("a.jpg"), {HEIGHT, WIDTH})) << "for another panel";

    open_ahead(file("a.jpg"));
    open_ahead(file("b.jpg"));
    EXPECT_FALSE(has(file("a.jpg"))) << "one that another has taken the place of";

    open_ahead(file("a.jpg"));
    PictureAhead::get().drop();
    EXPECT_FALSE(has(file("a.jpg"))) << "one that was dropped";
}

TEST_F(PictureAheadTest, AFileThatHasChangedIsNotHandedOver)
{
    write_photo("a.jpg");
    open_ahead(file("a.jpg"));
    PictureAhead::get().wait_until_done();
    write_photo("new.jpg");
    std::filesystem::rename(file("new.jpg"), file("a.jpg"));

    EXPECT_FALSE(has(file("a.jpg")));
}

TEST_F(PictureAheadTest, ABrokenFileIsNotHandedOverAndFailsWhenItIsWanted)
{
    store_test::write_file(file("a.jpg"), "this is no picture");
    open_ahead(file("a.jpg"));
    open(file("a.jpg"));

    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
}

TEST_F(PictureAheadTest, WhoeverWaitsForItCanBeCancelled)
{
    const std::atomic<bool> cancelled{true};
    write_photo("a.jpg");
    open_ahead(file("a.jpg"));

    platform::JpegReader::Progress progress{cancelled};
    EXPECT_EQ(PictureAhead::get().take(file("a.jpg"), {WIDTH, HEIGHT}, progress), nullptr);
}

TEST_F(PictureAheadTest, ItIsShownAsAnyOther)
{
    write_photo("a.jpg");
    open(file("a.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    ASSERT_EQ(pictrel_render(picture_), 0);
    const std::vector<uint32_t> usual = screen_.pixels;
    const int width = picture_->width;

    open_ahead(file("a.jpg"));
    open(file("a.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    ASSERT_EQ(pictrel_render(picture_), 0);

    EXPECT_EQ(picture_->width, width);
    EXPECT_EQ(screen_.pixels, usual);
    EXPECT_FALSE(has(file("a.jpg"))) << "it was not used";
}

} // namespace
} // namespace platform_test
