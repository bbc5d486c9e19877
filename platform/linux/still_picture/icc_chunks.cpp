#include "still_picture/icc_chunks.h"

#include <algorithm>
#include <new>

namespace platform {

uint8_t *IccChunks::add(unsigned number, unsigned count, size_t length)
{
    if (fault_)
        return nullptr;
    if (count_ == 0)
        count_ = count;
    if (count > MOST)
        fault_ = "it is too large";
    else if (number == 0 || number > count || count != count_ || chunks_[number - 1].bytes)
        fault_ = "its pieces are numbered wrongly";
    if (fault_ || length == 0)
        return nullptr;
    Chunk &chunk = chunks_[number - 1];
    chunk.bytes.reset(new (std::nothrow) uint8_t[length]);
    chunk.length = length;
    if (!chunk.bytes)
        fault_ = "no memory";
    return chunk.bytes.get();
}

const char *IccChunks::fault() const
{
    const bool missing = std::any_of(chunks_.begin(), chunks_.begin() + std::min(count_, MOST),
                                     [](const Chunk &chunk) { return !chunk.bytes; });
    return !fault_ && missing ? "a piece of it is missing" : fault_;
}

std::vector<uint8_t> IccChunks::joined() const
{
    std::vector<uint8_t> all;
    if (fault())
        return all;
    for (const Chunk &chunk : chunks_)
        all.insert(all.end(), chunk.bytes.get(), chunk.bytes.get() + chunk.length);
    return all;
}

} // namespace platform
