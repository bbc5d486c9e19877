#include "target_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <unistd.h>

namespace sample {

namespace {

[[noreturn]] void fail(const std::string &path, int number)
{
    throw std::runtime_error(path + ": " + std::strerror(number) + ".");
}

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

} // namespace

TargetFile::TargetFile(std::string path) : path_(std::move(path)), working_path_(path_ + ".part") {}

TargetFile::~TargetFile()
{
    if (!completed_)
        unlink(working_path_.c_str());
}

void TargetFile::write(const void *data, size_t size) const
{
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(working_path_.c_str(), "wbe"));
    if (!file)
        fail(working_path_, errno);
    if (std::fwrite(data, 1, size, file.get()) != size)
        fail(working_path_, errno);
    // Only the closing tells whether the last bytes found room on the disk.
    if (std::fclose(file.release()) != 0)
        fail(working_path_, errno);
}

void TargetFile::complete()
{
    if (std::rename(working_path_.c_str(), path_.c_str()) != 0)
        fail(path_, errno);
    completed_ = true;
}

} // namespace sample
