// Ecore: main loop, events, and the few Wayland calls.

#include <cstring>

#include <Ecore.h>
#include <Ecore_Evas.h>
#include <Ecore_Input.h>

#include "efl_on_tv.h"
#include "platform.h"

int ECORE_EVENT_KEY_DOWN = fake::MainLoop::EVENT_KEY_DOWN;
int ECORE_EVENT_DEVICE_ADD = fake::MainLoop::EVENT_DEVICE_ADD;

namespace {

using fake::Raw;

fake::Platform &the_fake()
{
    return fake::platform();
}

// A record of the player's event pipe reads as its numbers, without the words that are zero.
Raw readable(const void *buffer, unsigned int size)
{
    int32_t words[6] = {};
    if (size != sizeof words)
        return {std::to_string(size) + " bytes"};
    std::memcpy(words, buffer, sizeof words);
    std::string text = std::to_string(words[0]) + ", " + std::to_string(words[1]);
    if (words[2] != 0 || words[3] != 0)
        text += ", " + std::to_string(words[2]) + ", " + std::to_string(words[3]);
    if (words[4] != 0 || words[5] != 0)
        text += ", " + std::to_string(words[4]) + " bytes";
    return {text};
}

// What belongs to the compositor and to Ecore: never released by the player.
template <typename T> T *borrowed(const char *kind)
{
    static std::map<std::string, char> places;
    char *place = &places[kind];
    the_fake().registry.lend(place, kind);
    return reinterpret_cast<T *>(place);
}

struct Globals {
    Ecore_Wl2_Global globals[3];
    size_t next;
    size_t count;
};

} // namespace

double ecore_time_unix_get(void)
{
    the_fake().query("ecore_time_unix_get");
    return 1000.0 + the_fake().loop.now();
}

Ecore_Timer *ecore_timer_add(double in, Ecore_Task_Cb func, const void *data)
{
    the_fake().call("ecore_timer_add", in, data);
    if (the_fake().script.failure("ecore_timer_add"))
        return nullptr;
    return the_fake().loop.add_timer(in, func, data);
}

void *ecore_timer_del(Ecore_Timer *timer)
{
    the_fake().call("ecore_timer_del", static_cast<const void *>(timer));
    return the_fake().loop.remove_timer(timer);
}

Ecore_Idler *ecore_idler_add(Ecore_Task_Cb func, const void *data)
{
    the_fake().call("ecore_idler_add", data);
    return the_fake().loop.add_idler(func, data);
}

void *ecore_idler_del(Ecore_Idler *idler)
{
    the_fake().call("ecore_idler_del", static_cast<const void *>(idler));
    return the_fake().loop.remove_idler(idler);
}

Ecore_Pipe *ecore_pipe_add(Ecore_Pipe_Cb handler, const void *data)
{
    the_fake().call("ecore_pipe_add", data);
    if (the_fake().script.failure("ecore_pipe_add"))
        return nullptr;
    return the_fake().loop.add_pipe(handler, data);
}

void *ecore_pipe_del(Ecore_Pipe *p)
{
    the_fake().call("ecore_pipe_del", static_cast<const void *>(p));
    return the_fake().loop.remove_pipe(p);
}

Eina_Bool ecore_pipe_write(Ecore_Pipe *p, const void *buffer, unsigned int nbytes)
{
    the_fake().call("ecore_pipe_write", readable(buffer, nbytes));
    if (the_fake().script.failure("ecore_pipe_write"))
        return EINA_FALSE;
    return the_fake().loop.write_pipe(p, buffer, nbytes) ? EINA_TRUE : EINA_FALSE;
}

Ecore_Event_Handler *ecore_event_handler_add(int type, Ecore_Event_Handler_Cb func,
                                             const void *data)
{
    const char *name = type == ECORE_EVENT_KEY_DOWN     ? "KEY_DOWN"
                       : type == ECORE_EVENT_DEVICE_ADD ? "DEVICE_ADD"
                                                        : "another event";
    the_fake().call("ecore_event_handler_add", Raw{name}, data);
    if (the_fake().script.failure("ecore_event_handler_add"))
        return nullptr;
    return the_fake().loop.add_handler(type, func, data);
}

