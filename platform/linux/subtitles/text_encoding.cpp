#include "subtitles/text_encoding.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>

#include <iconv.h>
#include <uchardet.h>

#include "base/utf8.h"

namespace platform {

namespace {

constexpr char REPLACEMENT_CHARACTER[] = "\xEF\xBF\xBD";

struct DetectorDeleter {
    void operator()(uchardet_t detector) const { uchardet_delete(detector); }
};
using Detector = std::unique_ptr<std::remove_pointer_t<uchardet_t>, DetectorDeleter>;

class Converter {
  public:
    explicit Converter(const char *from) : handle_(iconv_open("UTF-8", from)) {}
    ~Converter()
    {
        if (valid())
            iconv_close(handle_);
    }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return handle_; }

  private:
    iconv_t handle_;
};

struct Utf8Counts {
    size_t long_sequences = 0;
    size_t bad_bytes = 0;
};

Utf8Counts count_utf8(const std::string &text)
{
    Utf8Counts counts;
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8_length(text, i);
        if (length == 0)
            ++counts.bad_bytes;
        else if (length > 1)
            ++counts.long_sequences;
        i += std::max<size_t>(length, 1);
    }
    return counts;
}

std::string replace_bad_utf8(const std::string &text)
{
    std::string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8_length(text, i);
        if (length == 0)
            result += REPLACEMENT_CHARACTER;
        else
            result.append(text, i, length);
        i += std::max<size_t>(length, 1);
    }
    return result;
}

/** The encoding a byte order mark tells, with the mark's length; null when there is no mark. */
const char *marked_encoding(const std::string &bytes, size_t &mark_length)
{
    struct Mark {
        const char *bytes;
        size_t length;
        const char *encoding;
    };
    // The marks of UTF-32 come first: the one of UTF-16LE is a part of theirs.
    static const Mark marks[] = {{"\xFF\xFE\0\0", 4, "UTF-32LE"},
                                 {"\0\0\xFE\xFF", 4, "UTF-32BE"},
                                 {"\xEF\xBB\xBF", 3, "UTF-8"},
                                 {"\xFF\xFE", 2, "UTF-16LE"},
                                 {"\xFE\xFF", 2, "UTF-16BE"}};
    for (const Mark &mark : marks) {
        if (bytes.size() >= mark.length &&
            std::memcmp(bytes.data(), mark.bytes, mark.length) == 0) {
            mark_length = mark.length;
            return mark.encoding;
        }
    }
    return nullptr;
}

/** UTF-16 without a mark gives itself away by the zero halves of its ASCII characters. */
const char *unmarked_utf16(const std::string &bytes)
{
    const size_t sample = std::min<size_t>(bytes.size(), 4096) & ~size_t{1};
    if (sample < 16)
        return nullptr;
    size_t zeros[2] = {0, 0};
    for (size_t i = 0; i < sample; ++i)
        zeros[i & 1] += bytes[i] == '\0';
    const size_t many = sample / 2 / 4;
    if (zeros[1] > many && zeros[0] * 16 < zeros[1])
        return "UTF-16LE";
    if (zeros[0] > many && zeros[1] * 16 < zeros[0])
        return "UTF-16BE";
    return nullptr;
}

std::string guess_legacy_encoding(const std::string &bytes)
{
    const Detector detector(uchardet_new());
    if (!detector)
        return "WINDOWS-1252";
    uchardet_handle_data(detector.get(), bytes.data(), std::min<size_t>(bytes.size(), 1u << 20));
    uchardet_data_end(detector.get());
    std::string found = uchardet_get_charset(detector.get());

    // Files that call themselves by the standard's name are mostly written in the vendor's
    // superset.
    static const char *const supersets[][2] = {
        {"EUC-KR", "UHC"},
        {"GB2312", "GB18030"},
        {"SHIFT_JIS", "CP932"},
        {"BIG5", "CP950"},
        {"TIS-620", "CP874"},
        {"ISO-8859-11", "CP874"},
        {"ISO-8859-1", "CP1252"},
        {"ISO-8859-9", "CP1254"},
        {"ASCII", "CP1252"},
        {"ISO-8859-8", "CP1255"},
        {"MAC-CENTRALEUROPE", "CP1250"},
        {"", "CP1252"},
        {"WINDOWS-1252", "CP1252"},
    };
    for (const auto &pair : supersets) {
        if (found == pair[0])
            return pair[1];
    }
    return found;
}

