/** What of files and folders has to be closed, and closes itself. */
#pragma once

#include <memory>
#include <utility>

#include <dirent.h>
#include <unistd.h>

namespace platform {

class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor()
    {
        if (number_ >= 0)
            close(number_);
    }

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

  private:
    int number_ = -1;
};

struct DirectoryEnd {
    void operator()(DIR *directory) const { closedir(directory); }
};
/** A folder that is being listed. */
using DirectoryPtr = std::unique_ptr<DIR, DirectoryEnd>;

} // namespace platform
