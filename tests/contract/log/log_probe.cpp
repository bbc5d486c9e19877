// Writes lines to the log as a program of the set would, for the tests to look at from outside.
//   log_probe PRIORITY TAG TEXT        one line
//   log_probe threads COUNT LINES      COUNT threads with LINES lines each
//   log_probe errno                    whether a line leaves errno alone; the exit status says
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "dlog.h"

namespace {

int write_from_threads(int count, int lines)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([i, lines] {
            const std::string text(3000, static_cast<char>('a' + i));
            for (int line = 0; line < lines; ++line)
                __dlog_print(LOG_ID_APPS, DLOG_INFO, "T", "%s", text.c_str());
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "threads") == 0)
        return write_from_threads(std::atoi(argv[2]), std::atoi(argv[3]));
    if (argc == 2 && std::strcmp(argv[1], "errno") == 0) {
        errno = E2BIG;
        __dlog_print(LOG_ID_APPS, DLOG_INFO, "T", "text");
        return errno == E2BIG ? 0 : 1;
    }
    if (argc != 4)
        return 2;
    const int written = __dlog_print(LOG_ID_APPS, std::atoi(argv[1]), argv[2], "%s", argv[3]);
    return written > 0 ? 10 : written < 0 ? 11 : 12;
}