/** Bytes to step over where a character is broken, so that the ones after it stay aligned. */
size_t unit_size(const std::string &encoding)
{
    return encoding.compare(0, 5, "UTF-3") == 0 ? 4 : encoding.compare(0, 5, "UTF-1") == 0 ? 2 : 1;
}

std::string convert(const std::string &bytes, size_t from, const std::string &encoding)
{
    const Converter converter(encoding.c_str());
    const size_t unit = unit_size(encoding);
    std::string result;
    result.reserve(bytes.size() * 2);
    char *input = const_cast<char *>(bytes.data()) + from;
    size_t left = bytes.size() - from;
    char block[16 * 1024];
    bool flushing = false;
    while (!flushing) {
        flushing = left == 0;
        char *output = block;
        size_t room = sizeof block;
        const size_t status = flushing ? iconv(converter.get(), nullptr, nullptr, &output, &room)
                                       : iconv(converter.get(), &input, &left, &output, &room);
        const int reason = errno;
        result.append(block, sizeof block - room);
        if (status != static_cast<size_t>(-1) || reason == E2BIG)
            continue;
        if (reason != EILSEQ || left < unit)
            break; // a file cut in the middle of a character
        result += REPLACEMENT_CHARACTER;
        input += unit;
        left -= unit;
    }
    return result;
}

/** Whether a text has so many control characters that it was never meant to be read. */
bool looks_binary(const std::string &text)
{
    const auto is_odd = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && !std::strchr("\t\n\r\f\v\x1a\x1b", c)) || byte == 0;
    };
    const auto odd = static_cast<size_t>(std::count_if(text.begin(), text.end(), is_odd));
    return odd > 4 && odd * 50 > text.size();
}

/** Also shortens long gaps: no format counts empty lines, and a file of nothing else is slow. */
std::string unify_line_ends(const std::string &text)
{
    constexpr int MOST_IN_A_ROW = 3;
    std::string result;
    result.reserve(text.size());
    int in_a_row = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool carriage_return = text[i] == '\r';
        if (carriage_return && i + 1 < text.size() && text[i + 1] == '\n')
            ++i;
        if (carriage_return || text[i] == '\n') {
            if (++in_a_row <= MOST_IN_A_ROW)
                result += '\n';
        } else if (text[i] != '\0') {
            in_a_row = 0;
            result += text[i];
        }
    }
    return result;
}

} // namespace

std::optional<std::string> text_to_utf8(const std::string &bytes, std::string &encoding)
{
    size_t mark_length = 0;
    const char *told = marked_encoding(bytes, mark_length);
    if (!told)
        told = unmarked_utf16(bytes);

    if (told) {
        encoding = told;
    } else {
        // A few bad bytes, such as a file's cut end, do not turn UTF-8 into something else.
        const Utf8Counts counts = count_utf8(bytes);
        const bool utf8 = counts.bad_bytes * 20 <= counts.long_sequences;
        if (!utf8 && looks_binary(bytes))
            return std::nullopt;
        encoding = utf8 ? "UTF-8" : guess_legacy_encoding(bytes);
    }

    std::string text;
    if (encoding == "UTF-8") {
        text = replace_bad_utf8(bytes.substr(mark_length));
    } else {
        if (!Converter(encoding.c_str()).valid())
            encoding = "CP1252";
        text = convert(bytes, mark_length, encoding);
    }
    if (looks_binary(text))
        return std::nullopt;
    return unify_line_ends(text);
}

} // namespace platform
