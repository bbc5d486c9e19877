/**
 * The extension's list: a stock genlist with plain-text rows, whose rows show the focus and, in a
 * list of options, the one in force. Main-loop thread only.
 */
#pragma once

#include <memory>
#include <vector>

#include <Elementary.h>

#include "base/toolkit_handles.h"

namespace platform {

using ItemClassReference =
    std::unique_ptr<Elm_Genlist_Item_Class, HandleEnd<elm_genlist_item_class_unref>>;

class OptionList {
  public:
    /** @return the list's object, or null. */
    static Evas_Object *create(Evas_Object *parent);

    /** The list behind an object, or null when the object is none of ours. */
    static OptionList *of(const Evas_Object *object);

    /** Whether the selected row is marked as the option in force. */
    void set_marks_option(bool marks);

    Elm_Object_Item *append(const Elm_Genlist_Item_Class *item_class, void *data,
                            Elm_Object_Item *parent, Elm_Genlist_Item_Type type,
                            Evas_Smart_Cb function, const void *function_data);

    /** The data that a row was appended with; null when the row is none of ours. */
    static void *data_of(const Elm_Object_Item *item);

  private:
    explicit OptionList(Evas_Object *genlist) : genlist_(genlist) {}
    OptionList(const OptionList &) = delete;
    OptionList &operator=(const OptionList &) = delete;

    /** A caller's row class and the one that the genlist gets in its place. */
    struct ClassPair {
        ItemClassReference theirs;
        std::unique_ptr<Elm_Genlist_Item_Class, HandleEnd<elm_genlist_item_class_free>> ours;
    };

    Elm_Genlist_Item_Class *wrap(const Elm_Genlist_Item_Class *theirs);
    void show_state(Elm_Object_Item *item) const;
    void set_focus(bool has_focus);

    static void on_realized(void *data, Evas_Object *object, void *item);
    static void on_item_focused(void *data, Evas_Object *object, void *item);
    static void on_item_unfocused(void *data, Evas_Object *object, void *item);
    static void on_focused(void *data, Evas_Object *object, void *event);
    static void on_unfocused(void *data, Evas_Object *object, void *event);
    static void on_deleted(void *data, Evas *canvas, Evas_Object *object, void *event);

    Evas_Object *genlist_;
    bool marks_option_ = false;
    bool has_focus_ = false;
    /** Rows that still live when it goes hold references of their own to both classes. */
    std::vector<ClassPair> classes_;
};

} // namespace platform
