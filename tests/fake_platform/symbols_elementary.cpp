// Evas and Elementary.

#include <cstdlib>

#include <Elementary.h>

#include "efl_on_tv.h"
#include "platform.h"

double _elm_startup_time = 0.0;

namespace {

using fake::Raw;

fake::Platform &the_fake()
{
    return fake::platform();
}

const char *callback_name(Evas_Callback_Type type)
{
    switch (type) {
    case EVAS_CALLBACK_RESIZE:
        return "RESIZE";
    case EVAS_CALLBACK_SHOW:
        return "SHOW";
    case EVAS_CALLBACK_MOUSE_IN:
        return "MOUSE_IN";
    case EVAS_CALLBACK_MOUSE_DOWN:
        return "MOUSE_DOWN";
    case EVAS_CALLBACK_KEY_DOWN:
        return "KEY_DOWN";
    default:
        return "another event";
    }
}

// Each window has its canvas, known by the window's own place in memory.
struct Canvas {
    Evas_Object *window;
};

Canvas *canvas_of(Evas_Object *window)
{
    static std::map<const void *, Canvas> canvases;
    Canvas *canvas = &canvases[window];
    canvas->window = window;
    the_fake().registry.lend(canvas, "canvas");
    return canvas;
}

} // namespace

// ---- Evas ----

Evas *evas_object_evas_get(const Evas_Object *obj)
{
    the_fake().query("evas_object_evas_get", the_fake().checked("evas_object_evas_get", obj));
    if (obj == nullptr)
        return nullptr;
    return reinterpret_cast<Evas *>(canvas_of(const_cast<Evas_Object *>(obj)));
}

Evas_Object *evas_object_rectangle_add(Evas *e)
{
    the_fake().call("evas_object_rectangle_add", static_cast<const void *>(e));
    if (e == nullptr || the_fake().script.failure("evas_object_rectangle_add"))
        return nullptr;
    return the_fake().widgets.add("rectangle", reinterpret_cast<Canvas *>(e)->window);
}

void evas_object_size_hint_weight_set(Evas_Object *obj, double x, double y)
{
    the_fake().call_on("evas_object_size_hint_weight_set", obj, x, y);
}

void evas_object_color_set(Evas_Object *obj, int r, int g, int b, int a)
{
    the_fake().call_on("evas_object_color_set", obj, r, g, b, a);
}

void evas_object_render_op_set(Evas_Object *obj, Evas_Render_Op op)
{
    the_fake().call_on("evas_object_render_op_set", obj,
                       Raw{op == EVAS_RENDER_COPY ? "COPY" : std::to_string(op)});
}

void evas_object_show(Evas_Object *eo_obj)
{
    the_fake().call("evas_object_show", static_cast<const void *>(eo_obj));
    if (fake::Widget *widget = the_fake().widgets.find("evas_object_show", eo_obj))
        widget->visible = true;
}

void evas_object_hide(Evas_Object *eo_obj)
{
    the_fake().call("evas_object_hide", static_cast<const void *>(eo_obj));
    if (fake::Widget *widget = the_fake().widgets.find("evas_object_hide", eo_obj))
        widget->visible = false;
}

void evas_object_resize(Evas_Object *obj, Evas_Coord w, Evas_Coord h)
{
    the_fake().call_on("evas_object_resize", obj, w, h);
}

void evas_object_del(Evas_Object *obj)
{
    the_fake().call("evas_object_del", static_cast<const void *>(obj));
    the_fake().widgets.remove(obj);
}

void evas_object_event_callback_add(Evas_Object *obj, Evas_Callback_Type type,
                                    Evas_Object_Event_Cb func, const void *data)
{
    the_fake().call("evas_object_event_callback_add", static_cast<const void *>(obj),
                    Raw{callback_name(type)}, data);
    if (fake::Widget *widget = the_fake().widgets.find("evas_object_event_callback_add", obj))
        widget->evas_callbacks.push_back({type, func, const_cast<void *>(data)});
}

