// The set's widget extension.

#include <cmath>

#include "platform.h"
#include "widget_extension.h"

namespace {

using fake::Raw;

fake::Platform &the_fake()
{
    return fake::platform();
}

Evas_Object *add(const char *function, const char *kind, Evas_Object *parent)
{
    the_fake().call(function, parent);
    if (the_fake().script.failure(function))
        return nullptr;
    return the_fake().widgets.add(kind, parent);
}

// An item belongs to its container from now on, wherever it was made.
void append_child(const char *function, Evas_Object *container, Evas_Object *item)
{
    fake::Widget *parent = the_fake().widgets.find(function, container);
    fake::Widget *child = the_fake().widgets.find(function, item);
    if (parent == nullptr || child == nullptr || child->parent == parent)
        return;
    child->parent = parent;
    parent->children.push_back(child);
}

void set_text(const char *function, Evas_Object *object, const char *text)
{
    the_fake().call(function, object, text);
    if (fake::Widget *widget = the_fake().widgets.find(function, object))
        widget->text = text == nullptr ? "" : text;
}

} // namespace

int elm_velt_manager_init(Evas_Object *window)
{
    the_fake().call_on("elm_velt_manager_init", window);
    the_fake().hold("widget extension");
    return 0;
}

void elm_velt_manager_fini(void)
{
    the_fake().call("elm_velt_manager_fini");
    the_fake().release("widget extension");
}

// 240 units are the longer side of a panel of 1920 pixels.
int elm_velt_unit_to_pixel(double units)
{
    the_fake().query("elm_velt_unit_to_pixel", units);
    return static_cast<int>(std::lround(units * 8.0));
}

Evas_Object *elm_velt_layout_add(Evas_Object *parent)
{
    return add("elm_velt_layout_add", "layout", parent);
}

void elm_velt_layout_type_set(Evas_Object *layout, int type)
{
    the_fake().call_on("elm_velt_layout_type_set", layout, type);
}

void elm_velt_layout_align_set(Evas_Object *object, int align)
{
    the_fake().call_on("elm_velt_layout_align_set", object, align);
}

void elm_velt_layout_item_append(Evas_Object *layout, Evas_Object *item, int width, int height)
{
    the_fake().call("elm_velt_layout_item_append", layout, item, width, height);
    append_child("elm_velt_layout_item_append", layout, item);
}

void elm_velt_root_layout_render(Evas_Object *layout)
{
    the_fake().call_on("elm_velt_root_layout_render", layout);
}

void elm_velt_object_resize_policy_set(Evas_Object *object, int horizontal, int vertical)
{
    the_fake().call_on("elm_velt_object_resize_policy_set", object, horizontal, vertical);
}

void elm_velt_object_size_min_set(Evas_Object *object, int width, int height)
{
    the_fake().call_on("elm_velt_object_size_min_set", object, width, height);
}

void elm_velt_object_size_max_set(Evas_Object *object, int width, int height)
{
    the_fake().call_on("elm_velt_object_size_max_set", object, width, height);
}

Evas_Object *elm_velt_imagebox_add(Evas_Object *parent)
{
    return add("elm_velt_imagebox_add", "imagebox", parent);
}

void elm_velt_imagebox_file_set(Evas_Object *imagebox, const char *path)
{
    the_fake().call("elm_velt_imagebox_file_set", imagebox, path);
    if (fake::Widget *widget = the_fake().widgets.find("elm_velt_imagebox_file_set", imagebox))
        widget->file = path == nullptr ? "" : path;
}

void elm_velt_imagebox_responsive_rule_set(Evas_Object *imagebox, int rule)
{
    the_fake().call_on("elm_velt_imagebox_responsive_rule_set", imagebox, rule);
}

Evas_Object *elm_velt_imagebox_native_get(Evas_Object *imagebox)
{
    the_fake().query("elm_velt_imagebox_native_get", imagebox);
    fake::Widget *box = the_fake().widgets.find("elm_velt_imagebox_native_get", imagebox);
    if (box == nullptr)
        return nullptr;
    return box->children.empty() ? the_fake().widgets.add("image", imagebox)
                                 : reinterpret_cast<Evas_Object *>(box->children.front());
}

Evas_Object *elm_velt_popup_add(Evas_Object *window)
{
    return add("elm_velt_popup_add", "popup", window);
}

void elm_velt_popup_style_set(Evas_Object *popup, int style)
{
    the_fake().call_on("elm_velt_popup_style_set", popup, style);
}

void elm_velt_popup_title_set(Evas_Object *popup, const char *title)
{
    set_text("elm_velt_popup_title_set", popup, title);
}

void elm_velt_popup_content_set(Evas_Object *popup, Evas_Object *content, int width, int height)
{
    the_fake().call("elm_velt_popup_content_set", popup, content, width, height);
    append_child("elm_velt_popup_content_set", popup, content);
}

void elm_velt_popup_button_focus_set(Evas_Object *popup, int focus)
{
    the_fake().call_on("elm_velt_popup_button_focus_set", popup, focus);
}

void elm_velt_popup_button_set(Evas_Object *popup, Evas_Object *button, int slot)
{
    the_fake().call("elm_velt_popup_button_set", popup, button, slot);
    append_child("elm_velt_popup_button_set", popup, button);
}

void elm_velt_popup_toast_text_set(Evas_Object *toast, const char *text)
{
    set_text("elm_velt_popup_toast_text_set", toast, text);
}

Evas_Object *elm_velt_genlist_add(Evas_Object *parent)
{
    return add("elm_velt_genlist_add", "genlist", parent);
}

void elm_velt_genlist_listoption_enable(Evas_Object *genlist, bool enable)
{
    the_fake().call_on("elm_velt_genlist_listoption_enable", genlist, enable);
}

Elm_Object_Item *elm_velt_genlist_item_append(Evas_Object *genlist,
                                              const Elm_Genlist_Item_Class *item_class, void *data,
                                              Elm_Object_Item *parent, Elm_Genlist_Item_Type type,
                                              Evas_Smart_Cb function, const void *function_data)
{
    the_fake().call("elm_velt_genlist_item_append", genlist, static_cast<const void *>(item_class),
                    Raw{item_class->item_style}, parent,
                    Raw{type == ELM_GENLIST_ITEM_NONE ? "NONE" : std::to_string(type)},
                    Raw{function == nullptr ? "null" : "function"}, function_data);
    the_fake().registry.check("elm_velt_genlist_item_append", item_class);
    return the_fake().widgets.append_row(genlist, item_class, data);
}

void *elm_velt_genlist_item_data_get(const Elm_Object_Item *item)
{
    the_fake().query("elm_velt_genlist_item_data_get", item);
    const fake::Row *row = the_fake().widgets.find_row("elm_velt_genlist_item_data_get", item);
    return row == nullptr ? nullptr : row->data;
}

Evas_Object *elm_velt_button_add(Evas_Object *parent)
{
    return add("elm_velt_button_add", "button", parent);
}

void elm_velt_button_style_set(Evas_Object *button, int style, int variant)
{
    the_fake().call_on("elm_velt_button_style_set", button, style, variant);
}

void elm_velt_button_text_set(Evas_Object *button, const char *text)
{
    set_text("elm_velt_button_text_set", button, text);
}
