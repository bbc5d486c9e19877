/**
 * What the contract tests of the small services share: a folder of their own, environment variables
 * that are put back, the main loop run until something is true, and child processes.
 */
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <Ecore.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace store_test {

/** A folder that goes with the object. */
class ScratchDir {
  public:
    ScratchDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "contract-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            std::abort();
        path_ = pattern;
    }
    ~ScratchDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir &) = delete;
    ScratchDir &operator=(const ScratchDir &) = delete;

    std::string operator/(const std::string &name) const { return path_ + "/" + name; }
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

/** Sets an environment variable, or takes it out when no value is given, until it goes. */
class Environment {
  public:
    explicit Environment(std::string name, std::optional<std::string> value = {})
        : name_(std::move(name))
    {
        if (const char *before = std::getenv(name_.c_str()))
            before_ = before;
        set(value);
    }
    ~Environment() { set(before_); }
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

  private:
    void set(const std::optional<std::string> &value) const
    {
        if (value)
            setenv(name_.c_str(), value->c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

    const std::string name_;
    std::optional<std::string> before_;
};

inline void write_file(const std::string &path, const std::string &text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

inline std::string read_file(const std::string &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/** Runs the main loop until a condition holds. @return whether it did before the deadline. */
inline bool run_loop_until(const std::function<bool()> &condition, double deadline_s = 10.0)
{
    if (condition())
        return true;
    const auto check = [](void *data) -> Eina_Bool {
        if ((*static_cast<const std::function<bool()> *>(data))())
            ecore_main_loop_quit();
        return ECORE_CALLBACK_RENEW;
    };
    const auto expire = [](void *) -> Eina_Bool {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_RENEW;
    };
    // Before each sleep of the loop, that is, whenever something may have happened.
    Ecore_Idle_Enterer *checker = ecore_idle_enterer_add(check, &condition);
    Ecore_Timer *deadline = ecore_timer_add(deadline_s, expire, nullptr);
    ecore_main_loop_begin();
    ecore_timer_del(deadline);
    ecore_idle_enterer_del(checker);
    return condition();
}

/** A started program; killed and collected when the object goes. */
class Child {
  public:
    /** @param prepare runs in the child before the program starts */
    Child(std::vector<std::string> command, const std::function<void()> &prepare = {})
    {
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            std::abort();
        pid_ = fork();
        if (pid_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            dup2(err[1], STDERR_FILENO);
            if (prepare)
                prepare();
            std::vector<char *> arguments;
            for (std::string &argument : command)
                arguments.push_back(argument.data());
            arguments.push_back(nullptr);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(out[1]);
        close(err[1]);
        out_ = out[0];
        err_ = err[0];
    }
    ~Child()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(out_);
        close(err_);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t pid() const { return pid_; }
    int out() const { return out_; }
    void signal(int number) const { kill(pid_, number); }
    std::string &out_text() { return out_text_; }
    std::string &err_text() { return err_text_; }

    /** Takes in what the child has written so far. @return false when it has closed its output. */
    bool read_some(int timeout_ms)
    {
        pollfd descriptors[2] = {{out_open_ ? out_ : -1, POLLIN, 0},
                                 {err_open_ ? err_ : -1, POLLIN, 0}};
        poll(descriptors, 2, timeout_ms);
        take(descriptors[0], out_text_, out_open_);
        take(descriptors[1], err_text_, err_open_);
        return out_open_ || err_open_;
    }

    /**
     * Reads to the end. Not after the main loop has run while the child lived: Ecore collects every
     * child that ends meanwhile.
     *
     * @return the exit status, or minus the signal that ended it; 1000 when somebody else took it
     */
    int finish()
    {
        while (read_some(-1)) {
        }
        int status = 0;
        const pid_t collected = waitpid(pid_, &status, 0);
        pid_ = -1;
        if (collected < 0)
            return 1000;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    static void take(const pollfd &descriptor, std::string &text, bool &open)
    {
        if (descriptor.fd < 0 || descriptor.revents == 0)
            return;
        char buffer[4096];
        const ssize_t length = read(descriptor.fd, buffer, sizeof buffer);
        if (length > 0)
            text.append(buffer, static_cast<size_t>(length));
        else
            open = false;
    }

    pid_t pid_ = -1;
    int out_ = -1;
    int err_ = -1;
    bool out_open_ = true;
    bool err_open_ = true;
    std::string out_text_;
    std::string err_text_;
};

} // namespace store_test
