/**
 * One JPEG file, decoded once: the header first, the pixels later, straight into the size that is
 * wanted, row by row. Everything that libjpeg has to say ends up in error(). One thread at a time;
 * a flag set by any thread makes it give up soon. The file is read in pieces and never mapped: it
 * may be on a USB stick that is pulled at any moment.
 */
#pragma once

#include <array>
#include <atomic>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <jpeglib.h>

#include "base/descriptor.h"
#include "base/orientation.h"
#include "still_picture/colour_profile.h"
#include "still_picture/icc_chunks.h"
#include "still_picture/image.h"
#include "unplayable_files/unplayable_files.h"

namespace platform {

class JpegReader {
  public:
    /** What two threads tell each other of a reading. */
    struct Progress {
        const std::atomic<bool> &cancelled; ///< looked at between pieces of work
        std::atomic<unsigned int> steps{0}; ///< pieces of work so far
    };

    /** @param progress must outlive the reader */
    explicit JpegReader(Progress &progress);
    ~JpegReader();
    JpegReader(const JpegReader &) = delete;
    JpegReader &operator=(const JpegReader &) = delete;

    /** Opens the file and reads its header. @return whether it is a picture, else see error(). */
    bool open(const std::string &path);

    /** As it is in the file, not upright; after open(). */
    Size size() const;

    /** What brings the picture upright; after open(). */
    Orientation orientation() const { return orientation_; }

    /**
     * Decodes the picture, into the colours of sRGB; once, after open().
     *
     * @param wanted the result's size, no larger than the picture
     * @param result untouched on failure
     * @return false when any part of the picture is missing or damaged, see error()
     */
    bool decode(const Size &wanted, Image &result);

    /** What became of the picture's colour profile; after decode(). */
    const ProfileUse &profile_use() const { return profile_use_; }

    /** Why the last call failed, for the log. */
    const char *error() const { return message_; }

    /** What kind of reason that is. */
    UnplayableFile::Kind error_kind() const { return error_kind_; }

  private:
    template <typename Step> bool guarded(const Step &step);
    void start(const Size &wanted);
    void choose_scale(const Size &wanted);
    void take_step();
    void check_progress();
    bool next_piece();
    size_t begin_segment();
    void read_bytes(uint8_t *to, size_t count);
    void take_exif();
    void take_icc();
    std::unique_ptr<ColourProfile> make_profile();
    [[noreturn]] void give_up(const char *reason,
                              UnplayableFile::Kind kind = UnplayableFile::Kind::Damaged);
    [[noreturn]] void give_up();
    static JpegReader &of(j_common_ptr codec);
    static JpegReader &of(j_decompress_ptr codec);

    Progress &progress_made_;
    std::optional<std::string> path_; ///< of the file that it counts among the readers of
    Descriptor file_;
    std::array<uint8_t, size_t{64} * 1024> piece_;
    std::vector<uint8_t> exif_;
    Orientation orientation_;
    IccChunks icc_;
    ProfileUse profile_use_;
    bool header_read_ = false;
    bool at_end_ = false;
    char message_[JMSG_LENGTH_MAX] = "";
    UnplayableFile::Kind error_kind_ = UnplayableFile::Kind::Damaged; ///< of message_
    std::jmp_buf on_error_;

    jpeg_decompress_struct codec_ = {};
    jpeg_error_mgr errors_ = {};
    jpeg_source_mgr source_ = {};
    jpeg_progress_mgr progress_ = {};
};

} // namespace platform
