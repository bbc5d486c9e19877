// EFL is built without frame pointers: only the slow way of walking the stack finds the functions
// that the suppressions name.
extern "C" const char *__asan_default_options();

const char *__asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
