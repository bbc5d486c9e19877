/**
 * Windows and widgets as the fake keeps them: parents and children, visibility, callbacks, rows of
 * lists. Callbacks are fired by the test.
 */
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <Elementary.h>

namespace fake {

struct Widget;

struct Row {
    Widget *list;
    void *data;
    Elm_Genlist_Item_Class item_class; /**< a copy: the player frees its own */
    std::string style;
};

struct Widget {
    struct EvasCallback {
        Evas_Callback_Type type;
        Evas_Object_Event_Cb function;
        void *data;
    };
    struct SmartCallback {
        std::string event;
        Evas_Smart_Cb function;
        void *data;
    };

    Widget *parent;
    std::vector<Widget *> children;
    bool visible = false;
    bool focused = false;
    double timeout = 0.0; /**< of a popup, in seconds; 0 for none */
    std::string text;     /**< title, label or toast text */
    std::string file;     /**< of an image box */
    std::vector<EvasCallback> evas_callbacks;
    std::vector<SmartCallback> smart_callbacks;
    std::vector<Row *> rows;
    Row *focused_row = nullptr;
    std::vector<std::unique_ptr<Row>> all_rows;
};

class Widgets {
  public:
    /** Height of a list's row on the fake canvas; rows lie below each other from y = 0. */
    static constexpr int ROW_HEIGHT = 100;

    int window_angle = 0; /**< degrees */
    /** The screen's rectangle: x, y, width, height. */
    int screen[4] = {0, 0, 1920, 1080};
    /** Whether the framework has prepared a window. */
    bool window_prepared = true;

    /** Handle of the n-th object of a kind, counted from 1, such as `get("popup")`. */
    Evas_Object *get(const std::string &kind, int n = 1) const;
    Evas_Object *window() const { return get("window"); }

    bool visible(Evas_Object *object) const;
    bool focused(Evas_Object *object) const;
    std::string text(Evas_Object *object) const;
    std::string file(Evas_Object *object) const;
    double timeout(Evas_Object *object) const;

    /** Texts of a list's rows, asked of the row class as the list does. */
    std::vector<std::string> row_texts(Evas_Object *list) const;
    size_t row_count(Evas_Object *list) const;
    Elm_Object_Item *row(Evas_Object *list, size_t index) const;
    /** Takes the record away from a row, as a row without one behaves. */
    void *take_row_data(Evas_Object *list, size_t index) const;
    void focus_row(Evas_Object *list, size_t index);
    /** Index of the focused row, or -1. */
    int focused_row(Evas_Object *list) const;

    /** Calls the object's callbacks of one kind. @return how many there were. */
    int fire(Evas_Object *object, Evas_Callback_Type type, void *event);
    int fire_smart(Evas_Object *object, const std::string &event, void *info = nullptr);

    /** Presses a mouse button at a place of the canvas. */
    void press(Evas_Object *object, int button, int x = 0, int y = 0);
    /** Presses the primary button on a row. */
    void press_row(Evas_Object *list, int index, int button = 1);
    void move_to_row(Evas_Object *list, int index);
    /** Presses a key while the object has the focus. */
    void press_key(Evas_Object *object, const char *key_name);
    /** The window manager has turned the window. */
    void turn_window(int angle);
    /** The window was shown (1) or hidden (0). */
    void change_visibility(int visibility);

    // Behind the C functions.
    Evas_Object *add(const char *kind, Evas_Object *parent);
    void remove(Evas_Object *object);
    /** The toolkit's end: what is left goes, rows with their records. */
    void remove_all();
    Elm_Object_Item *append_row(Evas_Object *list, const Elm_Genlist_Item_Class *item_class,
                                void *data);
    Widget *find(const char *function, const Evas_Object *object) const;
    Row *find_row(const char *function, const Elm_Object_Item *item) const;
    Elm_Object_Item *row_at(const Evas_Object *list, int y) const;
    Elm_Object_Item *next_row(const Elm_Object_Item *item) const;

  private:
    void take_along(Widget &widget);
    void delete_rows(Widget &widget);

    std::vector<std::unique_ptr<Widget>> widgets_;
    std::map<std::string, std::vector<Widget *>> by_kind_;
};

} // namespace fake
