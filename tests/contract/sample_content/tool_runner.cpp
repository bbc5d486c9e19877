#include "tool_runner.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds DEADLINE(60);

int milliseconds_until(Clock::time_point end)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return static_cast<int>(std::max<long long>(left.count(), 0));
}

/** Waits for something to read; false when the time is up. */
bool wait_readable(int fd, Clock::time_point end)
{
    pollfd entry = {fd, POLLIN, 0};
    int status = 0;
    do
        status = poll(&entry, 1, milliseconds_until(end));
    while (status < 0 && errno == EINTR);
    return status > 0;
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "sample-XXXXXX").string();
    if (mkdtemp(name.data()))
        path_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
}

ToolProcess::ToolProcess(const std::vector<std::string> &arguments,
                         const Surroundings &surroundings)
{
    std::vector<std::string> words = {SAMPLE_TOOL};
    // By a program of its own: what counts lines writes to files too, between fork() and exec().
    if (surroundings.file_size_limit > 0)
        words.insert(words.begin(), {"/usr/bin/prlimit",
                                     "--fsize=" + std::to_string(surroundings.file_size_limit)});
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    process_ = fork();
    if (process_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        for (const std::string &entry : surroundings.environment)
            putenv(const_cast<char *>(entry.c_str()));
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(ends[1]);
    pipe_ = ends[0];
}

ToolProcess::~ToolProcess()
{
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    if (pipe_ >= 0)
        close(pipe_);
}

void ToolProcess::send(int signal_number) const
{
    if (process_ > 0)
        kill(process_, signal_number);
}

int ToolProcess::wait()
{
    const auto end = Clock::now() + DEADLINE;
    char block[4096];
    ssize_t count = 1;
    while (count > 0) {
        if (!wait_readable(pipe_, end))
            return -1; // the destructor ends it
        count = read(pipe_, block, sizeof block);
        if (count > 0)
            output_.append(block, static_cast<size_t>(count));
    }
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ToolResult run_tool(const std::vector<std::string> &arguments, const Surroundings &surroundings)
{
    ToolProcess tool(arguments, surroundings);
    const int status = tool.wait();
    return {status, tool.output()};
}

std::vector<std::string> names_in(const std::string &folder)
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string content_of(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

CreationWatch::CreationWatch(const std::string &folder)
    : inotify_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    inotify_add_watch(inotify_, folder.c_str(), IN_CREATE);
}

CreationWatch::~CreationWatch()
{
    close(inotify_);
}

bool CreationWatch::wait_for(const std::string &name) const
{
    const auto end = Clock::now() + DEADLINE;
    alignas(inotify_event) char block[4096];
    while (wait_readable(inotify_, end)) {
        const ssize_t count = read(inotify_, block, sizeof block);
        for (ssize_t at = 0; at < count;) {
            const auto *event = reinterpret_cast<const inotify_event *>(block + at);
            if (event->len > 0 && name == event->name)
                return true;
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
    }
    return false;
}
