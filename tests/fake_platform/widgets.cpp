#include "widgets.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>

#include "platform.h"

namespace fake {
namespace {

Evas_Object *handle(Widget *widget)
{
    return reinterpret_cast<Evas_Object *>(widget);
}

Elm_Object_Item *handle(Row *row)
{
    return reinterpret_cast<Elm_Object_Item *>(row);
}

// By value, because the callbacks may take the object and its list away. @return how many there are
template <typename Callback, typename Wanted, typename Call>
int call_those(const std::vector<Callback> callbacks, Wanted wanted, Call call)
{
    int count = 0;
    for (const Callback &callback : callbacks) {
        if (!wanted(callback))
            continue;
        call(callback);
        ++count;
    }
    return count;
}

} // namespace

Evas_Object *Widgets::get(const std::string &kind, int n) const
{
    const auto found = by_kind_.find(kind);
    if (found == by_kind_.end() || found->second.size() < static_cast<size_t>(n)) {
        ADD_FAILURE() << "there is no " << kind << "#" << n;
        return nullptr;
    }
    return handle(found->second[static_cast<size_t>(n) - 1]);
}

bool Widgets::visible(Evas_Object *object) const
{
    const Widget *widget = find("visible", object);
    return widget != nullptr && widget->visible;
}

bool Widgets::focused(Evas_Object *object) const
{
    const Widget *widget = find("focused", object);
    return widget != nullptr && widget->focused;
}

std::string Widgets::text(Evas_Object *object) const
{
    const Widget *widget = find("text", object);
    return widget == nullptr ? std::string() : widget->text;
}

std::string Widgets::file(Evas_Object *object) const
{
    const Widget *widget = find("file", object);
    return widget == nullptr ? std::string() : widget->file;
}

double Widgets::timeout(Evas_Object *object) const
{
    const Widget *widget = find("timeout", object);
    return widget == nullptr ? 0.0 : widget->timeout;
}

std::vector<std::string> Widgets::row_texts(Evas_Object *list) const
{
    std::vector<std::string> texts;
    const Widget *widget = find("row_texts", list);
    if (widget == nullptr)
        return texts;
    for (const Row *row : widget->rows) {
        char *text = row->item_class.func.text_get(row->data, list, "MainText");
        texts.emplace_back(text == nullptr ? "" : text);
        std::free(text);
    }
    return texts;
}

size_t Widgets::row_count(Evas_Object *list) const
{
    const Widget *widget = find("row_count", list);
    return widget == nullptr ? 0 : widget->rows.size();
}

Elm_Object_Item *Widgets::row(Evas_Object *list, size_t index) const
{
    const Widget *widget = find("row", list);
    if (widget == nullptr || index >= widget->rows.size()) {
        ADD_FAILURE() << "the list has no row " << index;
        return nullptr;
    }
    return handle(widget->rows[index]);
}

void *Widgets::take_row_data(Evas_Object *list, size_t index) const
{
    Row *row_found = find_row("take_row_data", row(list, index));
    return row_found == nullptr ? nullptr : std::exchange(row_found->data, nullptr);
}

void Widgets::focus_row(Evas_Object *list, size_t index)
{
    Widget *widget = find("focus_row", list);
    if (widget != nullptr)
        widget->focused_row = find_row("focus_row", row(list, index));
}

int Widgets::focused_row(Evas_Object *list) const
{
    const Widget *widget = find("focused_row", list);
    if (widget == nullptr || widget->focused_row == nullptr)
        return -1;
    const auto place = std::find(widget->rows.begin(), widget->rows.end(), widget->focused_row);
    return static_cast<int>(place - widget->rows.begin());
}

int Widgets::fire(Evas_Object *object, Evas_Callback_Type type, void *event)
{
    const Widget *widget = find("fire", object);
    return widget == nullptr ? 0
                             : call_those(
                                   widget->evas_callbacks,
                                   [=](const auto &callback) { return callback.type == type; },
                                   [=](const auto &callback) {
                                       callback.function(callback.data, nullptr, object, event);
                                   });
}

int Widgets::fire_smart(Evas_Object *object, const std::string &event, void *info)
{
    const Widget *widget = find("fire_smart", object);
    return widget == nullptr
               ? 0
               : call_those(
                     widget->smart_callbacks,
                     [&](const auto &callback) { return callback.event == event; },
                     [=](const auto &callback) { callback.function(callback.data, object, info); });
}

void Widgets::press(Evas_Object *object, int button, int x, int y)
{
    Evas_Event_Mouse_Down event = {};
    event.button = button;
    event.canvas.x = x;
    event.canvas.y = y;
    EXPECT_EQ(fire(object, EVAS_CALLBACK_MOUSE_DOWN, &event), 1) << "nothing follows the pointer";
}

void Widgets::press_row(Evas_Object *list, int index, int button)
{
    press(list, button, 10, index * ROW_HEIGHT + ROW_HEIGHT / 2);
}

void Widgets::move_to_row(Evas_Object *list, int index)
{
    Evas_Event_Mouse_In event = {};
    event.canvas.x = 10;
    event.canvas.y = index * ROW_HEIGHT + ROW_HEIGHT / 2;
    EXPECT_EQ(fire(list, EVAS_CALLBACK_MOUSE_IN, &event), 1) << "nothing follows the pointer";
}

void Widgets::press_key(Evas_Object *object, const char *key_name)
{
    std::string name = key_name;
    Evas_Event_Key_Down event = {};
    event.keyname = name.data();
    event.key = key_name;
    EXPECT_EQ(fire(object, EVAS_CALLBACK_KEY_DOWN, &event), 1) << "nothing follows the keys";
}

void Widgets::turn_window(int angle)
{
    window_angle = angle;
    EXPECT_EQ(fire_smart(window(), "wm,rotation,changed"), 1) << "nothing follows the window";
}

void Widgets::change_visibility(int visibility)
{
    void *info = reinterpret_cast<void *>(static_cast<intptr_t>(visibility));
    EXPECT_EQ(fire_smart(window(), "visibility,changed", info), 1) << "nothing follows the window";
}

Evas_Object *Widgets::add(const char *kind, Evas_Object *parent)
{
    Widget *parent_widget = find(kind, parent);
    widgets_.push_back(std::make_unique<Widget>());
    Widget *widget = widgets_.back().get();
    widget->parent = parent_widget;
    if (parent_widget != nullptr)
        parent_widget->children.push_back(widget);
    by_kind_[kind].push_back(widget);
    platform().registry.add(widget, kind);
    return handle(widget);
}

void Widgets::remove(Evas_Object *object)
{
    Widget *widget = reinterpret_cast<Widget *>(object);
    if (platform().registry.kill("evas_object_del", widget))
        take_along(*widget);
}

void Widgets::remove_all()
{
    for (const auto &widget : widgets_) {
        if (platform().registry.alive(widget.get()))
            remove(handle(widget.get()));
    }
}

void Widgets::take_along(Widget &widget)
{
    for (Widget *child : widget.children) {
        if (!platform().registry.alive(child))
            continue;
        platform().registry.kill_with_parent(child);
        take_along(*child);
    }
    delete_rows(widget);
}

void Widgets::delete_rows(Widget &widget)
{
    const std::vector<Row *> rows = std::exchange(widget.rows, {});
    widget.focused_row = nullptr;
    for (Row *row : rows) {
        platform().registry.kill_with_parent(row);
        if (row->item_class.func.del != nullptr)
            row->item_class.func.del(row->data, handle(&widget));
    }
}

Elm_Object_Item *Widgets::append_row(Evas_Object *list, const Elm_Genlist_Item_Class *item_class,
                                     void *data)
{
    Widget *widget = find("elm_velt_genlist_item_append", list);
    if (widget == nullptr)
        return nullptr;
    const char *style = item_class->item_style;
    widget->all_rows.push_back(std::make_unique<Row>(
        Row{widget, data, *item_class, style == nullptr ? std::string() : style}));
    Row *row = widget->all_rows.back().get();
    widget->rows.push_back(row);
    platform().registry.add(row, "row");
    return handle(row);
}

Widget *Widgets::find(const char *function, const Evas_Object *object) const
{
    if (!platform().registry.check(function, object))
        return nullptr;
    return reinterpret_cast<Widget *>(const_cast<Evas_Object *>(object));
}

Row *Widgets::find_row(const char *function, const Elm_Object_Item *item) const
{
    if (!platform().registry.check(function, item))
        return nullptr;
    return reinterpret_cast<Row *>(const_cast<Elm_Object_Item *>(item));
}

Elm_Object_Item *Widgets::row_at(const Evas_Object *list, int y) const
{
    const Widget *widget = find("elm_genlist_at_xy_item_get", list);
    const int index = y / ROW_HEIGHT;
    if (widget == nullptr || y < 0 || index >= static_cast<int>(widget->rows.size()))
        return nullptr;
    return handle(widget->rows[static_cast<size_t>(index)]);
}

Elm_Object_Item *Widgets::next_row(const Elm_Object_Item *item) const
{
    Row *row = find_row("elm_genlist_item_next_get", item);
    if (row == nullptr)
        return nullptr;
    const std::vector<Row *> &rows = row->list->rows;
    const auto place = std::find(rows.begin(), rows.end(), row);
    return place == rows.end() || place + 1 == rows.end() ? nullptr : handle(*(place + 1));
}

} // namespace fake