void evas_object_smart_callback_add(Evas_Object *eo_obj, const char *event, Evas_Smart_Cb func,
                                    const void *data)
{
    the_fake().call("evas_object_smart_callback_add", static_cast<const void *>(eo_obj), event,
                    data);
    if (fake::Widget *widget = the_fake().widgets.find("evas_object_smart_callback_add", eo_obj))
        widget->smart_callbacks.push_back({event, func, const_cast<void *>(data)});
}

// ---- Elementary: process ----

int elm_init(int argc, char **argv)
{
    the_fake().call("elm_init", argc, static_cast<const void *>(argv));
    the_fake().hold("elementary");
    return 1;
}

int elm_shutdown(void)
{
    the_fake().call("elm_shutdown");
    the_fake().release("elementary");
    return 0;
}

void elm_app_base_scale_set(double base_scale)
{
    the_fake().call("elm_app_base_scale_set", base_scale);
}

void elm_config_mirrored_set(Eina_Bool mirrored)
{
    the_fake().call("elm_config_mirrored_set", mirrored);
}

void elm_language_set(const char *lang)
{
    the_fake().call("elm_language_set", lang);
}

Eina_Bool elm_policy_set(unsigned int policy, int value)
{
    const bool quits = policy == ELM_POLICY_QUIT && value == ELM_POLICY_QUIT_LAST_WINDOW_CLOSED;
    the_fake().call("elm_policy_set", Raw{quits ? "QUIT, LAST_WINDOW_CLOSED" : "another policy"});
    return EINA_TRUE;
}

// ---- Elementary: window ----

Evas_Object *elm_win_add(Evas_Object *parent, const char *name, Elm_Win_Type type)
{
    the_fake().call("elm_win_add", parent, name, type);
    if (the_fake().script.failure("elm_win_add"))
        return nullptr;
    return the_fake().widgets.add("window", parent);
}

void elm_win_resize_object_add(Evas_Object *obj, Evas_Object *subobj)
{
    the_fake().call_on("elm_win_resize_object_add", obj,
                       the_fake().checked("elm_win_resize_object_add", subobj));
}

void elm_win_title_set(Evas_Object *obj, const char *title)
{
    the_fake().call_on("elm_win_title_set", obj, title);
}

void elm_win_autodel_set(Evas_Object *obj, Eina_Bool autodel)
{
    the_fake().call_on("elm_win_autodel_set", obj, autodel);
}

Eina_Bool elm_win_aux_hint_add(Evas_Object *window, const char *hint, const char *value)
{
    the_fake().call_on("elm_win_aux_hint_add", window, hint, value);
    return EINA_TRUE;
}

int elm_win_rotation_get(const Evas_Object *obj)
{
    the_fake().query("elm_win_rotation_get", the_fake().checked("elm_win_rotation_get", obj));
    return the_fake().widgets.window_angle;
}

void elm_win_screen_size_get(const Evas_Object *obj, int *x, int *y, int *w, int *h)
{
    the_fake().query("elm_win_screen_size_get", the_fake().checked("elm_win_screen_size_get", obj));
    int *const results[4] = {x, y, w, h};
    for (size_t i = 0; i < 4; ++i) {
        if (results[i] != nullptr)
            *results[i] = the_fake().widgets.screen[i];
    }
}

// ---- Elementary: focus and popup ----

void elm_object_focus_allow_set(Evas_Object *obj, Eina_Bool enable)
{
    the_fake().call_on("elm_object_focus_allow_set", obj, enable);
}

void elm_object_focus_set(Evas_Object *obj, Eina_Bool focus)
{
    the_fake().call("elm_object_focus_set", static_cast<const void *>(obj), focus);
    if (fake::Widget *widget = the_fake().widgets.find("elm_object_focus_set", obj))
        widget->focused = focus != EINA_FALSE;
}

