#include "widget_extension/option_list.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "widget_extension/plain_text.h"
#include "widget_extension/widget_manager.h"

namespace platform {
namespace {

constexpr const char *LIST_KEY = "velt.list";
constexpr const char *SIGNAL_SOURCE = "velt";
/** Where the toolkit keeps, at a window, what is to take the focus as soon as it can. */
constexpr const char *DELAYED_FOCUS_KEY = "__delayed_focus_set";

/** What the genlist keeps for a row: the caller's class and data, and how the text reads. */
struct Row {
    ItemClassReference theirs;
    void *data;
    bool right_to_left = false;
};

ItemClassReference reference_to(const Elm_Genlist_Item_Class *item_class)
{
    // Elementary takes the class as constant, but counts references in it.
    auto *counted = const_cast<Elm_Genlist_Item_Class *>(item_class);
    elm_genlist_item_class_ref(counted);
    return ItemClassReference(counted);
}

char *text_of_row(void *data, Evas_Object *object, const char *part)
{
    auto *row = static_cast<Row *>(data);
    const std::unique_ptr<char, decltype(&std::free)> text(
        row->theirs->func.text_get(row->data, object, part), &std::free);
    if (!text)
        return nullptr;
    row->right_to_left = reads_right_to_left(text.get());
    return strdup(markup_of(text.get()).c_str());
}

Evas_Object *content_of_row(void *data, Evas_Object *object, const char *part)
{
    const auto *row = static_cast<Row *>(data);
    return row->theirs->func.content_get(row->data, object, part);
}

Eina_Bool state_of_row(void *data, Evas_Object *object, const char *part)
{
    const auto *row = static_cast<Row *>(data);
    return row->theirs->func.state_get(row->data, object, part);
}

void delete_row(void *data, Evas_Object *object)
{
    const std::unique_ptr<Row> row(static_cast<Row *>(data));
    if (row->theirs->func.del)
        row->theirs->func.del(row->data, object);
}

} // namespace

Evas_Object *OptionList::create(Evas_Object *parent)
{
    Evas_Object *genlist = elm_genlist_add(parent);
    if (!genlist)
        return nullptr;
    auto *list = new OptionList(genlist);
    evas_object_data_set(genlist, LIST_KEY, list);
    WidgetManager::get().set_up(genlist, "velt");
    // Rows of one class are equally high, so that a thousand of them need not be measured.
    elm_genlist_homogeneous_set(genlist, EINA_TRUE);
    elm_scroller_bounce_set(genlist, EINA_FALSE, EINA_FALSE);
    elm_scroller_policy_set(genlist, ELM_SCROLLER_POLICY_OFF, ELM_SCROLLER_POLICY_AUTO);
    evas_object_smart_callback_add(genlist, "realized", on_realized, list);
    evas_object_smart_callback_add(genlist, "item,focused", on_item_focused, list);
    evas_object_smart_callback_add(genlist, "item,unfocused", on_item_unfocused, list);
    evas_object_smart_callback_add(genlist, "focused", on_focused, list);
    evas_object_smart_callback_add(genlist, "unfocused", on_unfocused, list);
    evas_object_event_callback_add(genlist, EVAS_CALLBACK_DEL, on_deleted, list);
    return genlist;
}

OptionList *OptionList::of(const Evas_Object *object)
{
    return static_cast<OptionList *>(evas_object_data_get(object, LIST_KEY));
}

void OptionList::set_marks_option(bool marks)
{
    marks_option_ = marks;
    elm_genlist_realized_items_update(genlist_);
}

Elm_Genlist_Item_Class *OptionList::wrap(const Elm_Genlist_Item_Class *theirs)
{
    for (const ClassPair &pair : classes_) {
        if (pair.theirs.get() == theirs)
            return pair.ours.get();
    }
    decltype(ClassPair::ours) ours(elm_genlist_item_class_new());
    if (!ours)
        return nullptr;
    ours->item_style = theirs->item_style;
    ours->func.text_get = theirs->func.text_get ? text_of_row : nullptr;
    ours->func.content_get = theirs->func.content_get ? content_of_row : nullptr;
    ours->func.state_get = theirs->func.state_get ? state_of_row : nullptr;
    ours->func.del = delete_row;
    classes_.push_back({reference_to(theirs), std::move(ours)});
    return classes_.back().ours.get();
}

Elm_Object_Item *OptionList::append(const Elm_Genlist_Item_Class *item_class, void *data,
                                    Elm_Object_Item *parent, Elm_Genlist_Item_Type type,
                                    Evas_Smart_Cb function, const void *function_data)
{
    Elm_Genlist_Item_Class *ours = wrap(item_class);
    if (!ours)
        return nullptr;
    auto row = std::make_unique<Row>(Row{reference_to(item_class), data});
    Elm_Object_Item *item =
        elm_genlist_item_append(genlist_, ours, row.get(), parent, type, function, function_data);
    if (item)
        static_cast<void>(row.release()); // the item's own from now on
    return item;
}

void *OptionList::data_of(const Elm_Object_Item *item)
{
    if (!item || !of(elm_object_item_widget_get(item)))
        return nullptr;
    const auto *row = static_cast<Row *>(elm_object_item_data_get(item));
    return row ? row->data : nullptr;
}

void OptionList::show_state(Elm_Object_Item *item) const
{
    const auto *row = static_cast<Row *>(elm_object_item_data_get(item));
    if (!row)
        return;
    const bool focused = has_focus_ && elm_object_focused_item_get(genlist_) == item;
    const bool mirrored = elm_object_mirrored_get(genlist_);
    const auto emit = [item](const char *signal) {
        elm_object_item_signal_emit(item, signal, SIGNAL_SOURCE);
    };
    emit(row->right_to_left == mirrored ? "velt,text,along" : "velt,text,against");
    emit(marks_option_ ? "velt,option,on" : "velt,option,off");
    emit(focused ? "velt,state,focused" : "velt,state,unfocused");
}

void OptionList::set_focus(bool has_focus)
{
    // Elementary still calls the list focused while it tells that the focus has left it.
    has_focus_ = has_focus;
    if (Elm_Object_Item *item = elm_object_focused_item_get(genlist_))
        show_state(item);
}

void OptionList::on_realized(void *data, Evas_Object *, void *item)
{
    // A row that scrolls in may use the drawing of one that scrolled out, with that one's state.
    static_cast<OptionList *>(data)->show_state(static_cast<Elm_Object_Item *>(item));
}

void OptionList::on_item_focused(void *data, Evas_Object *, void *item)
{
    static_cast<OptionList *>(data)->show_state(static_cast<Elm_Object_Item *>(item));
}

void OptionList::on_item_unfocused(void *, Evas_Object *, void *item)
{
    elm_object_item_signal_emit(static_cast<Elm_Object_Item *>(item), "velt,state,unfocused",
                                SIGNAL_SOURCE);
}

void OptionList::on_focused(void *data, Evas_Object *, void *)
{
    static_cast<OptionList *>(data)->set_focus(true);
}

void OptionList::on_unfocused(void *data, Evas_Object *, void *)
{
    static_cast<OptionList *>(data)->set_focus(false);
}

void OptionList::on_deleted(void *data, Evas *, Evas_Object *object, void *)
{
    auto *self = static_cast<OptionList *>(data);
    // A list that was asked to take the focus while it was hidden is kept here until something else
    // is asked. The toolkit does not notice that it goes, and complains when it finds it gone.
    Evas_Object *window = elm_object_top_widget_get(object);
    if (efl_key_data_get(window, DELAYED_FOCUS_KEY) == object)
        efl_key_data_set(window, DELAYED_FOCUS_KEY, nullptr);
    evas_object_smart_callback_del_full(object, "realized", on_realized, self);
    evas_object_smart_callback_del_full(object, "item,focused", on_item_focused, self);
    evas_object_smart_callback_del_full(object, "item,unfocused", on_item_unfocused, self);
    evas_object_smart_callback_del_full(object, "focused", on_focused, self);
    evas_object_smart_callback_del_full(object, "unfocused", on_unfocused, self);
    evas_object_data_del(object, LIST_KEY);
    delete self;
}

} // namespace platform
