#include "desktop_support/program.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace desktop_test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int STILL_RUNNING = -1000;

bool read_some(int &descriptor, std::string &text)
{
    char buffer[4096];
    const ssize_t size = read(descriptor, buffer, sizeof buffer);
    if (size > 0) {
        text.append(buffer, static_cast<size_t>(size));
        return true;
    }
    close(descriptor);
    descriptor = -1;
    return false;
}

} // namespace

bool wait_until(const std::function<bool()> &condition, double deadline_s)
{
    const auto deadline = Clock::now() + std::chrono::duration<double>(deadline_s);
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        poll(nullptr, 0, 10);
    }
    return true;
}

Program::Program(std::vector<std::string> command, const Variables &variables)
{
    int in[2], out[2], err[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
        std::abort();
    // A program that has ended is a failed test, not the end of all.
    std::signal(SIGPIPE, SIG_IGN);
    pid_ = fork();
    if (pid_ == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const auto &[name, value] : variables) {
            if (value.empty())
                unsetenv(name.c_str());
            else
                setenv(name.c_str(), value.c_str(), 1);
        }
        std::vector<char *> arguments;
        for (std::string &argument : command)
            arguments.push_back(argument.data());
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    in_ = in[1];
    out_ = out[0];
    err_ = err[0];
}

Program::~Program()
{
    if (pid_ > 0) {
        kill(-pid_, SIGKILL);
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    for (const int descriptor : {in_, out_, err_}) {
        if (descriptor >= 0)
            close(descriptor);
    }
}

void Program::signal(int number) const
{
    kill(pid_, number);
}

void Program::say(const std::string &line)
{
    const std::string text = line + "\n";
    EXPECT_EQ(write(in_, text.data(), text.size()), static_cast<ssize_t>(text.size()))
        << "nobody listens to '" << line << "'";
}

bool Program::hears(const std::string &line, double deadline_s)
{
    const auto deadline = Clock::now() + std::chrono::duration<double>(deadline_s);
    do {
        while (next_line_ < lines_.size()) {
            if (lines_[next_line_++] == line)
                return true;
        }
        if (out_ < 0)
            return false;
        take(20);
    } while (Clock::now() < deadline);
    return false;
}

int Program::finish(double deadline_s)
{
    int status = 0;
    const bool ended = wait_until(
        [&] {
            take(0);
            return waitpid(pid_, &status, WNOHANG) == pid_;
        },
        deadline_s);
    if (!ended)
        return STILL_RUNNING;
    pid_ = -1;
    while (out_ >= 0 || err_ >= 0)
        take(-1);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

const std::vector<std::string> &Program::lines()
{
    take(0);
    return lines_;
}

const std::string &Program::errors()
{
    take(0);
    return errors_;
}

std::vector<std::string> Program::further_lines()
{
    take(0);
    return {lines_.begin() + static_cast<std::ptrdiff_t>(next_line_), lines_.end()};
}

void Program::take(int timeout_ms)
{
    pollfd descriptors[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    if (poll(descriptors, 2, timeout_ms) <= 0)
        return;
    if (descriptors[0].revents != 0)
        read_some(out_, partial_);
    if (descriptors[1].revents != 0)
        read_some(err_, errors_);
    for (size_t end = partial_.find('\n'); end != std::string::npos; end = partial_.find('\n')) {
        lines_.push_back(partial_.substr(0, end));
        partial_.erase(0, end + 1);
    }
}

} // namespace desktop_test
