/**
 * A program under test: started with its own environment, spoken to line by line, and gone, with
 * everything it started, when the object goes.
 */
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace desktop_test {

/** Long enough for a loaded machine; nothing that works ever takes it. */
inline constexpr double DEADLINE_S = 30.0;

/** Looks at a condition again and again. @return whether it came true in time */
bool wait_until(const std::function<bool()> &condition, double deadline_s = DEADLINE_S);

class Program {
  public:
    using Variables = std::map<std::string, std::string>;

    /** @param variables added to the environment; an empty value takes one out */
    Program(std::vector<std::string> command, const Variables &variables);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return pid_; }
    void signal(int number) const;

    /** Writes a line to the program's standard input. */
    void say(const std::string &line);

    /**
     * Waits for a line of the standard output. Lines up to it are not looked at again.
     *
     * @param line the whole line
     * @return false when it did not come
     */
    bool hears(const std::string &line, double deadline_s = DEADLINE_S);

    /** Waits for the end. @return the exit status, minus the signal, or -1000 when it goes on */
    int finish(double deadline_s = DEADLINE_S);

    /** What was written so far. */
    const std::vector<std::string> &lines();
    const std::string &errors();

    /** Lines of the standard output after the one last waited for. */
    std::vector<std::string> further_lines();

  private:
    void take(int timeout_ms);

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
    size_t next_line_ = 0;
    std::string partial_;
    std::vector<std::string> lines_;
    std::string errors_;
};

} // namespace desktop_test
