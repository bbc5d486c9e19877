/** What is written to standard error while the object lives. */
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace store_test {

class CapturedLog {
  public:
    CapturedLog() : file_(std::tmpfile()), before_(dup(STDERR_FILENO))
    {
        if (file_ == nullptr || before_ < 0)
            std::abort();
        dup2(fileno(file_), STDERR_FILENO);
    }
    ~CapturedLog()
    {
        dup2(before_, STDERR_FILENO);
        close(before_);
        std::fclose(file_);
    }
    CapturedLog(const CapturedLog &) = delete;
    CapturedLog &operator=(const CapturedLog &) = delete;

    std::string text() const
    {
        std::string text;
        char buffer[4096];
        for (off_t at = 0;; at = static_cast<off_t>(text.size())) {
            const ssize_t length = pread(fileno(file_), buffer, sizeof buffer, at);
            if (length <= 0)
                return text;
            text.append(buffer, static_cast<size_t>(length));
        }
    }

  private:
    FILE *file_;
    int before_;
};

} // namespace store_test
