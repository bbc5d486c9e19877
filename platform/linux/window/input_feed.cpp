#include "window/input_feed.h"

#include <Ecore_Input.h>
#include <Ecore_Input_Evas.h>

namespace platform {

InputFeed::InputFeed(Evas *from, Evas *to)
    : to_(to), catcher_(evas_object_rectangle_add(from)),
      key_down_(ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key_down, this)),
      key_up_(ecore_event_handler_add(ECORE_EVENT_KEY_UP, on_key_up, this))
{
    evas_object_color_set(catcher_, 0, 0, 0, 0);
    evas_object_layer_set(catcher_, EVAS_LAYER_MAX);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_MOVE, on_move, this);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_DOWN, on_down, this);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_UP, on_up, this);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_IN, on_in, this);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_OUT, on_out, this);
    evas_object_event_callback_add(catcher_, EVAS_CALLBACK_MOUSE_WHEEL, on_wheel, this);
    evas_object_show(catcher_);
}

InputFeed::~InputFeed()
{
    ecore_event_handler_del(key_down_);
    ecore_event_handler_del(key_up_);
    evas_object_del(catcher_);
}

void InputFeed::turn(Size panel, int degrees)
{
    panel_ = panel;
    degrees_ = degrees;
    evas_object_geometry_set(catcher_, 0, 0, panel.width, panel.height);
}

void InputFeed::move_to(int x, int y, unsigned int timestamp)
{
    const Point point = turned_point({x, y}, panel_, degrees_);
    evas_event_feed_mouse_move(to_, point.x, point.y, timestamp, nullptr);
}

void InputFeed::on_move(void *data, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Move *>(info);
    static_cast<InputFeed *>(data)->move_to(event->cur.canvas.x, event->cur.canvas.y,
                                            event->timestamp);
}

void InputFeed::on_down(void *data, Evas *, Evas_Object *, void *info)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *event = static_cast<const Evas_Event_Mouse_Down *>(info);
    // The content may have been turned under a pointer that stood still.
    feed->move_to(event->canvas.x, event->canvas.y, event->timestamp);
    evas_event_feed_mouse_down(feed->to_, event->button, event->flags, event->timestamp, nullptr);
}

void InputFeed::on_up(void *data, Evas *, Evas_Object *, void *info)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *event = static_cast<const Evas_Event_Mouse_Up *>(info);
    feed->move_to(event->canvas.x, event->canvas.y, event->timestamp);
    evas_event_feed_mouse_up(feed->to_, event->button, event->flags, event->timestamp, nullptr);
}

void InputFeed::on_in(void *data, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_In *>(info);
    evas_event_feed_mouse_in(static_cast<InputFeed *>(data)->to_, event->timestamp, nullptr);
}

void InputFeed::on_out(void *data, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Out *>(info);
    evas_event_feed_mouse_out(static_cast<InputFeed *>(data)->to_, event->timestamp, nullptr);
}

void InputFeed::on_wheel(void *data, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Wheel *>(info);
    evas_event_feed_mouse_wheel(static_cast<InputFeed *>(data)->to_, event->direction, event->z,
                                event->timestamp, nullptr);
}

Eina_Bool InputFeed::on_key_down(void *data, int /*type*/, void *event)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *key = static_cast<const Ecore_Event_Key *>(event);
    ecore_event_evas_modifier_lock_update(feed->to_, key->modifiers);
    evas_event_feed_key_down(feed->to_, key->keyname, key->key, key->string, key->compose,
                             key->timestamp, nullptr);
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool InputFeed::on_key_up(void *data, int /*type*/, void *event)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *key = static_cast<const Ecore_Event_Key *>(event);
    ecore_event_evas_modifier_lock_update(feed->to_, key->modifiers);
    evas_event_feed_key_up(feed->to_, key->keyname, key->key, key->string, key->compose,
                           key->timestamp, nullptr);
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace platform
