// The still-picture library: the chain of calls and what is told after each.

#include <mutex>
#include <utility>
#include <vector>

#include "seam_test.h"
#include "still_picture.h"

namespace {

using testing::ElementsAre;

using Event = std::pair<pictrel_event_type_e, pictrel_event_result_e>;

constexpr Event PARSED{PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSED};
constexpr Event PARSE_FAILED{PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSE_FAILED};
constexpr Event DECODED{PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODED};

/** Where events are noted, on whatever thread they come. */
class Notes {
  public:
    void add(Event event)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back(event);
    }
    std::vector<Event> all() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<Event> events_;
};

void on_event(void *notes, pictrel_event_type_e type, pictrel_event_result_e result)
{
    static_cast<Notes *>(notes)->add({type, result});
}

class StillPictureSeam : public SeamTest {
  protected:
    void TearDown() override
    {
        if (picture_)
            pictrel_destroy(&picture_);
        SeamTest::TearDown();
    }

    void open(const std::string &path)
    {
        ASSERT_EQ(pictrel_create_from_url(path.c_str(), &picture_), 0);
        for (const pictrel_event_type_e type : {PICTREL_EVENT_PARSE, PICTREL_EVENT_DECODE})
            ASSERT_EQ(pictrel_add_event_callback(picture_, type, on_event, &notes_), 0);
    }

    bool has_told(size_t count)
    {
        return set_under_test::goes_on_until([&] { return notes_.all().size() >= count; });
    }

    Notes notes_;
    _pictrel_s *picture_ = nullptr;
};

TEST_F(StillPictureSeam, AGoodPictureIsParsedAndDecoded)
{
    open(set_under_test::good_photo());
    ASSERT_EQ(pictrel_set_window(picture_, 1), 0);
    ASSERT_EQ(pictrel_parse(picture_), 0);
    ASSERT_TRUE(has_told(1));
    ASSERT_EQ(pictrel_decode(picture_, 0), 0);

    EXPECT_TRUE(has_told(2));
    EXPECT_THAT(notes_.all(), ElementsAre(PARSED, DECODED));
    EXPECT_EQ(pictrel_render(picture_), 0);
}

TEST_F(StillPictureSeam, ABrokenPictureIsCreatedAndFailsInTheCallback)
{
    open(set_under_test::broken_photo());
    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_TRUE(has_told(1));
    EXPECT_THAT(notes_.all(), ElementsAre(PARSE_FAILED));
}

TEST_F(StillPictureSeam, DataOfTheRecordIsUsedWhereNoneWasGiven)
{
    ASSERT_EQ(pictrel_create_from_url(set_under_test::good_photo().c_str(), &picture_), 0);
    picture_->user_data = &notes_;
    ASSERT_EQ(pictrel_add_event_callback(picture_, PICTREL_EVENT_PARSE, on_event, nullptr), 0);
    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_TRUE(has_told(1));
    EXPECT_THAT(notes_.all(), ElementsAre(PARSED));
}

TEST_F(StillPictureSeam, AReleasedPictureTellsNothingAndItsHandleIsNull)
{
    open(set_under_test::good_photo());
    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_EQ(pictrel_destroy(&picture_), 0);
    EXPECT_EQ(picture_, nullptr);
    const size_t when_released = notes_.all().size();

    // The library has had its turn once it told of another picture.
    Notes of_another;
    ASSERT_EQ(pictrel_create_from_url(set_under_test::good_photo().c_str(), &picture_), 0);
    ASSERT_EQ(pictrel_add_event_callback(picture_, PICTREL_EVENT_PARSE, on_event, &of_another), 0);
    ASSERT_EQ(pictrel_parse(picture_), 0);
    EXPECT_TRUE(set_under_test::goes_on_until([&] { return !of_another.all().empty(); }));
    EXPECT_EQ(notes_.all().size(), when_released);
}

TEST_F(StillPictureSeam, TheApplicationsOwnFieldIsLeftAlone)
{
    open(set_under_test::good_photo());
    picture_->render_state = 5;
    ASSERT_EQ(pictrel_parse(picture_), 0);

    EXPECT_TRUE(has_told(1));
    EXPECT_EQ(picture_->render_state, 5);
}

TEST_F(StillPictureSeam, TheDisplayIsLetGoOnce)
{
    int display = 1;

    EXPECT_EQ(pictrel_destroy_display(&display), 0);
    EXPECT_EQ(display, 0);
}

} // namespace
