#include "resource_path.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include <sys/stat.h>

#include "settings/settings.h"

// One program is installed here, so its resources are those of every application id.
char *getResourcePath(const char *application_id, const char *name)
{
    if (application_id == nullptr || name == nullptr || name[0] == '\0')
        return nullptr;
    const std::string path = platform::Settings::get().resource_dir + "/" + name;
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return nullptr;
    return strdup(path.c_str());
}

void freeResourcePath(char *path)
{
    std::free(path);
}
