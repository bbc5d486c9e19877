// The C interface: checks its arguments and calls the part that does the work.

#include "widget_extension.h"

#include "log/platform_log.h"
#include "widget_extension/free_layout.h"
#include "widget_extension/image_box.h"
#include "widget_extension/option_list.h"
#include "widget_extension/plain_text.h"
#include "widget_extension/popup_panel.h"
#include "widget_extension/widget_manager.h"

using namespace platform;

namespace {

constexpr int FREE_LAYOUT_TYPE = 1;
constexpr int CONTENT_FIRST_FOCUS = 5;

/** The one way a wrong argument is answered: a line in the log, and nothing else happens. */
void refuse(const char *function, const char *reason)
{
    PLATFORM_LOGW("widget_extension", "%s: %s", function, reason);
}

/** A widget in a layout may have changed its wish. */
void place_again(Evas_Object *object)
{
    if (FreeLayout *layout = FreeLayout::of(object))
        layout->place_later();
    else if (FreeLayout *parent = FreeLayout::of(elm_object_parent_widget_get(object)))
        parent->place_later();
}

void on_button_focused(void *, Evas_Object *button, void *)
{
    elm_layout_signal_emit(button, "velt,state,focused", "velt");
}

void on_button_unfocused(void *, Evas_Object *button, void *)
{
    elm_layout_signal_emit(button, "velt,state,unfocused", "velt");
}

} // namespace

int elm_velt_manager_init(Evas_Object *window)
{
    if (window)
        WidgetManager::get().start(window);
    else
        refuse(__func__, "no window");
    return 0;
}

void elm_velt_manager_fini(void)
{
    WidgetManager::get().stop();
}

int elm_velt_unit_to_pixel(double units)
{
    return WidgetManager::get().pixels(units);
}

Evas_Object *elm_velt_layout_add(Evas_Object *parent)
{
    return parent ? WidgetManager::get().set_up(FreeLayout::create(parent)) : nullptr;
}

void elm_velt_layout_type_set(Evas_Object *layout, int type)
{
    if (!FreeLayout::of(layout) || type != FREE_LAYOUT_TYPE)
        refuse(__func__, "no layout, or a type other than 1");
}

void elm_velt_layout_align_set(Evas_Object *object, int align)
{
    if (!object || align < 1 || align > 9)
        return refuse(__func__, "no object, or an alignment outside 1..9");
    placement_of(object).align = align;
    place_again(object);
}

void elm_velt_layout_item_append(Evas_Object *layout, Evas_Object *item, int width, int height)
{
    FreeLayout *target = FreeLayout::of(layout);
    if (!target || !item)
        return refuse(__func__, "no layout or no item");
    target->append(item, width, height);
}

void elm_velt_root_layout_render(Evas_Object *layout)
{
    if (FreeLayout *target = FreeLayout::of(layout))
        target->place_now();
    else
        refuse(__func__, "no layout");
}

void elm_velt_object_resize_policy_set(Evas_Object *object, int horizontal, int vertical)
{
    if (!object)
        return refuse(__func__, "no object");
    Placement &placement = placement_of(object);
    placement.horizontal = horizontal;
    placement.vertical = vertical;
    place_again(object);
}

void elm_velt_object_size_min_set(Evas_Object *object, int width, int height)
{
    if (!object)
        return refuse(__func__, "no object");
    Placement &placement = placement_of(object);
    placement.min_width = width;
    placement.min_height = height;
    place_again(object);
}

void elm_velt_object_size_max_set(Evas_Object *object, int width, int height)
{
    if (!object)
        return refuse(__func__, "no object");
    Placement &placement = placement_of(object);
    placement.max_width = width;
    placement.max_height = height;
    place_again(object);
}

Evas_Object *elm_velt_imagebox_add(Evas_Object *parent)
{
    return parent ? WidgetManager::get().set_up(create_image_box(parent)) : nullptr;
}

