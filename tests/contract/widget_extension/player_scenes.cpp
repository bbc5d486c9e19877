#include "player_scenes.h"

#include <cstring>

#include "widget_extension.h"

namespace {

constexpr double LIST_WIDTH_UNITS = 120.0;
constexpr double LIST_HEIGHT_UNITS = 55.0;

void count(void *counter, Evas_Object *, void *)
{
    ++*static_cast<int *>(counter);
}

} // namespace

PopupScene::PopupScene(Evas_Object *window, const std::string &title, std::vector<std::string> rows,
                       int row_in_force, const std::string &button_text)
    : row_in_force_(row_in_force)
{
    const int width = elm_velt_unit_to_pixel(LIST_WIDTH_UNITS);
    const int height = elm_velt_unit_to_pixel(LIST_HEIGHT_UNITS);
    popup = elm_velt_popup_add(window);
    elm_velt_popup_style_set(popup, 0);
    elm_popup_orient_set(popup, ELM_POPUP_ORIENT_CENTER);
    elm_velt_popup_title_set(popup, title.c_str());

    layout = elm_velt_layout_add(popup);
    elm_velt_layout_type_set(layout, 1);
    elm_velt_object_size_min_set(layout, width, height);
    elm_velt_object_resize_policy_set(layout, 4, 1);
    elm_velt_layout_align_set(layout, 5);

    genlist = elm_velt_genlist_add(layout);
    elm_velt_genlist_listoption_enable(genlist, true);
    elm_velt_object_resize_policy_set(genlist, 4, 1);
    elm_genlist_select_mode_set(genlist, ELM_OBJECT_SELECT_MODE_DEFAULT);
    elm_velt_layout_item_append(layout, genlist, width, height);
    elm_velt_popup_content_set(popup, layout, width, height);

    make_list(rows);
    make_button(button_text);
    elm_popup_timeout_set(popup, 30.0);
    evas_object_smart_callback_add(popup, "timeout", count, &timed_out);
    watch_list();
}

PopupScene::~PopupScene()
{
    if (idler_)
        ecore_idler_del(idler_);
}

void PopupScene::make_list(const std::vector<std::string> &rows)
{
    Elm_Genlist_Item_Class *row_class = elm_genlist_item_class_new();
    row_class->item_style = "C_TextTile_SingleLine_02";
    row_class->func.text_get = text_of;
    row_class->func.content_get = nullptr;
    row_class->func.state_get = nullptr;
    row_class->func.del = delete_record;
    int index = 0;
    for (const std::string &text : rows) {
        elm_velt_genlist_item_append(genlist, row_class, new Record{index++, text, this}, nullptr,
                                     ELM_GENLIST_ITEM_NONE, nullptr, this);
    }
    elm_genlist_item_class_free(row_class);
}

void PopupScene::make_button(const std::string &text)
{
    button = elm_velt_button_add(popup);
    elm_velt_button_style_set(button, 0, 0);
    elm_velt_button_text_set(button, text.c_str());
    elm_velt_popup_button_focus_set(popup, 5);
    elm_velt_popup_button_set(popup, button, 0);
    evas_object_smart_callback_add(button, "clicked", count, &clicked);
    evas_object_event_callback_add(
        button, EVAS_CALLBACK_MOUSE_IN,
        [](void *, Evas *, Evas_Object *object, void *) {
            elm_object_focus_set(object, EINA_TRUE);
        },
        nullptr);
    evas_object_event_callback_add(
        button, EVAS_CALLBACK_MOUSE_DOWN,
        [](void *data, Evas *, Evas_Object *, void *) { ++*static_cast<int *>(data); },
        &button_presses);
}

void PopupScene::watch_list()
{
    evas_object_event_callback_add(
        genlist, EVAS_CALLBACK_KEY_DOWN,
        [](void *data, Evas *, Evas_Object *, void *event) {
            static_cast<PopupScene *>(data)->keys.emplace_back(
                static_cast<Evas_Event_Key_Down *>(event)->key);
        },
        this);
    evas_object_event_callback_add(
        genlist, EVAS_CALLBACK_SHOW,
        [](void *data, Evas *, Evas_Object *, void *) {
            auto *scene = static_cast<PopupScene *>(data);
            ++scene->list_shown;
            scene->idler_ = ecore_idler_add(focus_row_in_force, data);
        },
        this);
    evas_object_event_callback_add(
        genlist, EVAS_CALLBACK_MOUSE_IN,
        [](void *, Evas *, Evas_Object *list, void *event) {
            const auto *pointer = static_cast<Evas_Event_Mouse_In *>(event);
            Elm_Object_Item *item =
                elm_genlist_at_xy_item_get(list, pointer->canvas.x, pointer->canvas.y, nullptr);
            elm_object_item_focus_set(item, EINA_TRUE);
        },
        this);
    evas_object_event_callback_add(
        genlist, EVAS_CALLBACK_MOUSE_DOWN,
        [](void *data, Evas *, Evas_Object *list, void *event) {
            const auto *pointer = static_cast<Evas_Event_Mouse_Down *>(event);
            static_cast<PopupScene *>(data)->pressed_row = index_of(
                elm_genlist_at_xy_item_get(list, pointer->canvas.x, pointer->canvas.y, nullptr));
        },
        this);
}