void *ecore_event_handler_del(Ecore_Event_Handler *event_handler)
{
    the_fake().call("ecore_event_handler_del", static_cast<const void *>(event_handler));
    return the_fake().loop.remove_handler(event_handler);
}

Ecore_Evas *ecore_evas_ecore_evas_get(const Evas *e)
{
    the_fake().query("ecore_evas_ecore_evas_get", static_cast<const void *>(e));
    return e == nullptr ? nullptr : borrowed<Ecore_Evas>("ecore-evas");
}

Ecore_Wl2_Window *ecore_evas_wayland2_window_get(const Ecore_Evas *ee)
{
    the_fake().query("ecore_evas_wayland2_window_get", static_cast<const void *>(ee));
    return ee == nullptr ? nullptr : borrowed<Ecore_Wl2_Window>("wayland-window");
}

struct wl_surface *ecore_wl2_window_surface_get(Ecore_Wl2_Window *window)
{
    the_fake().query("ecore_wl2_window_surface_get", static_cast<const void *>(window));
    return window == nullptr ? nullptr : borrowed<wl_surface>("surface");
}

Ecore_Wl2_Display *ecore_wl2_connected_display_get(const char *name)
{
    the_fake().query("ecore_wl2_connected_display_get", name);
    return the_fake().keys.display_connected ? borrowed<Ecore_Wl2_Display>("ecore-display")
                                             : nullptr;
}

struct wl_display *ecore_wl2_display_get(Ecore_Wl2_Display *display)
{
    the_fake().query("ecore_wl2_display_get", static_cast<const void *>(display));
    return borrowed<wl_display>("display");
}

Eina_Iterator *ecore_wl2_display_globals_get(Ecore_Wl2_Display *display)
{
    the_fake().query("ecore_wl2_display_globals_get", static_cast<const void *>(display));
    if (the_fake().script.failure("ecore_wl2_display_globals_get"))
        return nullptr;
    static Globals iterator;
    const fake::Keys &keys = the_fake().keys;
    iterator = {};
    iterator.globals[iterator.count++] = {"wl_compositor", 1, 4, display};
    if (keys.router_present)
        iterator.globals[iterator.count++] = {"tizen_keyrouter", keys.router_global, 2, display};
    iterator.globals[iterator.count++] = {"wl_shm", 9, 1, display};
    the_fake().registry.add(&iterator, "iterator");
    return reinterpret_cast<Eina_Iterator *>(&iterator);
}

struct wl_registry *ecore_wl2_display_registry_get(Ecore_Wl2_Display *display)
{
    the_fake().query("ecore_wl2_display_registry_get", static_cast<const void *>(display));
    return borrowed<wl_registry>("registry");
}

Ecore_Wl2_Input *ecore_wl2_input_default_input_get(const Ecore_Wl2_Display *display)
{
    the_fake().query("ecore_wl2_input_default_input_get", static_cast<const void *>(display));
    return borrowed<Ecore_Wl2_Input>("input");
}

struct wl_seat *ecore_wl2_input_seat_get(Ecore_Wl2_Input *input)
{
    the_fake().query("ecore_wl2_input_seat_get", static_cast<const void *>(input));
    return borrowed<wl_seat>("seat");
}

void ecore_wl2_sync(void)
{
    the_fake().call("ecore_wl2_sync");
}

Eina_Bool eina_iterator_next(Eina_Iterator *iterator, void **data)
{
    if (!the_fake().registry.check("eina_iterator_next", iterator))
        return EINA_FALSE;
    auto *globals = reinterpret_cast<Globals *>(iterator);
    if (globals->next == globals->count)
        return EINA_FALSE;
    *data = &globals->globals[globals->next++];
    return EINA_TRUE;
}

void eina_iterator_free(Eina_Iterator *iterator)
{
    the_fake().query("eina_iterator_free");
    if (iterator != nullptr)
        the_fake().registry.kill("eina_iterator_free", iterator);
}
