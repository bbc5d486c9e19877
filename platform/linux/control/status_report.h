/**
 * Everything the platform knows about the running player. Main-loop thread only, but for the
 * functions that only write down what they are given.
 */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "control/storage_facts.h"
#include "media_player/player_status.h"
#include "still_picture/picture_status.h"
#include "unplayable_files/unplayable_files.h"
#include "video_plane/video_plane.h"

namespace platform {

struct PanelStatus {
    int angle = 0;
    bool rotator = false;
    std::optional<int> turning_to;
    int width = 0; ///< pixels, never turned
    int height = 0;
};

struct RotationTimes {
    bool on = false;
    std::optional<double> left_s; ///< nothing where no turn is to be expected, or none is known of
    int landscape_s = 0;
    int portrait_s = 0;
};

struct Status {
    enum class Playing { Nothing, Video, Photo };

    PlayerStatus player;
    PictureStatus picture;
    /** Files that could not be shown; until the storage has been asked, also those now gone. */
    std::vector<UnplayableFile> passed_over;
    std::optional<ContentList> list;   ///< that of the file that plays; nothing while not known
    std::optional<int> selection_word; ///< as stored: halves for landscape and portrait
    PanelStatus panel;
    RotationTimes rotation;
    VideoPlane::Statistics frames;
    std::string language;
    bool right_to_left = false;
    std::optional<std::vector<std::string>> usb; ///< nothing while not known
    bool popups_blocked = false;
    std::map<std::string, std::vector<std::string>> blocked_items; ///< by application
    std::map<std::string, std::optional<int>> configuration;

    Playing playing() const;

    /** Path of the file that plays; empty when none does. */
    const std::string &file() const;

    /** The stored selection for the panel as it stands: -1 off, 0 play all, else a number. */
    int selection() const;
};

/** The status at this moment, without what the storage has to be asked. */
Status collect_status();

/**
 * What the storage has to be asked for a status of this moment.
 *
 * @param list_made when the player made its lists, by the real-time clock; 0 before
 */
StorageQuestion storage_question(const Status &status, const timespec &list_made);

/** A number of so many digits at most, with a point in every locale. */
std::string decimal(double number, int digits);

/** "stream", "container" or "usual". */
const char *source_name(ColourSource source);

struct StatusNode;

/** Nothing, a truth, a number, a text, a list of texts, or named values. */
using StatusValue = std::variant<std::monostate, bool, int64_t, double, std::string,
                                 std::vector<std::string>, std::vector<StatusNode>>;

struct StatusNode {
    std::string name;
    StatusValue value;
};

/** All of it as named values, for programs. */
std::vector<StatusNode> status_nodes(const Status &status);

/**
 * One JSON object. A byte that belongs to no UTF-8 character becomes the escape of a lone low
 * surrogate (0xFF is \\udcff), which programs that handle file names as Python does turn back.
 */
std::string status_as_json(const std::vector<StatusNode> &status);

/** What shop staff want to know, a few lines of text. Any bytes of file names come out readable. */
std::string status_summary(const Status &status);

} // namespace platform
