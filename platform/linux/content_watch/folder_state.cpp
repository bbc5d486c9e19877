#include "content_watch/folder_state.h"

#include <functional>

#include <dirent.h>
#include <sys/stat.h>

#include "base/descriptor.h"
#include "player_rules/content_rules.h"

namespace platform {

namespace {

uint64_t digest_of(const std::string &name, const struct stat &status)
{
    return std::hash<std::string>()(name + '/' + std::to_string(status.st_size) + '/' +
                                    std::to_string(status.st_mtim.tv_sec) + '/' +
                                    std::to_string(status.st_mtim.tv_nsec));
}

} // namespace

std::optional<FolderState> folder_state(const std::string &path)
{
    const DirectoryPtr directory(opendir(path.c_str()));
    if (!directory)
        return std::nullopt;
    FolderState state;
    while (const dirent *entry = readdir(directory.get())) {
        // A kind of file that some models play is watched on all; on others it makes no harm.
        if (content_kind(entry->d_name, true) == ContentKind::Other &&
            !is_subtitle(entry->d_name, true))
            continue;
        // A file that cannot be looked at is in the player's list all the same.
        struct stat status = {};
        fstatat(dirfd(directory.get()), entry->d_name, &status, 0);
        ++state.files;
        // A sum, since the order is the file system's.
        state.digest += digest_of(entry->d_name, status);
    }
    return state;
}

} // namespace platform
