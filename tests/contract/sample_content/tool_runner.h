/** Running make-sample-content from the tests: its exit status, its output, its files. */
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

/** A folder under the system's temporary one that goes away with the object. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

/** What a tool finds around it, other than the tests' own surroundings. */
struct Surroundings {
    std::vector<std::string> environment = {}; ///< additional "NAME=value" entries
    long file_size_limit = 0;                  ///< bytes; 0 for none
};

/** A running tool. */
class ToolProcess {
  public:
    ToolProcess(const std::vector<std::string> &arguments, const Surroundings &surroundings = {});
    ~ToolProcess();
    ToolProcess(const ToolProcess &) = delete;
    ToolProcess &operator=(const ToolProcess &) = delete;

    void send(int signal_number) const;
    /** Waits for the end; returns the exit status, or -1 when it died or did not end in time. */
    int wait();
    /** Standard output and standard error together, complete after wait(). */
    const std::string &output() const { return output_; }

  private:
    pid_t process_ = -1;
    int pipe_ = -1;
    std::string output_;
};

/** Runs the tool to its end. */
struct ToolResult {
    int status;
    std::string output;
};
ToolResult run_tool(const std::vector<std::string> &arguments,
                    const Surroundings &surroundings = {});

/** Names in a folder, sorted. */
std::vector<std::string> names_in(const std::string &folder);

std::string content_of(const std::string &path);

/** Waits until a file of this name is created in a folder; false when it does not come in time. */
class CreationWatch {
  public:
    explicit CreationWatch(const std::string &folder);
    ~CreationWatch();
    CreationWatch(const CreationWatch &) = delete;
    CreationWatch &operator=(const CreationWatch &) = delete;
    bool wait_for(const std::string &name) const;

  private:
    int inotify_ = -1;
};
