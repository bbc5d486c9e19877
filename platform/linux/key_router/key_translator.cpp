#include "key_router/key_translator.h"

#include <memory>
#include <string>

#include <Ecore_Input.h>

#include "log/platform_log.h"
#include "player_rules/key_names.h"
#include "settings/settings.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "key_router";

/**
 * Of an injected key. The toolkit has windows in memory, the options for instance, under number 0,
 * and would give them such a key by itself, for a moment also after they are gone.
 */
constexpr auto NO_WINDOW = static_cast<Ecore_Window>(-1);

/** An event that carries its own name, and tells the translator to leave it alone. */
struct InjectedKey {
    Ecore_Event_Key event = {};
    std::string name;
};

void free_injected(void *data, void * /*event*/)
{
    delete static_cast<InjectedKey *>(data);
}

Eina_Bool rename_key(void * /*data*/, int /*type*/, void *event)
{
    auto *key = static_cast<Ecore_Event_Key *>(event);
    // An injected key has no keyboard behind it.
    if (!key->dev && key->event_window == NO_WINDOW)
        return ECORE_CALLBACK_PASS_ON;
    const char *name = translate_key(key->keyname, key->key, Settings::get().keys);
    if (!name)
        return ECORE_CALLBACK_PASS_ON;
    // The names' memory belongs to the event as a whole, so they can be exchanged freely. A key of
    // the remote control types no text.
    key->keyname = name;
    key->key = name;
    key->string = nullptr;
    key->compose = nullptr;
    return ECORE_CALLBACK_PASS_ON;
}

void add_event(int type, const std::string &name)
{
    auto injected = std::make_unique<InjectedKey>();
    injected->name = name;
    injected->event.keyname = injected->name.c_str();
    injected->event.key = injected->name.c_str();
    injected->event.timestamp = static_cast<unsigned int>(ecore_time_get() * 1000.0);
    injected->event.window = injected->event.root_window = injected->event.event_window = NO_WINDOW;
    Ecore_Event_Key *event = &injected->event;
    if (ecore_event_add(type, event, free_injected, injected.get()))
        static_cast<void>(injected.release()); // the event's own from now on
    else
        PLATFORM_LOGW(SERVICE, "the key %s could not be sent", name.c_str());
}

} // namespace

// In front of every handler that exists, the toolkit's own among them, so that widgets and the
// application see the same names.
KeyTranslator::KeyTranslator()
    : down_(ecore_event_handler_prepend(ECORE_EVENT_KEY_DOWN, rename_key, nullptr)),
      up_(ecore_event_handler_prepend(ECORE_EVENT_KEY_UP, rename_key, nullptr))
{
    // A slip in tv.conf would otherwise show as a key that does nothing.
    for (const auto &[typed, name] : Settings::get().keys) {
        if (!is_tv_key_name(name))
            PLATFORM_LOGW(SERVICE, "[keys] %s in tv.conf: the set has no key \"%s\"", typed.c_str(),
                          name.c_str());
    }
}

void inject_key(const std::string &tv_key_name)
{
    PLATFORM_LOGI(SERVICE, "key %s pressed from outside", tv_key_name.c_str());
    add_event(ECORE_EVENT_KEY_DOWN, tv_key_name);
    add_event(ECORE_EVENT_KEY_UP, tv_key_name);
}

} // namespace platform
