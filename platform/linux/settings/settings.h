/**
 * What set this machine plays: the contents of tv.conf and of the environment, read once. Every
 * service takes its facts from here. Read-only after the first call, hence safe from any thread.
 *
 * The keys of tv.conf have the names of the fields below, but for those that are named in quotes;
 * tv.conf beside this file is an example with every key.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

namespace platform {

struct Settings {
    // [panel]
    bool rotator = false;         ///< the set turns its panel
    double turning_time_s = 3.0;  ///< how long a turn takes
    int first_rotation_state = 1; ///< first "db/sysman/rotation_state": 1 landscape, 2 portrait,
                                  ///< 3 landscape reversed, 0 portrait reversed

    // [picture]
    double sdr_white = 203; ///< of films of high dynamic range: light that becomes white, cd/m²

    // [content]
    bool skip_broken_videos = false; ///< "broken_video": end or skip
    bool follow_folder = false;      ///< begins anew when the folder that is played has changed
    bool follow_sticks = false;      ///< a stick's folder "demo" goes before the built-in one

    // [product]
    bool disclaimer = false;    ///< the feature that shows the disclaimer
    int store_content_type = 0; ///< product number 713
    /** Whether the set is of the models that play one more kind of file. */
    bool direct_backlight() const { return store_content_type == 1; }
    std::string menu_orientation; ///< "ltr", "rtl", or empty: from the language

    // [usb]
    std::vector<std::string> usb_mounts; ///< "mounts": mount points to use instead of asking udev

    // [sound]
    std::string internal_sink; ///< PulseAudio sink of route 0; empty: the default sink
    std::string external_sink; ///< PulseAudio sink of route 8

    // [keys]: name as the input device sends it -> the set's key name
    std::map<std::string, std::string> keys;

    // [language]
    std::string language; ///< overrides the locale when not empty, e.g. "ko_KR"

    // Places. Defaults follow the XDG base directories; environment variables override.
    std::string state_dir;    ///< survives: OSTREL_DEMO_STATE_DIR
    std::string runtime_dir;  ///< volatile: OSTREL_DEMO_RUNTIME_DIR
    std::string resource_dir; ///< theme, pictures, catalogues: OSTREL_DEMO_RESOURCE_DIR

    /**
     * The settings of this process. Looks for the file named by OSTREL_DEMO_TV_CONF, else
     * $XDG_CONFIG_HOME/ostrel-demo-player-tv/tv.conf, else /etc/ostrel-demo-player-tv/tv.conf.
     * A missing file leaves the defaults; a bad value, an unknown section or key logs a warning
     * with file, line and key, and leaves the default.
     */
    static const Settings &get();

    /** Reads one file, and the places from the environment; for get() and for tests. */
    static Settings read(const std::string &path);
};

} // namespace platform
