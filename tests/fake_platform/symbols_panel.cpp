// Remote-control keys, virtual keys and the display rotator.

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "platform.h"
#include "set_keys.h"

namespace {

using fake::Raw;

fake::Platform &the_fake()
{
    return fake::platform();
}

} // namespace

void KeyRouter_Initialize(struct wl_display *display, struct wl_registry *registry,
                          struct wl_seat *seat, unsigned int id)
{
    the_fake().call("KeyRouter_Initialize", static_cast<const void *>(display),
                    static_cast<const void *>(registry), static_cast<const void *>(seat), id);
    the_fake().hold("key router");
}

void KeyRouter_Reset_KeyList(KeyRouter_KeyList *list)
{
    the_fake().call("KeyRouter_Reset_KeyList");
    list->count = 0;
    the_fake().keys.reset_lists.insert(list);
}

void KeyRouter_Add_All_Key(int mode, KeyRouter_KeyList *list)
{
    the_fake().call("KeyRouter_Add_All_Key", mode);
    EXPECT_EQ(the_fake().keys.reset_lists.count(list), 1U) << "a key list that was never reset";
    list->count = 0;
    const auto add = [&](const char *name) {
        KeyRouter_Key &key = list->keys[list->count++];
        std::strncpy(key.name, name, sizeof key.name - 1);
        key.name[sizeof key.name - 1] = '\0';
        key.mode = mode;
    };
    for (const char *name : set_keys::PASSED_ON)
        add(name);
    for (const set_keys::Key &key : set_keys::USED)
        add(key.name);
    add("Up"); // a key of the set that is on neither list
}

bool KeyRouter_Remove_Key(const char *name, int mode, KeyRouter_KeyList *list)
{
    the_fake().call("KeyRouter_Remove_Key", name, mode);
    KeyRouter_Key *const end = list->keys + list->count;
    KeyRouter_Key *const found = std::find_if(list->keys, end, [=](const KeyRouter_Key &key) {
        return std::strcmp(key.name, name) == 0 && key.mode == mode;
    });
    if (the_fake().script.failure("KeyRouter_Remove_Key") || found == end)
        return false;
    std::copy(found + 1, end, found);
    --list->count;
    return true;
}

bool KeyRouter_Set_KeyList(struct wl_surface *surface, const KeyRouter_KeyList *list)
{
    the_fake().call("KeyRouter_Set_KeyList", static_cast<const void *>(surface));
    if (the_fake().script.failure("KeyRouter_Set_KeyList"))
        return false;
    the_fake().keys.grabbed.clear();
    for (int i = 0; i < list->count; ++i)
        the_fake().keys.grabbed[list->keys[i].name] = list->keys[i].mode;
    return true;
}

bool KeyRouter_UnSet_KeyList(struct wl_surface *surface, const KeyRouter_KeyList *list)
{
    the_fake().call("KeyRouter_UnSet_KeyList", static_cast<const void *>(surface));
    for (int i = 0; i < list->count; ++i)
        the_fake().keys.grabbed.erase(list->keys[i].name);
    return !the_fake().script.failure("KeyRouter_UnSet_KeyList").has_value();
}

void KeyRouter_Finalize(void)
{
    the_fake().call("KeyRouter_Finalize");
    the_fake().release("key router");
}

int VirtualKey_Initialize(int flags)
{
    the_fake().call("VirtualKey_Initialize", flags);
    the_fake().hold("virtual keys");
    return the_fake().script.result("VirtualKey_Initialize");
}

int VirtualKey_Send_KeyCode(int key_code, int action)
{
    return the_fake().told("VirtualKey_Send_KeyCode", key_code, action);
}

void VirtualKey_Finalize(void)
{
    the_fake().call("VirtualKey_Finalize");
    the_fake().release("virtual keys");
}

int display_rotator_get_status(display_rotator_status_t *status)
{
    the_fake().query("display_rotator_get_status");
    const fake::Rotator &rotator = the_fake().rotator;
    const int failed = the_fake().script.result(
        "display_rotator_get_status", rotator.supported ? 0 : DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED);
    if (failed == 0) {
        status->status = rotator.status;
        status->angle = 0;
    }
    return failed;
}

int display_rotator_add_cb(display_rotator_cb callback, void *user_data)
{
    the_fake().call("display_rotator_add_cb", static_cast<const void *>(user_data));
    fake::Rotator &rotator = the_fake().rotator;
    const int failed = the_fake().script.result(
        "display_rotator_add_cb", rotator.supported ? 0 : DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED);
    if (failed == 0) {
        rotator.callback = callback;
        rotator.data = user_data;
    }
    return failed;
}

int display_rotator_remove_cb(display_rotator_cb callback)
{
    const int failed = the_fake().told("display_rotator_remove_cb");
    if (the_fake().rotator.callback != callback)
        return DISPLAY_ROTATOR_ERROR;
    if (failed == 0)
        the_fake().rotator.callback = nullptr;
    return failed;
}
