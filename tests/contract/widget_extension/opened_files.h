/** Which files of fonts and of the program's resources this process opens. */
#pragma once

#include <string>
#include <vector>

/** Notes every such file that is opened while this lives. One at a time; any thread may open. */
class OpenedFiles {
  public:
    OpenedFiles();
    ~OpenedFiles();
    OpenedFiles(const OpenedFiles &) = delete;
    OpenedFiles &operator=(const OpenedFiles &) = delete;

    /** Full paths, in the order of opening. */
    std::vector<std::string> paths() const;
};
