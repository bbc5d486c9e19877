#include "stage.h"

#include <cstdlib>

#include "widget_extension.h"

namespace {

constexpr double RECHECK_SECONDS = 0.01;

Eina_Bool look_again(void *)
{
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool raise_flag(void *flag)
{
    *static_cast<bool *>(flag) = true;
    return ECORE_CALLBACK_RENEW;
}

void nothing(void *) {}

Eina_Bool on_idle(void *flag)
{
    *static_cast<bool *>(flag) = true;
    // Something to do, or the main loop would now wait for the next tick.
    ecore_job_add(nothing, nullptr);
    return ECORE_CALLBACK_CANCEL;
}

} // namespace

void Stage::open_house()
{
    setenv("OSTREL_DEMO_RESOURCE_DIR", BUILT_RESOURCE_DIR, 0);
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
    setenv("ELM_ENGINE", "buffer", 1);
    // With a thread that draws, a window that goes while the machine is busy goes too early: the
    // toolkit does not wait long for that thread, and crashes.
    setenv("ECORE_EVAS_FORCE_SYNC_RENDER", "1", 1);
    efreet_cache_disable();
    elm_init(0, nullptr);
    elm_app_base_scale_set(2.0);
    elm_config_preferred_engine_set("buffer");
}

void Stage::close_house()
{
    elm_shutdown();
}

Stage::Stage(int width, int height)
    : panel_(elm_win_add(nullptr, "panel", ELM_WIN_BASIC)),
      window_(elm_win_add(panel_, "stage", ELM_WIN_INLINED_IMAGE)), width_(width), height_(height)
{
    evas_object_resize(panel_, width, height);
    Evas_Object *picture = elm_win_inlined_image_object_get(window_);
    evas_object_resize(picture, width, height);
    evas_object_render_op_set(picture, EVAS_RENDER_COPY);
    evas_object_show(picture);
    elm_win_alpha_set(panel_, EINA_TRUE);
    elm_win_alpha_set(window_, EINA_TRUE);
    evas_object_resize(window_, width, height);
    evas_object_show(panel_);
    evas_object_show(window_);
    ecore_evas_focus_set(ecore_evas_ecore_evas_get(canvas()), EINA_TRUE);
    evas_event_feed_mouse_in(canvas(), 0, nullptr);
    elm_velt_manager_init(window_);
    settle();
}

Stage::~Stage()
{
    delete_window();
    elm_velt_manager_fini();
    evas_object_del(panel_);
    elm_config_mirrored_set(EINA_FALSE);
    work_off();
}

void Stage::delete_window()
{
    if (window_)
        evas_object_del(window_);
    window_ = nullptr;
}

bool Stage::until(const std::function<bool()> &condition, double seconds)
{
    bool late = false;
    Ecore_Timer *deadline = ecore_timer_add(seconds, raise_flag, &late);
    Ecore_Timer *ticks = ecore_timer_add(RECHECK_SECONDS, look_again, nullptr);
    bool holds = condition();
    while (!holds && !late) {
        ecore_main_loop_iterate_may_block(1);
        holds = condition();
    }
    ecore_timer_del(ticks);
    ecore_timer_del(deadline);
    return holds;
}

void Stage::pass(double seconds)
{
    until([] { return false; }, seconds);
}

void Stage::work_off(const std::function<void()> &after_each_round)
{
    // Elementary works off its lists of things to do in jobs and idlers that make new ones.
    for (int round = 0; round < 12; ++round) {
        bool done = false;
        ecore_idler_add(on_idle, &done);
        until([&done] { return done; });
        after_each_round();
    }
}

void Stage::settle()
{
    work_off([this] { draw(); });
}

void Stage::press_key(const char *name)
{
    evas_event_feed_key_down(canvas(), name, name, nullptr, nullptr, ++time_, nullptr);
    evas_event_feed_key_up(canvas(), name, name, nullptr, nullptr, ++time_, nullptr);
    settle();
}

void Stage::move_pointer(int x, int y)
{
    evas_event_feed_mouse_move(canvas(), x, y, ++time_, nullptr);
    settle();
}

void Stage::click(int x, int y)
{
    move_pointer(x, y);
    evas_event_feed_mouse_down(canvas(), 1, EVAS_BUTTON_NONE, ++time_, nullptr);
    evas_event_feed_mouse_up(canvas(), 1, EVAS_BUTTON_NONE, ++time_, nullptr);
    settle();
}

void Stage::click(const Evas_Object *object)
{
    const Eina_Rectangle place = geometry(object);
    click(place.x + place.w / 2, place.y + place.h / 2);
}

const std::uint32_t *Stage::draw()
{
    if (window_)
        ecore_evas_manual_render(ecore_evas_ecore_evas_get(canvas()));
    Ecore_Evas *surface = ecore_evas_ecore_evas_get(panel_canvas());
    ecore_evas_manual_render(surface);
    return static_cast<const std::uint32_t *>(ecore_evas_buffer_pixels_get(surface));
}

std::uint32_t Stage::pixel(int x, int y)
{
    return draw()[y * width_ + x];
}

bool Stage::save_picture(const std::string &path)
{
    const std::uint32_t *pixels = draw();
    const std::vector<std::uint32_t> copy(pixels, pixels + width_ * height_);
    Evas_Object *image = evas_object_image_add(canvas());
    evas_object_image_size_set(image, width_, height_);
    evas_object_image_data_copy_set(image, const_cast<std::uint32_t *>(copy.data()));
    const bool saved = evas_object_image_save(image, path.c_str(), nullptr, nullptr);
    evas_object_del(image);
    return saved;
}

Eina_Rectangle Stage::geometry(const Evas_Object *object)
{
    Eina_Rectangle place;
    evas_object_geometry_get(object, &place.x, &place.y, &place.w, &place.h);
    return place;
}
