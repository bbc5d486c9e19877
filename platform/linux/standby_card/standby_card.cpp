#include "standby_card/standby_card.h"

#include <algorithm>
#include <libintl.h>

#include <Edje.h>

#include "base/utf8.h"
#include "log/log_line.h"
#include "log/platform_log.h"
#include "player_rules/content_rules.h"
#include "player_rules/user_interface.h"
#include "settings/settings.h"
#include "widget_extension/plain_text.h"

namespace platform {

namespace {

constexpr char PRODUCT_NAME[] = "Ostrel demo player";
constexpr char PART[] = "text";
constexpr char SLOT[] = "<<A>>";
/** Keeps a path's or a name's own direction in a text of the other one. */
constexpr char LEFT_TO_RIGHT_MARK[] = "\u200e";
/** Lines do not break there. */
constexpr char WORD_JOINER[] = "\u2060";
constexpr char ELLIPSIS[] = "\u2026";

/** The panel's longer side that the theme is drawn for. */
constexpr double DESIGN_SIDE = 1920.0;
constexpr size_t MOST_FILES = 8;
constexpr size_t LONGEST_NAME = 60;

/** A file's name for people: each byte of it is seen, and what is long is cut. */
std::string name_of(const std::string &path)
{
    std::string name = visible_text(path.substr(path.rfind('/') + 1));
    std::vector<size_t> letters; // where they begin
    for (size_t at = 0; at < name.size(); at += utf8_length(name, at))
        letters.push_back(at);
    if (letters.size() <= LONGEST_NAME)
        return name;
    // The end of a name tells as much as its beginning: it has the number and the kind of file.
    return name.substr(0, letters[LONGEST_NAME / 2]) + ELLIPSIS +
           name.substr(letters[letters.size() - LONGEST_NAME / 2 + 1]);
}

/** A path as it is read and in one piece, in a text of whatever direction. */
std::string path_in_text(const std::string &path)
{
    std::string text = LEFT_TO_RIGHT_MARK;
    for (const char letter : path)
        text += letter == '/' ? letter + std::string(WORD_JOINER) : std::string(1, letter);
    return text + LEFT_TO_RIGHT_MARK;
}

std::string translated(const char *id)
{
    return dgettext(TEXT_DOMAIN, id);
}

std::string translated(const char *id, const std::string &path)
{
    std::string text = translated(id);
    const size_t slot = text.find(SLOT);
    if (slot != std::string::npos)
        text.replace(slot, sizeof SLOT - 1, path_in_text(path));
    return text;
}

std::string why(UnplayableFile::Kind kind)
{
    switch (kind) {
    case UnplayableFile::Kind::Damaged:
        return translated("STANDBY_FILE_DAMAGED");
    case UnplayableFile::Kind::NoDecoder:
        return translated("STANDBY_FILE_NO_DECODER");
    case UnplayableFile::Kind::Unreadable:
        return translated("STANDBY_FILE_UNREADABLE");
    case UnplayableFile::Kind::TooSlow:
        return translated("STANDBY_FILE_TOO_SLOW");
    case UnplayableFile::Kind::Refused:
        break;
    }
    return translated("STANDBY_FILE_REFUSED");
}

std::string paragraph(const char *tag, const std::string &text)
{
    return std::string("<ps/><") + tag + ">" + markup_of(text.c_str()) + "</" + tag + ">";
}

std::string list_of(const std::vector<UnplayableFile> &files, size_t named)
{
    std::string markup;
    for (size_t i = 0; i < std::min(named, files.size()); ++i)
        markup += paragraph("gap", " ") + paragraph("file", name_of(files[i].path)) +
                  paragraph("why", why(files[i].kind));
    if (named < files.size())
        markup +=
            paragraph("gap", " ") + paragraph("file", "+ " + std::to_string(files.size() - named));
    return markup;
}

} // namespace

std::string standby_markup(const StandbyMessage &message, size_t named, bool upright)
{
    const auto with = [](const std::string &text) {
        return std::string("<name>") + PRODUCT_NAME + "</name>" + paragraph("gap", " ") + "<ps/>" +
               markup_of(text.c_str());
    };
    switch (message.kind) {
    case StandbyMessage::Kind::SwitchedOff:
        return with(translated("STANDBY_SWITCHED_OFF"));
    case StandbyMessage::Kind::BeginsAgain:
        return with(translated("STANDBY_BEGINS_AGAIN"));
    case StandbyMessage::Kind::NoContent: {
        std::string markup = with(translated("STANDBY_NO_CONTENT", message.folder));
        if (upright)
            markup +=
                paragraph("gap", " ") + "<ps/>" +
                markup_of(
                    translated("STANDBY_UPRIGHT_NAMES", std::string(PORTRAIT_PREFIX)).c_str());
        return markup;
    }
    case StandbyMessage::Kind::UnplayableFiles:
        return with(translated("STANDBY_UNPLAYABLE_FILES")) + list_of(message.files, named);
    case StandbyMessage::Kind::OneMoment:
        break;
    }
    return with(translated("STANDBY_ONE_MOMENT"));
}

StandbyCard::StandbyCard(Evas *canvas) : card_(edje_object_add(canvas))
{
    const std::string theme = Settings::get().resource_dir + "/theme/ostrel.edj";
    if (!edje_object_file_set(card_.get(), theme.c_str(), "ostrel/standby"))
        PLATFORM_LOGE("standby card", "%s has none: %s", theme.c_str(),
                      edje_load_error_str(edje_object_load_error_get(card_.get())));
    evas_object_pass_events_set(card_.get(), EINA_TRUE);
    evas_object_show(card_.get());
}

void StandbyCard::say(const StandbyMessage &message)
{
    message_ = message;
    lay_text();
}

void StandbyCard::resize(Size size)
{
    edje_object_scale_set(card_.get(), std::max(size.width, size.height) / DESIGN_SIDE);
    evas_object_resize(card_.get(), size.width, size.height);
    lay_text();
}

void StandbyCard::lay_text()
{
    Size panel;
    evas_object_geometry_get(card_.get(), nullptr, nullptr, &panel.width, &panel.height);
    const bool upright = panel.height > panel.width;
    size_t named = MOST_FILES;
    do
        edje_object_part_text_set(card_.get(), PART,
                                  standby_markup(message_, named, upright).c_str());
    while (!fits() && --named > 0);
}

bool StandbyCard::fits() const
{
    int room = 0;
    edje_object_part_geometry_get(card_.get(), PART, nullptr, nullptr, nullptr, &room);
    int height = 0;
    evas_object_textblock_size_formatted_get(edje_object_part_object_get(card_.get(), PART),
                                             nullptr, &height);
    return height <= room;
}

std::vector<uint32_t> standby_picture(const StandbyMessage &message, Size size)
{
    const CanvasPtr canvas(ecore_evas_buffer_new(size.width, size.height));
    if (!canvas)
        return {};
    StandbyCard card(ecore_evas_get(canvas.get()));
    card.resize(size);
    card.say(message);
    ecore_evas_manual_render(canvas.get());
    const auto *pixels = static_cast<const uint32_t *>(ecore_evas_buffer_pixels_get(canvas.get()));
    return pixels ? std::vector<uint32_t>(pixels, pixels + size.area()) : std::vector<uint32_t>();
}

} // namespace platform
