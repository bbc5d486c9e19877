#include "media_player/media_uri.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

#include "media_player.h"
#include "media_player/gst_ptr.h"

namespace platform {
namespace {

bool is_local_uri(const std::string &name)
{
    return name.rfind("file://", 0) == 0 || name.rfind("fd://", 0) == 0;
}

} // namespace

std::string media_uri(const std::string &name)
{
    if (is_local_uri(name))
        return name;
    const CharsPtr uri(gst_filename_to_uri(name.c_str(), nullptr));
    return uri ? uri.get() : "";
}

std::string local_path(const std::string &uri)
{
    const CharsPtr path(g_filename_from_uri(uri.c_str(), nullptr, nullptr));
    return path ? path.get() : "";
}

int check_media_file(const std::string &path)
{
    struct stat facts = {};
    if (stat(path.c_str(), &facts) != 0)
        return errno == EACCES ? PLAYER_ERROR_PERMISSION_DENIED : PLAYER_ERROR_NO_SUCH_FILE;
    if (!S_ISREG(facts.st_mode) || facts.st_size == 0)
        return PLAYER_ERROR_NOT_SUPPORTED_FILE;
    if (access(path.c_str(), R_OK) != 0)
        return PLAYER_ERROR_PERMISSION_DENIED;
    return PLAYER_ERROR_NONE;
}

} // namespace platform
