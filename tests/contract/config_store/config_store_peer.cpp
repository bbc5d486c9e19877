// Another process of the set that uses the store.
//   config_store_peer set KEY VALUE       writes once
//   config_store_peer count KEY LAST      writes 1 .. LAST one after the other
//   config_store_peer keep KEY FIRST      writes FIRST, FIRST + 1 and so on, and prints each one
//   written config_store_peer watch KEY           prints "ready", then each new value, until it is
//   -1
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <Ecore.h>

#include "config_store.h"

namespace {

void on_change(keynode_t *node, void *)
{
    int value = 0;
    if (vconf_get_int(vconf_keynode_get_name(node), &value) != 0)
        return;
    std::printf("%d\n", value);
    std::fflush(stdout);
    if (value == -1)
        ecore_main_loop_quit();
}

int watch(const char *key)
{
    ecore_init();
    if (vconf_notify_key_changed(key, on_change, nullptr) != 0)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    ecore_main_loop_begin();
    const int result = vconf_ignore_key_changed(key, on_change);
    ecore_shutdown();
    return result == 0 ? 0 : 1;
}

int keep(const char *key, int first)
{
    for (int value = first; vconf_set_int(key, value) == 0; ++value) {
        std::printf("%d\n", value);
        std::fflush(stdout);
    }
    return 1;
}

int count(const char *key, int last)
{
    for (int value = 1; value <= last; ++value) {
        if (vconf_set_int(key, value) != 0)
            return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "set") == 0)
        return vconf_set_int(argv[2], std::atoi(argv[3])) == 0 ? 0 : 1;
    if (argc == 4 && std::strcmp(argv[1], "count") == 0)
        return count(argv[2], std::atoi(argv[3]));
    if (argc == 4 && std::strcmp(argv[1], "keep") == 0)
        return keep(argv[2], std::atoi(argv[3]));
    if (argc == 3 && std::strcmp(argv[1], "watch") == 0)
        return watch(argv[2]);
    return 2;
}
