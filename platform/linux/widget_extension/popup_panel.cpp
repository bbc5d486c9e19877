#include "widget_extension/popup_panel.h"

#include <algorithm>
#include <string>

#include "base/geometry.h"
#include "widget_extension/free_layout.h"
#include "widget_extension/plain_text.h"
#include "widget_extension/widget_manager.h"

namespace platform {
namespace {

constexpr int BUTTON_SLOTS = 3;
constexpr short POPUP_LAYER = 100;
/** Layout units of the longest line in a toast. */
constexpr double TOAST_LINE_UNITS = 108.0;

/** Shows or hides what is in the popup along with it: a list learns here that it came on screen. */
void set_content_visible(Evas_Object *popup, bool visible)
{
    Evas_Object *content = elm_object_content_get(popup);
    if (!content)
        return;
    if (visible)
        evas_object_show(content);
    if (FreeLayout *layout = FreeLayout::of(content))
        layout->set_items_visible(visible);
}

void on_popup_shown(void *, Evas *canvas, Evas_Object *popup, void *)
{
    set_content_visible(popup, true);
    // A list can give the focus to a row beyond its view only after it was laid out. Its owner asks
    // for that at the next idle moment, which may come before the next frame.
    evas_smart_objects_calculate(canvas);
    // After that moment: what asked for it first is called first.
    WidgetManager::get().draw_soon(popup);
}

void on_popup_hidden(void *, Evas *, Evas_Object *popup, void *)
{
    set_content_visible(popup, false);
}

/** The room of a toast's text: its own width up to the longest line, and one line or two. */
Size room_of_text(Evas_Object *layout)
{
    Size room;
    const auto *text = edje_object_part_object_get(elm_layout_edje_get(layout), "elm.text");
    if (!text)
        return room;
    const int longest = WidgetManager::get().pixels(TOAST_LINE_UNITS);
    int line = 0;
    evas_object_textblock_size_native_get(text, &room.width, &line);
    const bool fits = room.width <= longest;
    // One pixel more on each side: the text is cut already when it fills its room exactly.
    room.width = std::min(room.width, longest) + 2;
    room.height = fits ? line : 2 * line;
    return room;
}

} // namespace

Evas_Object *create_popup(Evas_Object *window)
{
    Evas_Object *popup = elm_popup_add(window);
    if (!popup)
        return nullptr;
    WidgetManager::get().set_up(popup);
    elm_popup_allow_events_set(popup, EINA_TRUE);
    // Above overlays, also those that the window gets while the popup is open.
    evas_object_layer_set(popup, POPUP_LAYER);
    evas_object_event_callback_add(popup, EVAS_CALLBACK_SHOW, on_popup_shown, nullptr);
    evas_object_event_callback_add(popup, EVAS_CALLBACK_HIDE, on_popup_hidden, nullptr);
    set_popup_style(popup, PopupStyle::panel);
    return popup;
}

void set_popup_style(Evas_Object *popup, PopupStyle style)
{
    const bool toast = style == PopupStyle::toast;
    WidgetManager &manager = WidgetManager::get();
    manager.set_style(popup, toast ? "velt_toast" : "velt");
    if (manager.shows_pictures_unscaled())
        elm_layout_signal_emit(popup, "velt,pictures,unscaled", "velt");
    elm_object_focus_allow_set(popup, toast ? EINA_FALSE : EINA_TRUE);
    elm_object_tree_focus_allow_set(popup, toast ? EINA_FALSE : EINA_TRUE);
    evas_object_pass_events_set(popup, toast ? EINA_TRUE : EINA_FALSE);
}

void set_popup_content(Evas_Object *popup, Evas_Object *content, int width, int height)
{
    if (FreeLayout *layout = FreeLayout::of(content))
        layout->set_in_popup(true);
    WidgetManager::get().outlive_container(content);
    evas_object_size_hint_min_set(content, width, height);
    evas_object_size_hint_max_set(content, width, height);
    elm_object_content_set(popup, content);
    set_content_visible(popup, evas_object_visible_get(popup));
}

bool set_popup_button(Evas_Object *popup, Evas_Object *button, int slot)
{
    if (slot < 0 || slot >= BUTTON_SLOTS)
        return false;
    WidgetManager::get().outlive_container(button);
    const std::string part = "button" + std::to_string(slot + 1);
    elm_object_part_content_set(popup, part.c_str(), button);
    return true;
}

void set_toast_text(Evas_Object *popup, const char *text)
{
    // A layout of Elementary goes by the size of its drawing alone, hence the box around it.
    Evas_Object *box = FreeLayout::create(popup);
    Evas_Object *line = box ? elm_layout_add(box) : nullptr;
    if (!line)
        return;
    elm_layout_theme_set(line, "layout", "velt", "toast");
    elm_layout_text_set(line, "elm.text", markup_of(text).c_str());
    const Size room = room_of_text(line);
    FreeLayout::of(box)->append(line, room.width, room.height);
    set_popup_content(popup, box, room.width, room.height);
}

} // namespace platform
