// Keeps the leak checker from GLib's table of quarks. It is made by the library's own initialiser,
// and each time that it grows the old one is given up, because others may be reading in it. The
// leak checker can be told so by name, but then has to walk the stack of each allocation the slow
// way, GLib having no frame pointers: that was half of what these tests compute. These functions
// stand before the library's own, and are in the build with the address sanitizer only.

#include <dlfcn.h>
#include <glib.h>
#include <sanitizer/lsan_interface.h>

#define NOT_LEAKED(type, name)                                                                     \
    type name(const char *text)                                                                    \
    {                                                                                              \
        static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name));       \
        const __lsan::ScopedDisabler disabler;                                                     \
        return real(text);                                                                         \
    }

extern "C" {

NOT_LEAKED(GQuark, g_quark_from_string)
NOT_LEAKED(GQuark, g_quark_from_static_string)
NOT_LEAKED(const char *, g_intern_string)
NOT_LEAKED(const char *, g_intern_static_string)

} // extern "C"

namespace {

/** Before the libraries' initialisers. */
void look_away()
{
    __lsan_disable();
}

__attribute__((section(".preinit_array"), used)) void (*const FIRST_OF_ALL)() = look_away;

/** After them: the program's own come last. */
__attribute__((constructor)) void look_again()
{
    __lsan_enable();
}

} // namespace
