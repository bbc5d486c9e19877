// Arguments, order of calls, and what the callbacks get.

#include "still_picture/picture_test.h"

namespace platform_test {
namespace {

using testing::ElementsAre;

using CallingThePictureLibrary = PictureTest;

TEST_F(CallingThePictureLibrary, WithNullIsRefused)
{
    const auto ignore = [](void *, pictrel_event_type_e, pictrel_event_result_e) {};
    _pictrel_s *none = nullptr;
    EXPECT_LT(pictrel_init_display(nullptr), 0);
    EXPECT_LT(pictrel_destroy_display(nullptr), 0);
    EXPECT_LT(pictrel_create_from_url(nullptr, &picture_), 0);
    EXPECT_EQ(picture_, nullptr);
    EXPECT_LT(pictrel_create_from_url("/a.jpg", nullptr), 0);
    EXPECT_LT(pictrel_destroy(nullptr), 0);
    EXPECT_LT(pictrel_destroy(&none), 0);
    EXPECT_LT(pictrel_set_window(nullptr, 1), 0);
    EXPECT_LT(pictrel_set_geometry_size(nullptr, PICTREL_GEOMETRY_FIT), 0);
    EXPECT_LT(pictrel_add_event_callback(nullptr, PICTREL_EVENT_PARSE, ignore, nullptr), 0);
    EXPECT_LT(pictrel_parse(nullptr), 0);
    EXPECT_LT(pictrel_decode(nullptr, 0), 0);
    EXPECT_LT(pictrel_render(nullptr), 0);
    EXPECT_LT(pictrel_set_mixer_render(nullptr, 1), 0);
    EXPECT_LT(pictrel_rotate(nullptr, 90), 0);

    open({16, 16, plain(RED)});
    EXPECT_LT(pictrel_add_event_callback(picture_, PICTREL_EVENT_PARSE, nullptr, nullptr), 0);
}

TEST_F(CallingThePictureLibrary, WithUnknownValuesIsRefused)
{
    const auto ignore = [](void *, pictrel_event_type_e, pictrel_event_result_e) {};
    open({16, 16, plain(RED)});
    EXPECT_LT(pictrel_set_window(picture_, 0), 0);
    EXPECT_LT(pictrel_set_window(picture_, 2), 0);
    EXPECT_LT(pictrel_set_geometry_size(picture_, 3), 0);
    EXPECT_LT(pictrel_set_mixer_render(picture_, 2), 0);
    const auto unknown = static_cast<pictrel_event_type_e>(7);
    EXPECT_LT(pictrel_add_event_callback(picture_, unknown, ignore, nullptr), 0);

    ASSERT_NO_FATAL_FAILURE(decode());
    ASSERT_EQ(pictrel_render(picture_), 0);
    for (const int degrees : {-90, 0, 45, 360})
        EXPECT_LT(pictrel_rotate(picture_, degrees), 0) << degrees;
}

TEST_F(CallingThePictureLibrary, OutOfTurnIsRefused)
{
    open({16, 16, plain(RED)});
    EXPECT_LT(pictrel_decode(picture_, 0), 0);
    EXPECT_LT(pictrel_render(picture_), 0);
    EXPECT_LT(pictrel_rotate(picture_, 90), 0);

    ASSERT_EQ(pictrel_parse(picture_), 0);
    EXPECT_LT(pictrel_parse(picture_), 0);
    ASSERT_THAT(application_.events(1), ElementsAre(PARSED));
    EXPECT_LT(pictrel_parse(picture_), 0);
    EXPECT_LT(pictrel_render(picture_), 0);
    EXPECT_LT(pictrel_decode(picture_, 1), 0);

    ASSERT_EQ(pictrel_decode(picture_, 0), 0);
    EXPECT_LT(pictrel_decode(picture_, 0), 0);
    ASSERT_THAT(application_.events(2), ElementsAre(PARSED, DECODED));
    EXPECT_LT(pictrel_rotate(picture_, 90), 0);
    EXPECT_EQ(screen_.pictures, 0);
}

TEST_F(CallingThePictureLibrary, WithoutADisplayCannotDecode)
{
    platform::PictureDisplay::get().use(nullptr);
    write_jpeg(file("a.jpg"), {16, 16, plain(RED)});
    ASSERT_EQ(pictrel_create_from_url(file("a.jpg").c_str(), &picture_), 0);
    EXPECT_LT(pictrel_set_window(picture_, 1), 0);
    application_.subscribe(picture_);
    ASSERT_EQ(pictrel_parse(picture_), 0);
    application_.events(1);
    EXPECT_LT(pictrel_decode(picture_, 0), 0);
}

TEST_F(CallingThePictureLibrary, ToLetGoOfTheDisplayLeavesThePictureThere)
{
    show({16, 9, plain(RED)});
    int display = 1;
    EXPECT_EQ(pictrel_destroy_display(&display), 0);
    EXPECT_EQ(display, 0);
    EXPECT_LT(pictrel_destroy_display(&display), 0);
    EXPECT_EQ(screen_.pictures, 1);
    EXPECT_THAT(screen_.at(80, 45), LooksLike(RED));
}

TEST_F(CallingThePictureLibrary, ToDestroyAPictureLeavesItOnThePanel)
{
    show({16, 9, plain(RED)});
    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    EXPECT_EQ(picture_, nullptr);
    EXPECT_EQ(screen_.pictures, 1);
}

/** Notes which data its callbacks got. */
struct Witness {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<void *> seen;

