/**
 * What the numbers of a picture mean by its ICC profile, and the same colours in sRGB: relative
 * colorimetric, with black point compensation. Little CMS reads the profile and converts; where it
 * comes to curves and a matrix, as with cameras and phones, a loop of look-ups does the same in a
 * fifth of the time. One thread at a time.
 */
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace platform {

/** What became of the profile that a picture came with; both empty when there was none. */
struct ProfileUse {
    std::string applied; ///< its name, printable; empty also when it made no difference to sRGB
    std::string fault;   ///< why it could not be used
};

class ColourProfile {
  public:
    /** What the four bytes of a pixel hold. */
    enum class Content {
        Grey,    ///< one number, three times, and one unused
        Rgb,     ///< blue, green, red, and one unused
        Ink,     ///< cyan, magenta, yellow and black, 255 the most of it
        Inverted ///< the same, 255 being none
    };

    /** @param icc the profile's bytes, whatever they are */
    ColourProfile(const std::vector<uint8_t> &icc, Content content);
    ~ColourProfile();
    ColourProfile(const ColourProfile &) = delete;
    ColourProfile &operator=(const ColourProfile &) = delete;

    /** Whether there is anything to convert: not when the profile cannot be used or is sRGB. */
    bool differs() const { return !codes_.empty() || transform_; }

    const ProfileUse &use() const { return use_; }

    /** Turns pixels into those of sRGB, in place; only where it differs(). The unused byte may hold
     * anything then. */
    void convert(uint32_t *pixels, int count) const;

  private:
    struct ContextDeleter {
        void operator()(void *context) const;
    };
    struct TransformDeleter {
        void operator()(void *transform) const;
    };
    using Transform = std::unique_ptr<void, TransformDeleter>;
    struct Sample;

    bool read(const std::vector<uint8_t> &icc);
    Transform between(void *from, uint32_t from_format, void *to, uint32_t to_format,
                      uint32_t flags) const;
    std::vector<Sample> samples(void *to_light) const;
    bool tabulate(void *to_light);
    uint32_t looked_up(const uint8_t *pixel) const;

    const Content content_;
    ProfileUse use_;
    char complaint_[256] = ""; ///< the first one of Little CMS
    std::unique_ptr<void, ContextDeleter> context_;
    Transform transform_;

    /** What each number of blue, green and red adds to the light of all three, side by side. */
    std::array<std::array<uint64_t, 256>, 3> light_ = {};
    /** The codes of sRGB for the sums of that; empty when there are no such tables. */
    std::vector<uint8_t> codes_;
};

} // namespace platform
