#include "widget_extension/free_layout.h"

#include <algorithm>
#include <unordered_map>

#include "widget_extension.h"
#include "widget_extension/widget_manager.h"

namespace platform {
namespace {

constexpr const char *LAYOUT_KEY = "velt.layout";

std::unordered_map<const Evas_Object *, Placement> &placements()
{
    static std::unordered_map<const Evas_Object *, Placement> all;
    return all;
}

void forget_placement(void *, Evas *, Evas_Object *widget, void *)
{
    placements().erase(widget);
}

int extent(int policy, int fixed, int room, int least, int most)
{
    if (policy != ELM_VELT_RESIZE_FILL)
        return fixed;
    const int bounded = most > 0 ? std::min(room, most) : room;
    return std::max(bounded, least);
}

/** @param third 0, 1, 2: near edge, centre, far edge. */
int offset(int third, int room, int size)
{
    return (room - size) * third / 2;
}

} // namespace

Placement &placement_of(Evas_Object *widget)
{
    const auto [entry, fresh] = placements().try_emplace(widget);
    if (fresh)
        evas_object_event_callback_add(widget, EVAS_CALLBACK_DEL, forget_placement, nullptr);
    return entry->second;
}

Evas_Object *FreeLayout::create(Evas_Object *parent)
{
    Evas_Object *box = elm_box_add(parent);
    if (!box)
        return nullptr;
    auto *layout = new FreeLayout(box);
    evas_object_data_set(box, LAYOUT_KEY, layout);
    elm_box_layout_set(box, on_place, layout, nullptr);
    evas_object_event_callback_add(box, EVAS_CALLBACK_SHOW, on_show, layout);
    evas_object_event_callback_add(box, EVAS_CALLBACK_HIDE, on_hide, layout);
    evas_object_event_callback_add(box, EVAS_CALLBACK_DEL, on_deleted, layout);
    return box;
}

FreeLayout *FreeLayout::of(const Evas_Object *object)
{
    return static_cast<FreeLayout *>(evas_object_data_get(object, LAYOUT_KEY));
}

void FreeLayout::append(Evas_Object *item, int width, int height)
{
    Placement &placement = placement_of(item);
    placement.width = std::max(width, 0);
    placement.height = std::max(height, 0);
    WidgetManager::get().outlive_container(item);
    evas_object_event_callback_del(item, EVAS_CALLBACK_RESIZE, on_item_resized);
    evas_object_event_callback_add(item, EVAS_CALLBACK_RESIZE, on_item_resized, nullptr);
    elm_box_pack_end(box_, item);
    if (evas_object_visible_get(box_) && !in_popup_)
        evas_object_show(item);
}

void FreeLayout::place(Evas_Object *item, const Eina_Rectangle &room)
{
    const Placement &placement = placement_of(item);
    const int width = extent(placement.horizontal, placement.width, room.w, placement.min_width,
                             placement.max_width);
    const int height = extent(placement.vertical, placement.height, room.h, placement.min_height,
                              placement.max_height);
    int align = placement.align ? placement.align : placement_of(box_).align;
    if (!align)
        align = ELM_VELT_ALIGN_CENTER;
    int column = (align - 1) % 3;
    if (elm_object_mirrored_get(box_))
        column = 2 - column;
    placing_ = true;
    evas_object_geometry_set(item, room.x + offset(column, room.w, width),
                             room.y + offset((align - 1) / 3, room.h, height), width, height);
    placing_ = false;
}

void FreeLayout::place_now()
{
    elm_box_recalculate(box_);
}

void FreeLayout::place_later()
{
    evas_object_smart_changed(box_);
}

void FreeLayout::set_items_visible(bool visible)
{
    Eina_List *items = elm_box_children_get(box_);
    void *item = nullptr;
    EINA_LIST_FREE(items, item)
    {
        if (visible)
            evas_object_show(static_cast<Evas_Object *>(item));
        else
            evas_object_hide(static_cast<Evas_Object *>(item));
    }
}

void FreeLayout::on_place(Evas_Object *evas_box, Evas_Object_Box_Data *items, void *data)
{
    auto *self = static_cast<FreeLayout *>(data);
    Eina_Rectangle room;
    evas_object_geometry_get(evas_box, &room.x, &room.y, &room.w, &room.h);
    for (const Eina_List *node = items->children; node; node = eina_list_next(node))
        self->place(static_cast<Evas_Object_Box_Option *>(eina_list_data_get(node))->obj, room);
}

void FreeLayout::on_show(void *data, Evas *, Evas_Object *, void *)
{
    auto *self = static_cast<FreeLayout *>(data);
    if (!self->in_popup_)
        self->set_items_visible(true);
}

void FreeLayout::on_hide(void *data, Evas *, Evas_Object *, void *)
{
    auto *self = static_cast<FreeLayout *>(data);
    if (!self->in_popup_)
        self->set_items_visible(false);
}

void FreeLayout::on_deleted(void *data, Evas *, Evas_Object *object, void *)
{
    auto *self = static_cast<FreeLayout *>(data);
    evas_object_data_del(object, LAYOUT_KEY);
    elm_box_layout_set(object, nullptr, nullptr, nullptr);
    delete self;
}

void FreeLayout::on_item_resized(void *, Evas *, Evas_Object *item, void *)
{
    // A size that the layout did not give is the owner's wish and becomes the item's fixed size.
    const FreeLayout *layout = of(elm_object_parent_widget_get(item));
    if (!layout || layout->placing_)
        return;
    Placement &placement = placement_of(item);
    evas_object_geometry_get(item, nullptr, nullptr, &placement.width, &placement.height);
}

} // namespace platform