void elm_velt_imagebox_file_set(Evas_Object *imagebox, const char *path)
{
    if (imagebox)
        set_image_file(imagebox, path);
    else
        refuse(__func__, "no image box");
}

void elm_velt_imagebox_responsive_rule_set(Evas_Object *imagebox, int rule)
{
    if (imagebox)
        set_image_proportional(imagebox, rule == 1);
    else
        refuse(__func__, "no image box");
}

Evas_Object *elm_velt_imagebox_native_get(Evas_Object *imagebox)
{
    return imagebox;
}

Evas_Object *elm_velt_popup_add(Evas_Object *window)
{
    return window ? create_popup(window) : nullptr;
}

void elm_velt_popup_style_set(Evas_Object *popup, int style)
{
    const auto wanted = static_cast<PopupStyle>(style);
    if (!popup || (wanted != PopupStyle::panel && wanted != PopupStyle::toast))
        return refuse(__func__, "no popup, or a style other than 0 and 4");
    set_popup_style(popup, wanted);
}

void elm_velt_popup_title_set(Evas_Object *popup, const char *title)
{
    if (popup)
        elm_object_part_text_set(popup, "title,text", markup_of(title).c_str());
    else
        refuse(__func__, "no popup");
}

void elm_velt_popup_content_set(Evas_Object *popup, Evas_Object *content, int width, int height)
{
    if (popup && content)
        set_popup_content(popup, content, width, height);
    else
        refuse(__func__, "no popup or no content");
}

void elm_velt_popup_button_focus_set(Evas_Object *popup, int focus)
{
    // Content above buttons is the order in which Elementary walks through a popup anyway.
    if (!popup || focus != CONTENT_FIRST_FOCUS)
        refuse(__func__, "no popup, or an order of focus other than 5");
}

void elm_velt_popup_button_set(Evas_Object *popup, Evas_Object *button, int slot)
{
    if (!popup || !button || !set_popup_button(popup, button, slot))
        refuse(__func__, "no popup, no button or no such slot");
}

void elm_velt_popup_toast_text_set(Evas_Object *toast, const char *text)
{
    if (toast)
        set_toast_text(toast, text);
    else
        refuse(__func__, "no toast");
}

Evas_Object *elm_velt_genlist_add(Evas_Object *parent)
{
    return parent ? OptionList::create(parent) : nullptr;
}

void elm_velt_genlist_listoption_enable(Evas_Object *genlist, bool enable)
{
    if (OptionList *list = OptionList::of(genlist))
        list->set_marks_option(enable);
    else
        refuse(__func__, "no list");
}

Elm_Object_Item *elm_velt_genlist_item_append(Evas_Object *genlist,
                                              const Elm_Genlist_Item_Class *item_class, void *data,
                                              Elm_Object_Item *parent, Elm_Genlist_Item_Type type,
                                              Evas_Smart_Cb function, const void *function_data)
{
    OptionList *list = OptionList::of(genlist);
    if (!list || !item_class) {
        refuse(__func__, "no list or no row class");
        return nullptr;
    }
    return list->append(item_class, data, parent, type, function, function_data);
}

void *elm_velt_genlist_item_data_get(const Elm_Object_Item *item)
{
    return OptionList::data_of(item);
}

Evas_Object *elm_velt_button_add(Evas_Object *parent)
{
    if (!parent)
        return nullptr;
    Evas_Object *button = WidgetManager::get().set_up(elm_button_add(parent), "velt");
    if (button) {
        evas_object_smart_callback_add(button, "focused", on_button_focused, nullptr);
        evas_object_smart_callback_add(button, "unfocused", on_button_unfocused, nullptr);
    }
    return button;
}

void elm_velt_button_style_set(Evas_Object *button, int style, int variant)
{
    if (!button || style != 0 || variant != 0)
        refuse(__func__, "no button, or a style other than 0, 0");
}

void elm_velt_button_text_set(Evas_Object *button, const char *text)
{
    if (button)
        elm_object_text_set(button, markup_of(text).c_str());
    else
        refuse(__func__, "no button");
}
