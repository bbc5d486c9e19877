#include "options.h"

#include <algorithm>
#include <cstdlib>

#include <getopt.h>

#include "catalogue.h"

namespace sample {

namespace {

constexpr double LONGEST_SECONDS = 600;

Options complain(const std::string &complaint)
{
    Options options;
    options.action = Options::Action::bad_usage;
    options.complaint = complaint;
    return options;
}

bool is_known(const std::string &name)
{
    const auto &items = catalogue();
    return std::any_of(items.begin(), items.end(),
                       [&name](const Item &item) { return item.name == name; });
}

} // namespace

Options parse_options(int argc, char **argv)
{
    enum { only = 1, seconds, quick, list, colours, help }; // no letters, see below
    static const option long_options[] = {{"only", required_argument, nullptr, only},
                                          {"seconds", required_argument, nullptr, seconds},
                                          {"quick", no_argument, nullptr, quick},
                                          {"list", no_argument, nullptr, list},
                                          {"colors", no_argument, nullptr, colours},
                                          {"help", no_argument, nullptr, help},
                                          {nullptr, 0, nullptr, 0}};

    Options options;
    opterr = 0;
    for (int found = 0; (found = getopt_long(argc, argv, ":h", long_options, nullptr)) != -1;) {
        switch (found) {
        case only:
            if (!is_known(optarg))
                return complain(std::string("There is no item \"") + optarg + "\"; see --list.");
            options.only.emplace_back(optarg);
            break;
        case seconds: {
            char *end = nullptr;
            options.seconds = std::strtod(optarg, &end);
            if (end == optarg || *end != '\0' || !(options.seconds >= 1) ||
                options.seconds > LONGEST_SECONDS)
                return complain("--seconds takes a number from 1 to 600.");
            break;
        }
        case quick:
            options.quick = true;
            break;
        case list:
            options.action = Options::Action::list;
            break;
        case colours:
            options.action = Options::Action::colours;
            break;
        case help:
        case 'h':
            options.action = Options::Action::help;
            return options;
        case ':':
            return complain(std::string(argv[optind - 1]) + " needs a value.");
        default:
            // The argument of an unknown letter is not passed yet: more may stand behind it.
            return complain("Unknown option " +
                            (optopt > help ? std::string{'-', static_cast<char>(optopt)}
                                           : std::string(argv[optind - 1])) +
                            ".");
        }
    }
    if (options.action != Options::Action::make)
        return options;
    if (argc - optind != 1 || argv[optind][0] == '\0')
        return complain("Exactly one folder is to be named.");
    options.folder = argv[optind];
    return options;
}

const char *usage()
{
    return "Usage: make-sample-content [OPTION]... FOLDER\n"
           "Makes a folder of demo videos, photos and subtitles. What exists already is kept.\n"
           "\n"
           "  --quick        small and short files, for tests\n"
           "  --only NAME    make this item only; may be given several times\n"
           "  --seconds N    length of the videos (1 to 600; default 8, with --quick 2)\n"
           "  --list         list the items and leave\n"
           "  --colors       print each picture's colour as JSON and leave\n"
           "  --help         show this text and leave\n";
}

} // namespace sample
