#include "still_picture/jpeg_reader.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>

#include <jerror.h>

#include "base/regular_file.h"
#include "still_picture/exif_orientation.h"
#include "still_picture/row_scaler.h"

namespace platform {

namespace {

/** A progressive picture has to be in memory as a whole; one that needs more is not shown. */
constexpr long MOST_MEMORY = 512L * 1024 * 1024;
/** A real progressive picture has about ten; thousands of empty ones would keep the set busy. */
constexpr int MOST_SCANS = 200;
constexpr size_t LONGEST_SEGMENT = 65533;
constexpr uint8_t END_OF_IMAGE[] = {0xff, JPEG_EOI};
constexpr char EXIF_MARK[] = {'E', 'x', 'i', 'f', 0, 0};
constexpr char ICC_MARK[] = "ICC_PROFILE"; // with the zero at its end

/** One that is read ahead, one that is wanted, and those of both that are just being cancelled. */
constexpr int MOST_READERS_OF_A_FILE = 4;

/** Counts by file: readings that hang are not to become ever more, round after round. */
class Readers {
  public:
    static Readers &get()
    {
        // Never destroyed: threads that hang may outlive the program's other parts.
        static auto &readers = *new Readers;
        return readers;
    }

    bool enter(const std::string &path)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        int &count = counts_[path];
        if (count == MOST_READERS_OF_A_FILE)
            return false;
        ++count;
        return true;
    }

    void leave(const std::string &path)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = counts_.find(path);
        if (--found->second == 0)
            counts_.erase(found);
    }

  private:
    std::mutex mutex_;
    std::map<std::string, int> counts_;
};

/** Oddities of a file whose pixels are all there. */
bool is_harmless(int warning)
{
    switch (warning) {
    case JWRN_ADOBE_XFORM:
    case JWRN_BOGUS_ICC:
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_JFIF_MAJOR:
    case JWRN_NOT_SEQUENTIAL:
        return true;
    default:
        return false;
    }
}

uint32_t times(uint32_t a, uint32_t b)
{
    return (a * b + 127) / 255;
}

/** Turns cyan, magenta, yellow and black, in which 255 is no ink, into pixels, in place. */
void ink_to_pixels(uint8_t *row, size_t width, bool inverted)
{
    const uint8_t flip = inverted ? 0 : 255;
    for (size_t x = 0; x < width; ++x, row += 4) {
        const uint32_t black = row[3] ^ flip;
        const uint32_t red = times(row[0] ^ flip, black);
        const uint32_t green = times(row[1] ^ flip, black);
        const uint32_t blue = times(row[2] ^ flip, black);
        const uint32_t pixel = 0xff000000 | red << 16 | green << 8 | blue;
        memcpy(row, &pixel, sizeof pixel);
    }
}

} // namespace

JpegReader &JpegReader::of(j_common_ptr codec)
{
    return *static_cast<JpegReader *>(codec->client_data);
}

JpegReader &JpegReader::of(j_decompress_ptr codec)
{
    return *static_cast<JpegReader *>(codec->client_data);
}

JpegReader::JpegReader(Progress &progress) : progress_made_(progress)
{
    codec_.err = jpeg_std_error(&errors_);
    errors_.error_exit = [](j_common_ptr codec) { of(codec).give_up(); };
    errors_.emit_message = [](j_common_ptr codec, int level) {
        if (level < 0 && !is_harmless(codec->err->msg_code))
            of(codec).give_up();
    };
    errors_.output_message = [](j_common_ptr) {};

    source_.init_source = [](j_decompress_ptr) {};
    source_.term_source = [](j_decompress_ptr) {};
    source_.fill_input_buffer = [](j_decompress_ptr codec) -> boolean {
        return of(codec).next_piece() ? TRUE : FALSE;
    };
    source_.resync_to_restart = jpeg_resync_to_restart;
    source_.skip_input_data = [](j_decompress_ptr codec, long length) {
        jpeg_source_mgr &source = *codec->src;
        for (auto left = static_cast<size_t>(std::max(0L, length)); left > 0;) {
            if (source.bytes_in_buffer == 0)
                of(codec).next_piece();
            const size_t step = std::min(left, source.bytes_in_buffer);
            source.next_input_byte += step;
            source.bytes_in_buffer -= step;
            left -= step;
        }
    };
    progress_.progress_monitor = [](j_common_ptr codec) { of(codec).check_progress(); };
}

