// make-sample-content: fills a folder with videos, photos and subtitles for trying out the player.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <gst/gst.h>
#include <unistd.h>

#include "cancellation.h"
#include "catalogue.h"
#include "options.h"
#include "photo_writer.h"
#include "scene.h"
#include "stop_signals.h"
#include "subtitle_writer.h"
#include "target_file.h"
#include "video_writer.h"

namespace sample {

volatile std::sig_atomic_t stop_signal = 0;

namespace {

constexpr double USUAL_SECONDS = 8;
constexpr double QUICK_SECONDS = 2;

extern "C" void on_stop_signal(int number)
{
    stop_signal = number;
}

/** One line for each item: rewritten in place on a terminal, in quarters elsewhere. */
class ProgressLine {
  public:
    explicit ProgressLine(const std::string &name) : name_(name), terminal_(isatty(STDOUT_FILENO))
    {
        if (terminal_)
            show(0);
    }

    void show(double share)
    {
        const int percent = static_cast<int>(share * 100);
        const int step = terminal_ ? 1 : 25;
        if (percent / step == shown_ || (!terminal_ && percent < step))
            return;
        shown_ = percent / step;
        std::printf(terminal_ ? "\r%-24s %3d %%" : "%-24s %3d %%\n", name_.c_str(), shown_ * step);
        std::fflush(stdout);
    }

    void finish(const std::string &result)
    {
        std::printf(terminal_ ? "\r%-24s %s\n" : "%-24s %s\n", name_.c_str(), result.c_str());
        std::fflush(stdout);
    }

    /** Leaves the line, so that a message begins on a new one. */
    void abandon() const
    {
        if (terminal_)
            std::printf("\n");
    }

  private:
    std::string name_;
    bool terminal_;
    int shown_ = -1; ///< in steps
};

void write_item(const Item &item, const TargetFile &target, double seconds, ProgressLine &progress)
{
    switch (item.kind) {
    case Kind::video:
        write_video(item, target.working_path(), seconds,
                    [&progress](double share) { progress.show(share); });
        break;
    case Kind::photo: {
        Scene scene(item, 0);
        const auto jpeg = jpeg_of(scene.at(0), item.turned);
        target.write(jpeg.data(), jpeg.size());
        break;
    }
    case Kind::subtitle: {
        const std::string text = subrip_text(item.language, seconds);
        target.write(text.data(), text.size());
        break;
    }
    }
}

void make_item(const Item &item, const std::string &folder, double seconds)
{
    throw_if_cancelled();
    ProgressLine progress(item.name);
    const std::string path = folder + "/" + item.name;
    if (std::filesystem::exists(path)) {
        progress.finish("exists already");
        return;
    }
    try {
        TargetFile target(path);
        const auto start = std::chrono::steady_clock::now();
        write_item(item, target, seconds, progress);
        throw_if_cancelled();
        target.complete();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        char text[64];
        std::snprintf(text, sizeof text, "made in %.1f s, %ju kB", taken.count(),
                      (std::filesystem::file_size(path) + 1023) / 1024);
        progress.finish(text);
    } catch (...) {
        progress.abandon();
        throw;
    }
}

void make_all(const Options &options)
{
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error)
        throw std::runtime_error(options.folder + ": " + error.message() + ".");
    if (access(options.folder.c_str(), W_OK | X_OK) != 0)
        throw std::runtime_error(options.folder + ": " + std::strerror(errno) + ".");

    const double usual = options.quick ? QUICK_SECONDS : USUAL_SECONDS;
    const double seconds = options.seconds > 0 ? options.seconds : usual;
    for (const Item &item : catalogue()) {
        const auto &only = options.only;
        if (only.empty() || std::find(only.begin(), only.end(), item.name) != only.end())
            make_item(options.quick ? small_version(item) : item, options.folder, seconds);
    }
}

void list_items()
{
    for (const Item &item : catalogue()) {
        if (item.kind == Kind::subtitle)
            std::printf("%-24s subtitle, %s\n", item.name.c_str(), item.language.c_str());
        else
            std::printf("%-24s %s, %d x %d\n", item.name.c_str(), item.note.c_str(), item.width,
                        item.height);
    }
}

} // namespace
} // namespace sample

int main(int argc, char **argv)
{
    using sample::Options;
    const Options options = sample::parse_options(argc, argv);
    switch (options.action) {
    case Options::Action::bad_usage:
        std::fprintf(stderr, "make-sample-content: %s\n%s", options.complaint.c_str(),
                     sample::usage());
        return 2;
    case Options::Action::help:
        std::fputs(sample::usage(), stdout);
        return 0;
    case Options::Action::list:
        sample::list_items();
        return 0;
    case Options::Action::colours:
        std::fputs(sample::colours_as_json().c_str(), stdout);
        return 0;
    case Options::Action::make:
        break;
    }

    tools::catch_stop_signals(&sample::on_stop_signal);
    gst_init(nullptr, nullptr);
    int status = 0;
    try {
        sample::make_all(options);
    } catch (const sample::Cancelled &) {
        std::fprintf(stderr, "make-sample-content: stopped; unfinished files were removed.\n");
        status = 128 + sample::stop_signal;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "make-sample-content: %s\n", error.what());
        status = 1;
    }
    gst_deinit();
    return status;
}
