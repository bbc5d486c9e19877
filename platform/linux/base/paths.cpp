#include "base/paths.h"

namespace platform {

std::string without_last_slashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string last_part(const std::string &path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace platform
