/**
 * The extension's layout: a transparent box whose items each have their own place and size. It asks
 * its parent for no room on behalf of its items, so that an overlay can never make its window grow.
 * Main-loop thread only.
 */
#pragma once

#include <Elementary.h>

namespace platform {

/** What a widget told about its place and size; zero stands for "not told". */
struct Placement {
    int align = 0; ///< 1..9
    int horizontal = 0;
    int vertical = 0; ///< resize policies
    int width = 0;
    int height = 0; ///< size of a fixed item
    int min_width = 0;
    int min_height = 0;
    int max_width = 0;
    int max_height = 0;
};

/** The placement of a widget, made on first use and dropped when the widget is deleted. */
Placement &placement_of(Evas_Object *widget);

class FreeLayout {
  public:
    /** @return the layout's object, or null. */
    static Evas_Object *create(Evas_Object *parent);

    /** The layout behind an object, or null when the object is none. */
    static FreeLayout *of(const Evas_Object *object);

    /** Takes an item over. It is shown when the layout is. */
    void append(Evas_Object *item, int width, int height);

    /** Places the items now. */
    void place_now();

    /** Places the items at the next idle moment. */
    void place_later();

    /** Whether a popup shows and hides the layout, which then leaves its items to the popup. */
    void set_in_popup(bool in_popup) { in_popup_ = in_popup; }

    void set_items_visible(bool visible);

  private:
    explicit FreeLayout(Evas_Object *box) : box_(box) {}
    void place(Evas_Object *item, const Eina_Rectangle &room);

    static void on_place(Evas_Object *evas_box, Evas_Object_Box_Data *items, void *data);
    static void on_show(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_hide(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_deleted(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_item_resized(void *data, Evas *canvas, Evas_Object *item, void *event);

    Evas_Object *box_;
    bool placing_ = false;
    bool in_popup_ = false;
};

} // namespace platform