    static void on_event(void *data, pictrel_event_type_e, pictrel_event_result_e)
    {
        auto &self = *witness;
        const std::lock_guard<std::mutex> lock(self.mutex);
        self.seen.push_back(data);
        self.changed.notify_all();
    }
    void wait()
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait_for(lock, std::chrono::seconds(10), [this] { return !seen.empty(); });
    }
    inline static Witness *witness = nullptr;
};

TEST_F(CallingThePictureLibrary, GivesTheCallbackTheRecordsDataWhereItHasNoneOfItsOwn)
{
    for (const bool own_data : {false, true}) {
        Witness witness;
        Witness::witness = &witness;
        int at_registration = 0;
        int later = 0;
        int own = 0;
        open({16, 16, plain(RED)});
        picture_->user_data = &at_registration;
        ASSERT_EQ(pictrel_add_event_callback(picture_, PICTREL_EVENT_PARSE, Witness::on_event,
                                             own_data ? &own : nullptr),
                  0);
        picture_->user_data = &later;
        ASSERT_EQ(pictrel_parse(picture_), 0);
        witness.wait();
        EXPECT_THAT(witness.seen, ElementsAre(own_data ? &own : &at_registration));
        pictrel_destroy(&picture_);
    }
}

/** A plane whose window has gone. */
class ClosedPlane : public platform::VideoPlane {
  public:
    int width() const override { return open_->width(); }
    int height() const override { return open_->height(); }
    platform::PlaneBufferPtr acquire() override { return open_->acquire(); }
    bool present(const platform::PlaneBufferPtr &) override { return false; }

  private:
    std::shared_ptr<VideoPlane> open_ = offscreen(160, 90);
};

TEST_F(CallingThePictureLibrary, ReportsThatThePlaneIsLost)
{
    platform::PictureDisplay::get().use(std::make_shared<ClosedPlane>());
    open({16, 16, plain(RED)});
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_LT(pictrel_render(picture_), 0);
    EXPECT_THAT(application_.events(3), ElementsAre(PARSED, DECODED, RESOURCE_LOST));
}

/** A plane that has no memory for a picture. */
class FullPlane : public ClosedPlane {
  public:
    platform::PlaneBufferPtr acquire() override { return nullptr; }
};

TEST_F(CallingThePictureLibrary, RefusesToRenderWithoutRoomOnThePlane)
{
    platform::PictureDisplay::get().use(std::make_shared<FullPlane>());
    open({16, 16, plain(RED)});
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_LT(pictrel_render(picture_), 0);
}

} // namespace
} // namespace platform_test
