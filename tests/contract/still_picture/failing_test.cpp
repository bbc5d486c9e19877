// Whatever is wrong with a file comes back through a callback, and not before its time.

#include <sys/stat.h>

#include "still_picture/compose.h"
#include "still_picture/jpeg_reader.h"
#include "still_picture/picture_test.h"
#include "still_picture/profile_maker.h"

namespace platform_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::string_literals;
using Kind = platform::UnplayableFile::Kind;

constexpr std::chrono::milliseconds EARLIEST_FAILURE{200};

class ABadFile : public PictureTest {
  protected:
    void expect_parse_fails(const std::string &path)
    {
        open(path);
        const auto asked = Clock::now();
        EXPECT_EQ(pictrel_parse(picture_), 0);
        EXPECT_THAT(application_.events(1), ElementsAre(PARSE_FAILED));
        EXPECT_GE(application_.last_event_time() - asked, EARLIEST_FAILURE);
        EXPECT_LT(pictrel_decode(picture_, 0), 0);
        EXPECT_LT(pictrel_parse(picture_), 0);
    }

    void expect_parse_fails_of(const std::string &bytes)
    {
        store_test::write_file(file("bad.jpg"), bytes);
        expect_parse_fails(file("bad.jpg"));
    }

    void expect_decode_fails_of(const std::string &bytes)
    {
        store_test::write_file(file("bad.jpg"), bytes);
        open(file("bad.jpg"));
        ASSERT_EQ(pictrel_parse(picture_), 0);
        ASSERT_THAT(application_.events(1), ElementsAre(PARSED));
        const auto asked = Clock::now();
        EXPECT_EQ(pictrel_decode(picture_, 0), 0);
        EXPECT_THAT(application_.events(2), ElementsAre(PARSED, DECODE_FAILED));
        EXPECT_GE(application_.last_event_time() - asked, EARLIEST_FAILURE);
        EXPECT_LT(pictrel_render(picture_), 0);
        EXPECT_EQ(screen_.pictures, 0);
    }

    /** The bytes of a picture that is hard to compress. */
    std::string bytes_of(JpegOrder order) const
    {
        if (!order.color)
            order.color = [](int x, int y) {
                return static_cast<uint32_t>((x * 7919 + y * 104729) * 2654435761u) & 0xffffff;
            };
        write_jpeg(file("good.jpg"), order);
        return store_test::read_file(file("good.jpg"));
    }

    std::string bytes_of_a_picture() const { return bytes_of({320, 240, nullptr}); }

    /** Writes two 16-bit numbers, height and width, behind the mark of the frame's header. */
    static std::string with_size(std::string bytes, uint8_t frame_mark, int width, int height)
    {
        const size_t at = bytes.find(std::string{'\xff', static_cast<char>(frame_mark)});
        bytes[at + 5] = static_cast<char>(height >> 8);
        bytes[at + 6] = static_cast<char>(height);
        bytes[at + 7] = static_cast<char>(width >> 8);
        bytes[at + 8] = static_cast<char>(width);
        return bytes;
    }
};

