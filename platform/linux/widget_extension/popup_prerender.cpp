#include "widget_extension/popup_prerender.h"

#include <cstring>
#include <memory>
#include <string>

#include <langinfo.h>

#include "log/platform_log.h"
#include "player_rules/user_interface.h"
#include "widget_extension.h"
#include "widget_extension/popup_panel.h"
#include "widget_extension/widget_manager.h"

namespace platform {
namespace {

/** The window's first frame is followed by the start of the film, which nothing shall hold up. */
constexpr double BUSY_SECONDS = 1.0;
/** Room for a popup with its shadow, in layout units. */
constexpr double CANVAS_WIDTH_UNITS = 140.0;
constexpr double CANVAS_HEIGHT_UNITS = 110.0;

/** The letters of the language in force, as far as the names of days and months hold them. */
std::string local_letters(nl_item first, int count)
{
    std::string letters;
    for (int i = 0; i < count; ++i)
        letters += nl_langinfo(first + i);
    return letters;
}

char *text_of_row(void *data, Evas_Object *, const char *)
{
    return strdup(static_cast<std::string *>(data)->c_str());
}

void delete_row(void *data, Evas_Object *)
{
    delete static_cast<std::string *>(data);
}

Evas_Object *make_list(Evas_Object *parent)
{
    Evas_Object *list = elm_velt_genlist_add(parent);
    const std::unique_ptr<Elm_Genlist_Item_Class, HandleEnd<elm_genlist_item_class_free>> row_class(
        elm_genlist_item_class_new());
    if (!list || !row_class)
        return list;
    row_class->item_style = OPTIONS_ROW_STYLE;
    row_class->func.text_get = text_of_row;
    row_class->func.del = delete_row;
    elm_velt_genlist_listoption_enable(list, true);
    // One row more than there is room for, which brings up the bar.
    for (const std::string &text :
         {std::string("abcdefghijklmnopqrstuvwxyz"), std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ"),
          std::string("0123456789 _-.()&…"), local_letters(DAY_1, 7), local_letters(MON_1, 12),
          std::string("abc")}) {
        auto row_text = std::make_unique<std::string>(text);
        if (elm_velt_genlist_item_append(list, row_class.get(), row_text.get(), nullptr,
                                         ELM_GENLIST_ITEM_NONE, nullptr, nullptr))
            static_cast<void>(row_text.release()); // delete_row() has it from now on
    }
    return list;
}

} // namespace

PopupPrerender::PopupPrerender(Evas_Object *window) : window_(window)
{
    evas_object_smart_callback_add(window_, "language,changed", on_language, this);
    evas_event_callback_add(evas_object_evas_get(window_), EVAS_CALLBACK_RENDER_FLUSH_POST,
                            on_frame, this);
}

PopupPrerender::~PopupPrerender()
{
    evas_event_callback_del_full(evas_object_evas_get(window_), EVAS_CALLBACK_RENDER_FLUSH_POST,
                                 on_frame, this);
    evas_object_smart_callback_del_full(window_, "language,changed", on_language, this);
}

void PopupPrerender::stop()
{
    timer_.reset();
    idler_.reset();
    popup_.reset();
    list_ = nullptr;
    offscreen_window_.reset();
    canvas_.reset();
    step_ = 0;
}

void PopupPrerender::wait()
{
    stop();
    done_ = false;
    timer_.reset(ecore_timer_add(BUSY_SECONDS, on_time, this));
}

bool PopupPrerender::step()
{
    // One after the other, so that a key in between is answered before the next.
    switch (step_++) {
    case 0:
        return make_offscreen_window();
    case 1:
        make_popup();
        return true;
    case 2:
        elm_object_focus_set(list_, EINA_TRUE);
        elm_genlist_item_selected_set(elm_genlist_first_item_get(list_), EINA_TRUE);
        return true;
    case 3:
        draw();
        return true;
    case 4:
        make_toast();
        return true;
    default:
        draw();
        // The window has drawn only one frame so far. A second brings up the second of its buffers,
        // which is filled as a whole when it is new.
        evas_damage_rectangle_add(evas_object_evas_get(elm_win_inlined_image_object_get(window_)),
                                  0, 0, 1, 1);
        done_ = true;
        PLATFORM_LOGD("widget_extension", "popup and toast are ready");
        return false;
    }
}

bool PopupPrerender::make_offscreen_window()
{
    WidgetManager &manager = WidgetManager::get();
    // Not a window inside the player's: drawing that one from outside its parent's turn leaves the
    // parent waiting for a frame that never comes.
    canvas_.reset(ecore_evas_buffer_new(manager.pixels(CANVAS_WIDTH_UNITS),
                                        manager.pixels(CANVAS_HEIGHT_UNITS)));
    offscreen_window_.reset(canvas_ ? elm_win_fake_add(canvas_.get()) : nullptr);
    if (!offscreen_window_)
        return false;
    ecore_evas_alpha_set(canvas_.get(), EINA_TRUE);
    ecore_evas_manual_render_set(canvas_.get(), EINA_TRUE);
    ecore_evas_show(canvas_.get());
    elm_win_focus_highlight_style_set(offscreen_window_.get(), "velt");
    evas_object_show(offscreen_window_.get());
    return true;
}

void PopupPrerender::make_popup()
{
    WidgetManager &manager = WidgetManager::get();
    const int width = manager.pixels(OPTIONS_WIDTH_UNITS);
    const int height = manager.pixels(OPTIONS_HEIGHT_UNITS);
    popup_.reset(create_popup(offscreen_window_.get()));
    Evas_Object *layout = elm_velt_layout_add(popup_.get());
    list_ = make_list(layout);
    elm_velt_popup_title_set(popup_.get(), ("Demo" + local_letters(DAY_1, 2)).c_str());
    elm_velt_layout_item_append(layout, list_, width, height);
    elm_velt_popup_content_set(popup_.get(), layout, width, height);
    Evas_Object *button = elm_velt_button_add(popup_.get());
    elm_velt_button_text_set(button, ("OK" + local_letters(DAY_1, 1)).c_str());
    elm_velt_popup_button_set(popup_.get(), button, 0);
    evas_object_show(popup_.get());
}

void PopupPrerender::make_toast()
{
    popup_.reset();
    list_ = nullptr;
    popup_.reset(create_popup(offscreen_window_.get()));
    set_popup_style(popup_.get(), PopupStyle::toast);
    set_toast_text(popup_.get(), "abcdefghijklmnopqrstuvwxyz: 0123456789");
    evas_object_show(popup_.get());
}

void PopupPrerender::draw()
{
    evas_smart_objects_calculate(ecore_evas_get(canvas_.get()));
    ecore_evas_manual_render(canvas_.get());
}

void PopupPrerender::on_frame(void *data, Evas *canvas, void *)
{
    evas_event_callback_del_full(canvas, EVAS_CALLBACK_RENDER_FLUSH_POST, on_frame, data);
    static_cast<PopupPrerender *>(data)->wait();
}

void PopupPrerender::on_language(void *data, Evas_Object *, void *)
{
    // Another language may bring other letters and other fonts.
    auto *self = static_cast<PopupPrerender *>(data);
    if (self->done_ || self->timer_ || self->idler_)
        self->wait();
}

Eina_Bool PopupPrerender::on_time(void *data)
{
    auto *self = static_cast<PopupPrerender *>(data);
    static_cast<void>(self->timer_.release()); // it goes by itself
    self->idler_.reset(ecore_idler_add(on_idle, data));
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool PopupPrerender::on_idle(void *data)
{
    auto *self = static_cast<PopupPrerender *>(data);
    if (self->step())
        return ECORE_CALLBACK_RENEW;
    static_cast<void>(self->idler_.release()); // it goes by itself
    self->stop();
    return ECORE_CALLBACK_CANCEL;
}

} // namespace platform
