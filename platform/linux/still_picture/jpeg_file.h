/**
 * The bytes of a picture file, read in small pieces. Never mapped: the file may be on a USB stick
 * that is pulled at any moment. One thread at a time.
 */
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/descriptor.h"

namespace platform {

class JpegFile {
  public:
    /**
     * Opens a regular file; does not wait for what is none, such as a pipe without a writer.
     *
     * @return an errno value, 0 when it is open
     */
    int open(const std::string &path);

    /**
     * Reads the next piece.
     *
     * @return its length, 0 at the end, or a negated errno value
     */
    int read();

    /** What was read last. */
    const uint8_t *data() const { return piece_.data(); }

  private:
    Descriptor file_;
    std::array<uint8_t, size_t{64} * 1024> piece_;
};

} // namespace platform
