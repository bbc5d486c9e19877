/**
 * Reading files where anything may lie in a file's place: only regular files are opened, and
 * nothing waits for a pipe's writer or grows with a file that has no end. Any thread; waits for the
 * disk only.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/types.h>

#include "base/descriptor.h"

namespace platform {

/**
 * Changes when another file takes a file's place, when it is written to, even if its time is set
 * back afterwards, and when its owner or rights change.
 */
using FileStamp = std::array<int64_t, 7>;

/** @return nothing where there is no file, or none that can be seen */
std::optional<FileStamp> file_stamp(const std::string &path);

/**
 * Opens a regular file. Child processes do not get it.
 *
 * @param flags of open(2), added to what keeps it from blocking
 * @return no descriptor on failure, with errno set: EISDIR for a folder, EINVAL for what is neither
 */
Descriptor open_regular_file(const std::string &path, int flags = O_RDONLY);

/** The same, of a file in a folder that is open, whatever has become of the folder's path. */
Descriptor open_regular_file_at(int folder, const std::string &name, int flags = O_RDONLY);

/** read(2), begun anew when a signal interrupts it. */
ssize_t read_piece(int descriptor, void *buffer, size_t size);

/** write(2) for all of it. @return false on failure, with errno set */
bool write_whole(int descriptor, std::string_view bytes);

/**
 * Reads a regular file to its end.
 *
 * @param limit   bytes that the file may have
 * @param content receives the bytes; what was read so far on failure
 * @param stop    asked before each piece; true gives up. Empty: never
 * @return an errno value, 0 when all was read; as open_regular_file(), EFBIG for a file over the
 *         limit, ECANCELED for one given up
 */
int read_regular_file(const std::string &path, size_t limit, std::string &content,
                      const std::function<bool()> &stop = {});

} // namespace platform