JpegReader::~JpegReader()
{
    jpeg_destroy_decompress(&codec_);
    if (path_)
        Readers::get().leave(*path_);
}

void JpegReader::give_up()
{
    codec_.err->format_message(reinterpret_cast<j_common_ptr>(&codec_), message_);
    std::longjmp(on_error_, 1);
}

void JpegReader::give_up(const char *reason, UnplayableFile::Kind kind)
{
    snprintf(message_, sizeof message_, "%s", reason);
    error_kind_ = kind;
    std::longjmp(on_error_, 1);
}

/**
 * Runs one step of libjpeg, whose errors come back by longjmp(): a step must not have locals with
 * destructors.
 */
template <typename Step> bool JpegReader::guarded(const Step &step)
{
    if (setjmp(on_error_) != 0)
        return false;
    step();
    return true;
}

bool JpegReader::open(const std::string &path)
{
    exif_.reserve(LONGEST_SEGMENT);
    if (!Readers::get().enter(path)) {
        snprintf(message_, sizeof message_, "Earlier readings of it hang");
        error_kind_ = UnplayableFile::Kind::TooSlow;
        return false;
    }
    path_ = path;
    file_ = open_regular_file(path);
    if (!file_) {
        if (errno != EISDIR && errno != EINVAL) // those are no ordinary files
            error_kind_ = UnplayableFile::Kind::Unreadable;
        snprintf(message_, sizeof message_, "%s", strerror(errno));
        return false;
    }
    posix_fadvise(file_.number(), 0, 0, POSIX_FADV_SEQUENTIAL);
    const bool parsed = guarded([this] {
        codec_.client_data = this; // creating keeps it, and may already have an error to tell
        jpeg_create_decompress(&codec_);
        codec_.src = &source_;
        codec_.progress = &progress_;
        codec_.mem->max_memory_to_use = MOST_MEMORY;
        jpeg_set_marker_processor(&codec_, JPEG_APP0 + 1, [](j_decompress_ptr codec) -> boolean {
            of(codec).take_exif();
            return TRUE;
        });
        jpeg_set_marker_processor(&codec_, JPEG_APP0 + 2, [](j_decompress_ptr codec) -> boolean {
            of(codec).take_icc();
            return TRUE;
        });
        jpeg_read_header(&codec_, TRUE);
        if (codec_.jpeg_color_space == JCS_UNKNOWN)
            give_up("Unknown colour space");
        header_read_ = true;
    });
    if (parsed)
        orientation_ = upright_orientation(exif_);
    exif_ = {};
    return parsed;
}

Size JpegReader::size() const
{
    return {static_cast<int>(codec_.image_width), static_cast<int>(codec_.image_height)};
}

void JpegReader::take_step()
{
    if (progress_made_.cancelled)
        give_up("Cancelled");
    ++progress_made_.steps;
}

bool JpegReader::next_piece()
{
    take_step();
    if (at_end_)
        give_up("Premature end of JPEG file");
    const ssize_t length = read_piece(file_.number(), piece_.data(), piece_.size());
    if (length < 0)
        give_up(strerror(errno), UnplayableFile::Kind::Unreadable);
    if (length > 0) {
        source_.next_input_byte = piece_.data();
        source_.bytes_in_buffer = static_cast<size_t>(length);
        return true;
    }
    // Some cameras leave the end mark out. It is given once; whether all pixels were there shows
    // when the decoder wants more, unless it is one of those that cannot tell.
    at_end_ = true;
    if (!header_read_ || codec_.arith_code || jpeg_has_multiple_scans(&codec_))
        give_up("Premature end of JPEG file");
    source_.next_input_byte = END_OF_IMAGE;
    source_.bytes_in_buffer = sizeof END_OF_IMAGE;
    return true;
}

/** Reads a segment's length; returns how many bytes of it are left. */
size_t JpegReader::begin_segment()
{
    uint8_t length[2];
    read_bytes(length, sizeof length);
    const size_t whole = static_cast<size_t>(length[0] << 8 | length[1]);
    return whole - std::min(whole, sizeof length);
}

void JpegReader::read_bytes(uint8_t *to, size_t count)
{
    while (count > 0) {
        if (source_.bytes_in_buffer == 0)
            next_piece();
        const size_t step = std::min(count, source_.bytes_in_buffer);
        memcpy(to, source_.next_input_byte, step);
        to += step;
        count -= step;
        source_.next_input_byte += step;
        source_.bytes_in_buffer -= step;
    }
}