Eina_Bool PopupScene::focus_row_in_force(void *data)
{
    auto *scene = static_cast<PopupScene *>(data);
    scene->idler_ = nullptr;
    Elm_Object_Item *item = scene->row_in_force_ < 0
                                ? nullptr
                                : scene->row(static_cast<unsigned int>(scene->row_in_force_));
    if (item) {
        elm_object_focus_set(scene->genlist, EINA_TRUE);
        elm_genlist_item_show(item, ELM_GENLIST_ITEM_SCROLLTO_IN);
        elm_genlist_item_selected_set(item, EINA_TRUE);
        elm_object_item_focus_set(item, EINA_TRUE);
    }
    return ECORE_CALLBACK_CANCEL;
}

void PopupScene::show()
{
    evas_object_show(popup);
}

void PopupScene::delete_closed()
{
    evas_object_del(genlist);
    evas_object_del(layout);
    evas_object_del(popup);
}

void PopupScene::delete_at_end()
{
    evas_object_del(popup);
    evas_object_del(genlist);
    evas_object_del(layout);
}

Elm_Object_Item *PopupScene::row(unsigned int index) const
{
    Elm_Object_Item *item = elm_genlist_first_item_get(genlist);
    while (item && index_of(item) != static_cast<int>(index))
        item = elm_genlist_item_next_get(item);
    return item;
}

int PopupScene::focused_row() const
{
    return elm_object_focus_get(genlist) ? index_of(elm_object_focused_item_get(genlist)) : -1;
}

int PopupScene::index_of(const Elm_Object_Item *item)
{
    const auto *record = static_cast<Record *>(elm_velt_genlist_item_data_get(item));
    return record ? record->index : -1;
}

char *PopupScene::text_of(void *data, Evas_Object *, const char *part)
{
    if (strcmp(part, "MainText") != 0)
        return nullptr;
    return strdup(static_cast<Record *>(data)->text.c_str());
}

void PopupScene::delete_record(void *data, Evas_Object *)
{
    auto *record = static_cast<Record *>(data);
    ++record->scene->rows_deleted;
    delete record;
}

Evas_Object *show_toast(Evas_Object *window, const std::string &text)
{
    Evas_Object *toast = elm_velt_popup_add(window);
    elm_velt_popup_style_set(toast, 4);
    elm_popup_orient_set(toast, ELM_POPUP_ORIENT_CENTER);
    elm_velt_popup_toast_text_set(toast, text.c_str());
    elm_popup_timeout_set(toast, 3.0);
    evas_object_show(toast);
    return toast;
}

DisclaimerScene::DisclaimerScene(Evas_Object *window, bool portrait, const std::string &folder)
    : folder_(folder)
{
    const double width = portrait ? 135.0 : 240.0;
    const double height = portrait ? 240.0 : 135.0;
    root = elm_velt_layout_add(window);
    elm_velt_layout_type_set(root, 1);
    evas_object_size_hint_weight_set(root, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_win_resize_object_add(window, root);
    elm_velt_layout_align_set(root, 8);

    image = elm_velt_imagebox_add(root);
    elm_velt_imagebox_file_set(image, picture(portrait).c_str());
    elm_velt_imagebox_responsive_rule_set(image, 1);
    elm_object_focus_allow_set(elm_velt_imagebox_native_get(image), EINA_FALSE);
    elm_velt_layout_align_set(image, 8);
    elm_velt_object_resize_policy_set(image, 4, 4);
    elm_velt_object_size_max_set(image, elm_velt_unit_to_pixel(width),
                                 elm_velt_unit_to_pixel(height));
    elm_velt_object_size_min_set(image, elm_velt_unit_to_pixel(height),
                                 elm_velt_unit_to_pixel(width));
    elm_velt_layout_item_append(root, image, elm_velt_unit_to_pixel(width),
                                elm_velt_unit_to_pixel(height));
    hide();
}

std::string DisclaimerScene::picture(bool portrait) const
{
    return folder_ + (portrait ? "/ostrel_demo/player_img_china_disclaimer_portrait.png"
                               : "/ostrel_demo/player_img_china_disclaimer.png");
}

void DisclaimerScene::show(bool portrait)
{
    elm_velt_imagebox_file_set(image, picture(portrait).c_str());
    evas_object_resize(image, portrait ? 135 : 240, portrait ? 240 : 135);
    elm_velt_root_layout_render(root);
    evas_object_show(root);
    evas_object_show(image);
}

void DisclaimerScene::hide()
{
    evas_object_hide(root);
    evas_object_hide(image);
}
