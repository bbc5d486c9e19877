/**
 * Popup and toast: stock Elementary popups in our styles. They block nothing outside themselves,
 * and the toast never takes the focus. Main-loop thread only.
 */
#pragma once

#include <Elementary.h>

namespace platform {

/** The styles a popup can have, by their numbers. */
enum class PopupStyle { panel = 0, toast = 4 };

/** @return a hidden popup in the panel style, or null. */
Evas_Object *create_popup(Evas_Object *window);

void set_popup_style(Evas_Object *popup, PopupStyle style);

/** Takes the content over; the content and its items are shown and hidden with the popup. */
void set_popup_content(Evas_Object *popup, Evas_Object *content, int width, int height);

/** @return whether there is such a slot. */
bool set_popup_button(Evas_Object *popup, Evas_Object *button, int slot);

/** Shows a plain text on one line or two, cut after that. */
void set_toast_text(Evas_Object *popup, const char *text);

} // namespace platform
