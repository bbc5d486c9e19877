#include "window/input_feed.h"

#include <Ecore_Input.h>
#include <Ecore_Input_Evas.h>
#include <Efl_Canvas.h>

namespace platform {

namespace {

const Efl_Event_Description *const EVENTS_OF_THE_POINTER[] = {
    EFL_EVENT_POINTER_IN, EFL_EVENT_POINTER_OUT,  EFL_EVENT_POINTER_DOWN,
    EFL_EVENT_POINTER_UP, EFL_EVENT_POINTER_MOVE, EFL_EVENT_POINTER_WHEEL};

Evas_Object *transparent_rectangle(Evas *canvas)
{
    Evas_Object *rectangle = evas_object_rectangle_add(canvas);
    evas_object_color_set(rectangle, 0, 0, 0, 0);
    evas_object_layer_set(rectangle, EVAS_LAYER_MAX);
    evas_object_show(rectangle);
    return rectangle;
}

} // namespace

InputFeed::InputFeed(Evas *from, Evas_Object *window)
    : to_(evas_object_evas_get(window)), observer_(transparent_rectangle(to_)),
      catcher_(transparent_rectangle(from)),
      // Before the toolkit moves the canvas's pointer to where it has entered.
      enter_(ecore_event_handler_prepend(ECORE_EVENT_MOUSE_IN, on_enter, this)),
      key_up_(ecore_event_handler_add(ECORE_EVENT_KEY_UP, on_key_up, this)),
      key_down_(ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key_down, this))
{
    evas_object_event_callback_add(catcher_.get(), EVAS_CALLBACK_MOUSE_MOVE, on_move, this);
    evas_object_event_callback_add(catcher_.get(), EVAS_CALLBACK_MOUSE_DOWN, on_down, this);
    evas_object_event_callback_add(catcher_.get(), EVAS_CALLBACK_MOUSE_UP, on_up, this);
    evas_object_event_callback_add(catcher_.get(), EVAS_CALLBACK_MOUSE_OUT, on_out, this);
    evas_object_event_callback_add(catcher_.get(), EVAS_CALLBACK_MOUSE_WHEEL, on_wheel, this);
    evas_object_repeat_events_set(observer_.get(), EINA_TRUE);
    for (const Efl_Event_Description *event : EVENTS_OF_THE_POINTER)
        efl_event_callback_forwarder_add(observer_.get(), event, window);
}

void InputFeed::turn(Size panel, int degrees)
{
    turn_ = Orientation::clockwise(degrees);
    content_ = turn_.of(panel);
    evas_object_geometry_set(catcher_.get(), 0, 0, panel.width, panel.height);
    evas_object_geometry_set(observer_.get(), 0, 0, content_.width, content_.height);
}

void InputFeed::leave()
{
    if (away_)
        return;
    away_ = true;
    evas_event_feed_mouse_out(to_, static_cast<unsigned int>(ecore_loop_time_get() * 1000.0),
                              nullptr);
}

void InputFeed::come_back(unsigned int timestamp)
{
    if (!away_)
        return;
    away_ = false;
    evas_event_feed_mouse_in(to_, timestamp, nullptr);
}

void InputFeed::move_to(int x, int y, unsigned int timestamp)
{
    last_ = {x, y};
    const Point point = turn_.place(last_, content_);
    evas_event_feed_mouse_move(to_, point.x, point.y, timestamp, nullptr);
}

void InputFeed::on_move(void *data, Evas *, Evas_Object *, void *info)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *event = static_cast<const Evas_Event_Mouse_Move *>(info);
    const int x = event->cur.canvas.x;
    const int y = event->cur.canvas.y;
    // The canvas moves the pointer to where it is when its objects change.
    if (feed->away_ && x == feed->last_.x && y == feed->last_.y)
        return;
    feed->come_back(event->timestamp);
    feed->move_to(x, y, event->timestamp);
}

void InputFeed::on_down(void *data, Evas *, Evas_Object *, void *info)
{
    auto *feed = static_cast<InputFeed *>(data);
    const auto *event = static_cast<const Evas_Event_Mouse_Down *>(info);
    feed->come_back(event->timestamp);
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

void InputFeed::on_out(void *data, Evas *, Evas_Object *, void * /*info*/)
{
    static_cast<InputFeed *>(data)->leave();
}

void InputFeed::on_wheel(void *data, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Wheel *>(info);
    evas_event_feed_mouse_wheel(static_cast<InputFeed *>(data)->to_, event->direction, event->z,
                                event->timestamp, nullptr);
}

Eina_Bool InputFeed::on_enter(void *data, int /*type*/, void *event)
{
    const auto *place = static_cast<const Ecore_Event_Mouse_IO *>(event);
    static_cast<InputFeed *>(data)->last_ = {place->x, place->y};
    return ECORE_CALLBACK_PASS_ON;
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
