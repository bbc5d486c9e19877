/**
 * The pieces in which a JPEG file holds its ICC profile, one in each APP2 segment, in any order.
 * One thread at a time; nothing here throws before joined(), so that libjpeg's functions may call
 * it.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace platform {

class IccChunks {
  public:
    /** How many there may be: four megabytes, and no printer's profile has more. */
    static constexpr unsigned MOST = 64;

    /**
     * Makes room for a piece.
     *
     * @param number which it is, from 1 on
     * @param count  how many there are, as this piece has it
     * @return room for `length` bytes; null when the piece is of no use, see fault()
     */
    uint8_t *add(unsigned number, unsigned count, size_t length);

    /** What is wrong with the pieces, once all were added; null when nothing is. */
    const char *fault() const;

    /** The whole profile; empty when there is none, or something is wrong. */
    std::vector<uint8_t> joined() const;

    /** Lets go of all pieces. */
    void clear() { *this = {}; }

  private:
    struct Chunk {
        std::unique_ptr<uint8_t[]> bytes;
        size_t length = 0;
    };
    std::array<Chunk, MOST> chunks_;
    unsigned count_ = 0; ///< 0 before the first piece
    const char *fault_ = nullptr;
};

} // namespace platform
