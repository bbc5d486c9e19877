// The suppressions name functions of EFL that are not the innermost ones, and EFL has no frame
// pointers, so the leak checker has to walk the stack the slow way.
extern "C" const char *__asan_default_options();

const char *__asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
