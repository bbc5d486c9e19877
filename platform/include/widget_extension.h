/**
 * The set's widgets for ten-foot viewing, over Elementary: popup, toast, list, button, image and a
 * layout that places them. Each is an Evas object: parent, show, hide, delete, focus and events are
 * the stock ones. Texts are plain text, whatever characters they hold. Main-loop thread only.
 *
 * A widget that is handed to a container is deleted with it. Whoever still holds its pointer may
 * delete it once more, without effect, until control has returned to the main loop. Wrong arguments
 * are refused with a line in the log.
 *
 * Sizes are in pixels of the window; elm_velt_unit_to_pixel() converts the layout unit that designs
 * are drawn in.
 */
#pragma once

#include <stdbool.h>

#include <Elementary.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Starts the extension for a window: loads the theme, learns the size of the window, and, a second
 * after its first frame, loads at idle moments what the first popup needs. @return 0.
 */
int elm_velt_manager_init(Evas_Object *window);

/** Ends it; widgets that still exist keep working without the theme. */
void elm_velt_manager_fini(void);

/** Converts layout units: 240 units are the panel's longer side. @return pixels, rounded. */
int elm_velt_unit_to_pixel(double units);

/**
 * Alignment on a grid of nine places, row by row from the top left:
 * 1 2 3 / 4 5 6 / 7 8 9, so 5 is the centre and 8 bottom centre.
 */
enum { ELM_VELT_ALIGN_CENTER = 5, ELM_VELT_ALIGN_BOTTOM = 8 };

/** How an object takes its size along one axis. */
enum {
    ELM_VELT_RESIZE_FILL = 1,  /**< all the room of its layout, within its own limits */
    ELM_VELT_RESIZE_FIXED = 4, /**< the size it was appended with, or was resized to since then;
                                    limits do not apply */
};

/* Layout: a transparent container that places its items. It shows and hides them with itself, and
 * asks for no room on their behalf: an overlay never makes its window grow. In a right-to-left
 * layout the columns of the alignment grid change sides. */
Evas_Object *elm_velt_layout_add(Evas_Object *parent);
enum { ELM_VELT_LAYOUT_FREE = 1 /**< each item placed by its own alignment */ };
/** @param type ELM_VELT_LAYOUT_FREE */
void elm_velt_layout_type_set(Evas_Object *layout, int type);
/** Places a layout's items, or an item in its layout. @param align 1..9 as above. */
void elm_velt_layout_align_set(Evas_Object *object, int align);
/** Hands an item to the layout, which owns it from then on. */
void elm_velt_layout_item_append(Evas_Object *layout, Evas_Object *item, int width, int height);
/** Places the items of a window-wide layout now instead of at the next idle moment. */
void elm_velt_root_layout_render(Evas_Object *layout);

/* Any widget of the extension; limits are those of an item that fills its layout, 0 for none. */
void elm_velt_object_resize_policy_set(Evas_Object *object, int horizontal, int vertical);
void elm_velt_object_size_min_set(Evas_Object *object, int width, int height);
void elm_velt_object_size_max_set(Evas_Object *object, int width, int height);

/* Image box: a picture scaled into its box. Clicks pass through it. */
Evas_Object *elm_velt_imagebox_add(Evas_Object *parent);
/** @param path a picture file; a missing one leaves the box empty. */
void elm_velt_imagebox_file_set(Evas_Object *imagebox, const char *path);
/** @param rule 1: keep the picture's proportions. */
void elm_velt_imagebox_responsive_rule_set(Evas_Object *imagebox, int rule);
/** The object that can take the focus; owned by the box. */
Evas_Object *elm_velt_imagebox_native_get(Evas_Object *imagebox);

/* Popup and toast: an elm_popup each, in the middle of the window and above what is in it. What is
 * beside the panel is not blocked; a toast neither takes clicks nor the focus. */
Evas_Object *elm_velt_popup_add(Evas_Object *window);
/** @param style 0: panel with title, content and buttons; 4: toast of one line or two. */
void elm_velt_popup_style_set(Evas_Object *popup, int style);
void elm_velt_popup_title_set(Evas_Object *popup, const char *title);
/** Hands over the content, which the popup shows at this size, and shows and hides with itself. */
void elm_velt_popup_content_set(Evas_Object *popup, Evas_Object *content, int width, int height);
/** Which part of the popup may take the focus. @param focus 5: content first, buttons below. */
void elm_velt_popup_button_focus_set(Evas_Object *popup, int focus);
/** Hands over a button. @param slot 0 is the first. */
void elm_velt_popup_button_set(Evas_Object *popup, Evas_Object *button, int slot);
void elm_velt_popup_toast_text_set(Evas_Object *toast, const char *text);

/* List: an elm_genlist. Its row style is "C_TextTile_SingleLine_02" with the text part "MainText":
 * one line, cut with an ellipsis, which slides while the row has the focus. */
Evas_Object *elm_velt_genlist_add(Evas_Object *parent);
/** @param enable true: a list of options; the selected row is ticked as the one in force. */
void elm_velt_genlist_listoption_enable(Evas_Object *genlist, bool enable);
/** As elm_genlist_item_append(); `data` goes to the row class's functions. @return the row. */
Elm_Object_Item *elm_velt_genlist_item_append(Evas_Object *genlist,
                                              const Elm_Genlist_Item_Class *item_class, void *data,
                                              Elm_Object_Item *parent, Elm_Genlist_Item_Type type,
                                              Evas_Smart_Cb function, const void *function_data);
/** The row's data as it was appended; null for a null row. */
void *elm_velt_genlist_item_data_get(const Elm_Object_Item *item);

/* Button. */
Evas_Object *elm_velt_button_add(Evas_Object *parent);
/** @param style 0: text button. @param variant 0: standard colours. */
void elm_velt_button_style_set(Evas_Object *button, int style, int variant);
void elm_velt_button_text_set(Evas_Object *button, const char *text);

#ifdef __cplusplus
}
#endif