/** Keeps the first EXIF segment, and no other of the many kinds of APP1 segments. */
void JpegReader::take_exif()
{
    const size_t left = begin_segment();
    if (!exif_.empty() || left < sizeof EXIF_MARK || header_read_)
        return source_.skip_input_data(&codec_, static_cast<long>(left));
    exif_.resize(left);
    read_bytes(exif_.data(), left);
    if (memcmp(exif_.data(), EXIF_MARK, sizeof EXIF_MARK) != 0)
        exif_.clear();
}

/** Keeps the pieces of a colour profile, and no other of the kinds of APP2 segments. */
void JpegReader::take_icc()
{
    size_t left = begin_segment();
    uint8_t head[sizeof ICC_MARK + 2];
    if (left < sizeof head || header_read_)
        return source_.skip_input_data(&codec_, static_cast<long>(left));
    read_bytes(head, sizeof head);
    left -= sizeof head;
    uint8_t *to = memcmp(head, ICC_MARK, sizeof ICC_MARK) == 0
                      ? icc_.add(head[sizeof ICC_MARK], head[sizeof ICC_MARK + 1], left)
                      : nullptr;
    if (to)
        read_bytes(to, left);
    else
        source_.skip_input_data(&codec_, static_cast<long>(left));
}

void JpegReader::check_progress()
{
    take_step();
    if (codec_.input_scan_number > MOST_SCANS)
        give_up("Too many scans");
}

void JpegReader::choose_scale(const Size &wanted)
{
    codec_.scale_denom = 8;
    for (codec_.scale_num = 1; codec_.scale_num < 8; ++codec_.scale_num) {
        jpeg_calc_output_dimensions(&codec_);
        if (codec_.output_width >= static_cast<unsigned int>(wanted.width) &&
            codec_.output_height >= static_cast<unsigned int>(wanted.height))
            return;
    }
}

void JpegReader::start(const Size &wanted)
{
    const bool ink = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
    codec_.out_color_space = ink ? JCS_CMYK : JCS_EXT_BGRX;
    choose_scale(wanted);
    jpeg_start_decompress(&codec_);
}

/** What the picture's colours have to go through; null when they are those of sRGB. */
std::unique_ptr<ColourProfile> JpegReader::make_profile()
{
    const std::vector<uint8_t> icc = icc_.joined();
    if (const char *fault = icc_.fault())
        profile_use_.fault = fault;
    icc_.clear();
    if (icc.empty())
        return nullptr;
    auto content = ColourProfile::Content::Rgb;
    if (codec_.out_color_space == JCS_CMYK)
        content = codec_.saw_Adobe_marker ? ColourProfile::Content::Inverted
                                          : ColourProfile::Content::Ink;
    else if (codec_.jpeg_color_space == JCS_GRAYSCALE)
        content = ColourProfile::Content::Grey;
    auto profile = std::make_unique<ColourProfile>(icc, content);
    profile_use_ = profile->use();
    return profile->differs() ? std::move(profile) : nullptr;
}

bool JpegReader::decode(const Size &wanted, Image &result)
{
    if (!guarded([&] { start(wanted); }))
        return false;

    const size_t width = codec_.output_width;
    const std::unique_ptr<ColourProfile> profile = make_profile();
    const bool plain_ink = codec_.out_color_space == JCS_CMYK && !profile;
    Image scaled(wanted);
    RowScaler scaler({static_cast<int>(width), static_cast<int>(codec_.output_height)}, scaled);
    int converted = 0;
    std::vector<uint32_t> row(width);
    auto *bytes = reinterpret_cast<JSAMPROW>(row.data());
    while (codec_.output_scanline < codec_.output_height) {
        const bool read = guarded([&] {
            check_progress();
            jpeg_read_scanlines(&codec_, &bytes, 1);
        });
        if (!read)
            return false;
        if (plain_ink)
            ink_to_pixels(bytes, width, codec_.saw_Adobe_marker);
        scaler.push(row.data());
        // As long as the row is in the processor's cache; from memory it takes half as long again.
        for (; profile && converted < scaler.rows_done(); ++converted)
            profile->convert(scaled.row(converted), wanted.width);
    }
    result = std::move(scaled);
    return true;
}

} // namespace platform
