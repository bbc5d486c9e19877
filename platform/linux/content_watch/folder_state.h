/**
 * What a folder holds, as far as it matters to the player. Any thread; takes as long as the file
 * system does.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/**
 * The names, sizes and times of last change of the files that the player plays or looks at for
 * subtitles. Other files make no difference, nor does the order of the folder.
 */
struct FolderState {
    uint64_t files = 0;
    uint64_t digest = 0;

    bool operator==(const FolderState &other) const
    {
        return files == other.files && digest == other.digest;
    }
    bool operator!=(const FolderState &other) const { return !(*this == other); }
};

/** @return nothing where the folder cannot be read */
std::optional<FolderState> folder_state(const std::string &path);

} // namespace platform
