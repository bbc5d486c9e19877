/**
 * A file in the making: written under a name that no player takes for content and renamed when it
 * is complete, so that a folder never holds half an item.
 */
#pragma once

#include <cstddef>
#include <string>

namespace sample {

class TargetFile {
  public:
    /** @param path the final name */
    explicit TargetFile(std::string path);
    /** Removes what has not been completed. */
    ~TargetFile();
    TargetFile(const TargetFile &) = delete;
    TargetFile &operator=(const TargetFile &) = delete;

    /** The name to write to. */
    const std::string &working_path() const { return working_path_; }

    /** @throws std::runtime_error when not everything can be written */
    void write(const void *data, size_t size) const;

    /** Gives the finished file its name. @throws std::runtime_error */
    void complete();

  private:
    std::string path_;
    std::string working_path_;
    bool completed_ = false;
};

} // namespace sample
