#include "base/paths.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "base/regular_file.h"

namespace platform {

namespace {

constexpr size_t LONGEST_FILE = 65536;

} // namespace

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

bool contains(const std::vector<std::string> &paths, const std::string &path)
{
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

// Each path is ended by the one byte that none has.
std::vector<std::string> read_paths(const std::string &file)
{
    std::vector<std::string> paths;
    std::string text;
    if (read_regular_file(file, LONGEST_FILE, text) != 0)
        return paths;
    size_t begin = 0;
    for (size_t end = 0; (end = text.find('\0', begin)) != std::string::npos; begin = end + 1)
        paths.push_back(text.substr(begin, end - begin));
    return paths;
}

bool write_paths(const std::string &file, const std::vector<std::string> &paths)
{
    std::error_code failure;                // is seen when the file is opened
    std::filesystem::remove(file, failure); // it may be a pipe, which would be waited for
    std::ofstream out(file);
    for (const std::string &path : paths)
        out << path << '\0';
    out.flush();
    return out.good();
}

} // namespace platform