void elm_popup_orient_set(Evas_Object *obj, Elm_Popup_Orient orient)
{
    the_fake().call_on("elm_popup_orient_set", obj,
                       Raw{orient == ELM_POPUP_ORIENT_CENTER ? "CENTER" : "elsewhere"});
}

void elm_popup_timeout_set(Evas_Object *obj, double timeout)
{
    the_fake().call("elm_popup_timeout_set", static_cast<const void *>(obj), timeout);
    if (fake::Widget *widget = the_fake().widgets.find("elm_popup_timeout_set", obj))
        widget->timeout = timeout;
}

// ---- Elementary: list ----

Elm_Genlist_Item_Class *elm_genlist_item_class_new(void)
{
    the_fake().call("elm_genlist_item_class_new");
    if (the_fake().script.failure("elm_genlist_item_class_new"))
        return nullptr;
    auto *item_class = new Elm_Genlist_Item_Class();
    the_fake().registry.add(item_class, "row-class");
    return item_class;
}

void elm_genlist_item_class_free(Elm_Genlist_Item_Class *itc)
{
    the_fake().call("elm_genlist_item_class_free", static_cast<const void *>(itc));
    if (the_fake().registry.kill("elm_genlist_item_class_free", itc))
        delete itc;
}

void elm_genlist_select_mode_set(Evas_Object *obj, Elm_Object_Select_Mode mode)
{
    the_fake().call_on(
        "elm_genlist_select_mode_set", obj,
        Raw{mode == ELM_OBJECT_SELECT_MODE_DEFAULT ? "DEFAULT" : std::to_string(mode)});
}

Elm_Object_Item *elm_genlist_at_xy_item_get(const Evas_Object *obj, Evas_Coord x, Evas_Coord y,
                                            int *posret)
{
    the_fake().query("elm_genlist_at_xy_item_get", obj, x, y, static_cast<const void *>(posret));
    if (posret != nullptr)
        *posret = 0;
    return the_fake().widgets.row_at(obj, y);
}

Elm_Object_Item *elm_genlist_first_item_get(const Evas_Object *obj)
{
    the_fake().query("elm_genlist_first_item_get", obj);
    const fake::Widget *list = the_fake().widgets.find("elm_genlist_first_item_get", obj);
    return list == nullptr || list->rows.empty()
               ? nullptr
               : the_fake().widgets.row(const_cast<Evas_Object *>(obj), 0);
}

Elm_Object_Item *elm_genlist_item_next_get(const Elm_Widget_Item *obj)
{
    the_fake().query("elm_genlist_item_next_get", obj);
    return the_fake().widgets.next_row(obj);
}

void elm_genlist_item_show(Elm_Object_Item *item, Elm_Genlist_Item_Scrollto_Type type)
{
    the_fake().call_on("elm_genlist_item_show", item,
                       Raw{type == ELM_GENLIST_ITEM_SCROLLTO_IN ? "IN" : std::to_string(type)});
}

void elm_genlist_item_selected_set(Elm_Object_Item *obj, Eina_Bool selected)
{
    the_fake().call_on("elm_genlist_item_selected_set", obj, selected);
}

void elm_object_item_focus_set(Elm_Widget_Item *obj, Eina_Bool focused)
{
    the_fake().call("elm_object_item_focus_set", static_cast<const void *>(obj), focused);
    if (fake::Row *row = the_fake().widgets.find_row("elm_object_item_focus_set", obj))
        row->list->focused_row = focused != EINA_FALSE ? row : nullptr;
}

Elm_Object_Item *elm_object_focused_item_get(const Evas_Object *obj)
{
    the_fake().query("elm_object_focused_item_get", obj);
    fake::Widget *list = the_fake().widgets.find("elm_object_focused_item_get", obj);
    return list == nullptr ? nullptr : reinterpret_cast<Elm_Object_Item *>(list->focused_row);
}
