/**
 * The standby card: what the screen says in the place of a picture. Drawn with the theme and in the
 * system's language; bind_message_catalogue() comes first. Main-loop thread only.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <Evas.h>

#include "base/geometry.h"
#include "base/toolkit_handles.h"
#include "unplayable_files/unplayable_files.h"

namespace platform {

struct StandbyMessage {
    enum class Kind {
        SwitchedOff,     ///< staff have ended the demo
        OneMoment,       ///< a picture is to come
        BeginsAgain,     ///< a file has ended the demo
        NoContent,       ///< where content belongs
        UnplayableFiles, ///< which files cannot be played, and why
    };

    Kind kind = Kind::OneMoment;
    std::string folder;                ///< of NoContent
    std::vector<UnplayableFile> files; ///< of UnplayableFiles; with names of any bytes
};

/**
 * The message as the markup of the card's text.
 *
 * @param named   so many files; others are counted
 * @param upright whether it is for a panel that stands upright, where not every file is played
 */
std::string standby_markup(const StandbyMessage &message, size_t named, bool upright);

class StandbyCard {
  public:
    /** @param canvas outlives the card, or deletes its object */
    explicit StandbyCard(Evas *canvas);

    /** Files for which there is no room are counted. */
    void say(const StandbyMessage &message);

    /** Covers the canvas from its corner on. @param size in pixels, as the viewer sees it */
    void resize(Size size);

    /** Whether all that is said can be seen. */
    bool fits() const;

  private:
    void lay_text();

    const ObjectPtr card_;
    StandbyMessage message_;
};

/**
 * The card as a picture, with its alpha byte full.
 *
 * @param size in pixels, as the viewer sees it
 * @return row by row without gaps; nothing where there is no memory for it
 */
std::vector<uint32_t> standby_picture(const StandbyMessage &message, Size size);

} // namespace platform