TEST_F(ABadFile, IsToldOfUntilItCanBeShown)
{
    expect_parse_fails_of("just a text");
    EXPECT_EQ(why_unplayable(file("bad.jpg")),
              std::pair(Kind::Damaged, "Not a JPEG file: starts with 0x6a 0x75"s));
    const std::string bytes = bytes_of_a_picture();
    expect_decode_fails_of(bytes.substr(0, bytes.size() / 2));
    EXPECT_EQ(why_unplayable(file("bad.jpg")),
              std::pair(Kind::Damaged, "Corrupt JPEG data: premature end of data segment"s));

    store_test::write_file(file("bad.jpg"), bytes);
    open(file("bad.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_EQ(why_unplayable(file("bad.jpg")), std::nullopt);
}

TEST_F(ABadFile, ThatIsMissingFailsToParse)
{
    expect_parse_fails(file("none.jpg"));
}

TEST_F(ABadFile, WithAnEmptyNameFailsToParse)
{
    expect_parse_fails("");
}

TEST_F(ABadFile, ThatCannotBeOpenedFailsToParse)
{
    std::filesystem::create_symlink("loop.jpg", file("loop.jpg"));
    expect_parse_fails(file("loop.jpg"));
    EXPECT_EQ(why_unplayable(file("loop.jpg")),
              std::pair(Kind::Unreadable, "Too many levels of symbolic links"s));
}

TEST_F(ABadFile, ThatIsAFolderFailsToParse)
{
    std::filesystem::create_directory(file("folder.jpg"));
    expect_parse_fails(file("folder.jpg"));
    EXPECT_EQ(why_unplayable(file("folder.jpg")), std::pair(Kind::Damaged, "Is a directory"s));
}

TEST_F(ABadFile, ThatIsAPipeFailsToParse)
{
    ASSERT_EQ(mkfifo(file("pipe.jpg").c_str(), 0600), 0);
    expect_parse_fails(file("pipe.jpg"));
}

TEST_F(ABadFile, ThatIsADeviceFailsToParse)
{
    expect_parse_fails("/dev/zero");
}

TEST_F(ABadFile, ThatIsEmptyFailsToParse)
{
    expect_parse_fails_of("");
}

TEST_F(ABadFile, OfAnotherKindFailsToParse)
{
    expect_parse_fails_of("just a text");
    expect_parse_fails_of("\x89PNG\r\n\x1a\n" + std::string(200, 'x'));
}

TEST_F(ABadFile, CutInItsHeaderFailsToParse)
{
    const std::string bytes = bytes_of_a_picture();
    for (const size_t length : {2, 3, 20, 100, 300})
        expect_parse_fails_of(bytes.substr(0, length));
}

TEST_F(ABadFile, OfTwelveBitsFailsToParse)
{
    std::string bytes = bytes_of_a_picture();
    bytes[bytes.find("\xff\xc0") + 4] = 12;
    expect_parse_fails_of(bytes);
}

TEST_F(ABadFile, CutAnywhereFailsToDecode)
{
    const std::string bytes = bytes_of_a_picture();
    for (const size_t percent : {50, 75, 99})
        expect_decode_fails_of(bytes.substr(0, bytes.size() * percent / 100));
}

TEST_F(ABadFile, ProgressiveAndCutFailsToDecode)
{
    JpegOrder order{320, 240, nullptr};
    order.progressive = true;
    const std::string bytes = bytes_of(order);
    for (const size_t percent : {50, 99})
        expect_decode_fails_of(bytes.substr(0, bytes.size() * percent / 100));
}

TEST_F(ABadFile, ArithmeticallyCodedAndCutFailsToDecode)
{
    JpegOrder order{320, 240, nullptr};
    order.arithmetic = true;
    const std::string bytes = bytes_of(order);
    expect_decode_fails_of(bytes.substr(0, bytes.size() / 2));
}

TEST_F(ABadFile, WithDamagedPixelsFailsToDecode)
{
    std::string bytes = bytes_of_a_picture();
    bytes.replace(bytes.size() / 2, 2, "\xff\xd9");
    expect_decode_fails_of(bytes);
}

TEST_F(ABadFile, ThatLacksOnlyItsEndMarkIsShown)
{
    const std::string bytes = bytes_of_a_picture();
    store_test::write_file(file("bad.jpg"), bytes.substr(0, bytes.size() - 2));
    open(file("bad.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_EQ(pictrel_render(picture_), 0);
}

TEST_F(ABadFile, ProgressiveAndTooLargeForMemoryFailsToDecode)
{
    JpegOrder order{64, 64, plain(RED)};
    order.progressive = true;
    expect_decode_fails_of(with_size(bytes_of(order), 0xc2, 30000, 30000));
}

/** Decodes behind the library's back, for the reason of a failure. */
std::string reason_of(const std::string &path)
{
    const std::atomic<bool> go_on{false};
    platform::JpegReader::Progress progress{go_on};
    platform::JpegReader reader(progress);
    platform::Image image;
    if (!reader.open(path))
        return std::string("header: ") + reader.error();
    const platform::Size size = platform::size_to_keep(reader.size(), {16, 16});
    return reader.decode(size, image) ? "none" : reader.error();
}

TEST_F(ABadFile, ProgressiveIsRefusedForItsMemoryOnlyAboveTheLimit)
{
    JpegOrder order{64, 64, plain(RED)};
    order.progressive = true;
    const std::string bytes = bytes_of(order);
    // Three bytes each pixel, with the colours at a quarter of the resolution.
    store_test::write_file(file("above.jpg"), with_size(bytes, 0xc2, 14000, 14000));
    store_test::write_file(file("below.jpg"), with_size(bytes, 0xc2, 8000, 8000));

    EXPECT_THAT(reason_of(file("above.jpg")), HasSubstr("Backing store"));
    EXPECT_THAT(reason_of(file("below.jpg")), testing::Not(HasSubstr("Backing store")));
}

TEST_F(ABadFile, OfCountlessScansFailsToDecode)
{
    JpegOrder order{64, 64, plain(RED)};
    order.scan_each_bit = true;
    write_jpeg(file("scans.jpg"), order);

    EXPECT_EQ(reason_of(file("scans.jpg")), "Too many scans");
}

TEST_F(ABadFile, DamagedAtAnyByteEitherFailsOrGivesTheWholePicture)
{
    JpegOrder order{96, 64, nullptr};
    order.app1 = {exif_with_orientation(6)};
    order.app2 = in_chunks(display_p3());
    order.restart_rows = 2;
    int failed = 0;
    for (const bool progressive : {false, true}) {
        order.progressive = progressive;
        const std::string bytes = bytes_of(order);
        uint32_t random = 1;
        for (int round = 0; round < 500; ++round) {
            std::string damaged = bytes;
            for (int i = 0; i < 3; ++i) {
                random = random * 1664525 + 1013904223;
                damaged[(random >> 8) % damaged.size()] = static_cast<char>(random >> 3);
            }
            store_test::write_file(file("damaged.jpg"), damaged);
            const std::string reason = reason_of(file("damaged.jpg"));
            ASSERT_FALSE(reason.empty()) << "round " << round;
            failed += reason != "none";
        }
    }
    EXPECT_GT(failed, 100);
    EXPECT_LT(failed, 1000);
}

} // namespace
} // namespace platform_test
