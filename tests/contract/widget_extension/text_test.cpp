// Plain texts on their way to Elementary's markup, and the direction in which they read.

#include "widget_extension/plain_text.h"
#include "widget_test.h"

using namespace testing;
using platform::markup_of;
using platform::reads_right_to_left;

namespace {

class TextTest : public WidgetTest {};

std::string back_to_plain(const std::string &markup)
{
    char *plain = elm_entry_markup_to_utf8(markup.c_str());
    const std::string text = plain ? plain : "";
    free(plain);
    return text;
}

} // namespace

TEST_F(TextTest, EveryTextComesBackFromItsMarkup)
{
    for (const char *text : {"<b>x</b> & co", "a &amp; b", "<<A>> min", "100 % \"sure\" 'yes'", "",
                             "</center><br>", "서울의 밤", "مشاهد", "50 < 60 > 40", "\\n %s %d"}) {
        EXPECT_EQ(back_to_plain(markup_of(text)), text);
    }
}

TEST_F(TextTest, MarkupHoldsNoTagOfTheText)
{
    EXPECT_THAT(markup_of("<b>x</b> & co"), Not(HasSubstr("<b>")));
}

TEST_F(TextTest, ANullTextIsEmpty)
{
    EXPECT_EQ(markup_of(nullptr), "");
    EXPECT_FALSE(reads_right_to_left(nullptr));
}

TEST_F(TextTest, TheFirstLetterWithADirectionDecides)
{
    EXPECT_TRUE(reads_right_to_left("مشاهد من الطبيعة.mp4"));
    EXPECT_TRUE(reads_right_to_left("123 - שלום world"));
    EXPECT_TRUE(reads_right_to_left("😀 مشاهد.mp4"));
    EXPECT_FALSE(reads_right_to_left("City مشاهد"));
    EXPECT_FALSE(reads_right_to_left("서울의 밤"));
    EXPECT_FALSE(reads_right_to_left("… «Élan» مشاهد"));
    EXPECT_FALSE(reads_right_to_left("2024-01-01"));
    EXPECT_FALSE(reads_right_to_left(""));
}

TEST_F(TextTest, BytesThatAreNotUtf8AreNoHarm)
{
    EXPECT_FALSE(reads_right_to_left("\xff\xfe\xc3"));
    EXPECT_NO_FATAL_FAILURE(markup_of("\xff<\xfe&\xc3"));
}
