/**
 * Remembers which item followed the end of which. A demo plays in rounds, so what followed once
 * will follow again. One thread at a time.
 */
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

namespace platform {

/** Something that is played, as the application names it to its libraries. */
struct PlayedItem {
    std::string path;
    std::string subtitle; ///< path; empty: none

    bool operator==(const PlayedItem &other) const
    {
        return path == other.path && subtitle == other.subtitle;
    }
};

class ItemHistory {
  public:
    /** @param limit items to remember; with one more it begins anew */
    explicit ItemHistory(size_t limit = 4096) : limit_(limit) {}

    /** @param interrupted the item before did not come to its end: it says nothing of the order */
    void on_begun(const PlayedItem &item, bool interrupted);

    /** What followed an item the last time. */
    std::optional<PlayedItem> after(const std::string &path) const;

    /** The item that was begun last; its path is empty before the first. */
    const PlayedItem &latest() const { return latest_; }

  private:
    const size_t limit_;
    PlayedItem latest_;
    std::unordered_map<std::string, PlayedItem> followers_;
};

} // namespace platform
