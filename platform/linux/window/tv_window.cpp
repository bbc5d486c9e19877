#include "window/tv_window.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include <wayland-client.h>

#include "app_framework.h"
#include "base/orientation.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "window";

// Compositors enlarge by whole numbers or halves and quarters; the window's size is rounded.
constexpr double SCALE_TOLERANCE = 0.01;
constexpr double LARGEST_SCALE = 4.0;

/**
 * How many pixels of the output make one unit of a window that covers it. Several outputs beside
 * each other, or an output that is mounted upright, do not tell: the window is taken as it is.
 */
double pixels_per_unit(Size output, Size window)
{
    const double across = static_cast<double>(output.width) / window.width;
    const double down = static_cast<double>(output.height) / window.height;
    const bool enlarged = across > 1.0 + SCALE_TOLERANCE && across <= LARGEST_SCALE &&
                          std::abs(across - down) < SCALE_TOLERANCE;
    return enlarged ? across : 1.0;
}

/**
 * How long the window stays off the screen with nothing to see in it. Only a window on the screen
 * gets keys and the pointer, by which staff choose something else.
 */
constexpr double LONGEST_UNSEEN_S = 5.0;
/**
 * How often it is looked at until then, and for how long at most it waits with something to see in
 * it: what lies over a film may be there before the film.
 */
constexpr double LOOK_S = 0.1;

/**
 * How long the window stays on the screen when the application has hidden it, as it does before it
 * ends. Some compositors show what lies beneath only when the window is no more, and black where it
 * has only lost its picture; so the last picture stays until then.
 */
constexpr double TIME_TO_END_S = 1.0;

// What a set's panel has when the compositor names no output.
constexpr Size COMMON_PANEL = {1920, 1080};

bool is_empty(const uint32_t *pixels, ptrdiff_t count)
{
    // All are as the first: this compares at the speed of memory.
    return count <= 0 ||
           (*pixels == 0 && std::memcmp(pixels, pixels + 1, (count - 1) * sizeof *pixels) == 0);
}

/** The smallest rectangle around all that is drawn; empty when all is transparent. */
Rect drawn_part(const uint32_t *pixels, Size size)
{
    const auto row = [&](int y) { return pixels + ptrdiff_t{y} * size.width; };
    int top = 0;
    while (top < size.height && is_empty(row(top), size.width))
        ++top;
    int bottom = size.height;
    while (top < bottom && is_empty(row(bottom - 1), size.width))
        --bottom;
    // Of each row, only what lies outside of those above it is looked at.
    const auto is_set = [](uint32_t pixel) { return pixel != 0; };
    int left = size.width;
    int right = 0;
    for (int y = top; y < bottom; ++y) {
        const uint32_t *begin = row(y);
        const uint32_t *end = begin + size.width;
        if (!is_empty(begin, left))
            left = static_cast<int>(std::find_if(begin, begin + left, is_set) - begin);
        while (right < size.width && !is_empty(begin + right, end - begin - right))
            right = static_cast<int>(std::find_if(begin + right, end, is_set) - begin) + 1;
    }
    return left < right ? Rect{left, top, right - left, bottom - top} : Rect();
}

TvWindow *current_window = nullptr;

template <auto CALL> void on_object(void *data, Evas *, Evas_Object *, void *)
{
    (static_cast<TvWindow *>(data)->*CALL)();
}

template <auto CALL> Eina_Bool on_timer(void *data)
{
    (static_cast<TvWindow *>(data)->*CALL)(); // which may delete the timer
    return ECORE_CALLBACK_RENEW;
}

Ecore_Evas *canvas_of(Evas_Object *window)
{
    return ecore_evas_ecore_evas_get(evas_object_evas_get(window));
}

} // namespace

TvWindow *TvWindow::current()
{
    return current_window;
}

std::unique_ptr<TvWindow> TvWindow::create(const std::string &name, Listener listener)
{
    if (ecore_wl2_init() <= 0) {
        PLATFORM_LOGE(SERVICE, "the toolkit's Wayland part could not start");
        return nullptr;
    }
    ConnectionPtr display(ecore_wl2_display_connect(nullptr));
    if (!display) {
        const char *asked = getenv("WAYLAND_DISPLAY");
        PLATFORM_LOGE(SERVICE, "no Wayland compositor answers (WAYLAND_DISPLAY is %s)",
                      asked ? asked : "not set");
        ecore_wl2_shutdown();
        return nullptr;
    }
    std::unique_ptr<TvWindow> window(new TvWindow(std::move(display), name, std::move(listener)));
    return window->inner_ ? std::move(window) : nullptr;
}

void TvWindow::ConnectionEnd::operator()(Ecore_Wl2_Display *display) const
{
    ecore_wl2_display_disconnect(display);
    ecore_wl2_shutdown();
}

TvWindow::TvWindow(ConnectionPtr display, const std::string &name, Listener listener)
    : display_(std::move(display)), listener_(std::move(listener))
{
    current_window = this;
    // The toolkit knows the outputs' sizes and the seat once it has seen the answers to its binds.
    wl_display *connection = ecore_wl2_display_get(display_.get());
    wayland_roundtrip(connection);
    wl_display_dispatch_pending(connection);
    connection_watch_ =
        std::make_unique<ConnectionWatch>(connection, [this] { listener_.compositor_gone(); });
    make_outer(name);
    if (!outer_)
        return;
    make_inner(name);
    if (!inner_)
        return;
    follow_events();
    fit();
}

TvWindow::~TvWindow()
{
    if (inner_)
        evas_object_del(inner_);
    delete_outer();
    current_window = nullptr;
}

Evas_Object *TvWindow::take()
{
    if (taken_)
        return nullptr;
    taken_ = true;
    return inner_;
}

void TvWindow::make_outer(const std::string &name)
{
    outer_.reset(elm_win_add(nullptr, name.c_str(), ELM_WIN_BASIC));
    if (!outer_) {
        PLATFORM_LOGE(SERVICE, "the window could not be made");
        return;
    }
    outer_canvas_ = canvas_of(outer_.get());
    elm_win_title_set(outer_.get(), name.c_str());
    elm_win_alpha_set(outer_.get(), EINA_TRUE);
    elm_win_borderless_set(outer_.get(), EINA_TRUE);
    elm_win_fullscreen_set(outer_.get(), EINA_TRUE);
    mapping_ = std::make_unique<WindowMapping>(ecore_evas_wayland2_window_get(outer_canvas_));

    Size size;
    ecore_wl2_display_screen_size_get(display_.get(), &size.width, &size.height);
    if (size.width <= 0 || size.height <= 0)
        size = COMMON_PANEL;
    evas_object_resize(outer_.get(), size.width, size.height);
    PanelModel::get().set_size(size.width, size.height);
}

void TvWindow::make_inner(const std::string &name)
{
    inner_ = elm_win_add(outer_.get(), name.c_str(), ELM_WIN_INLINED_IMAGE);
    if (!inner_) {
        PLATFORM_LOGE(SERVICE, "the window's content could not be made");
        return;
    }
    inner_canvas_ = canvas_of(inner_);
    elm_win_alpha_set(inner_, EINA_TRUE);
    image_ = elm_win_inlined_image_object_get(inner_);
    // The image would take the pointer unturned; the input feed does it instead.
    evas_object_pass_events_set(image_, EINA_TRUE);
    // Nothing lies below it, and what is copied needs no empty ground to be laid first.
    evas_object_render_op_set(image_, EVAS_RENDER_COPY);
    // The toolkit takes all of the image for changed when anything in it is. This clips it.
    frame_ = evas_object_rectangle_add(evas_object_evas_get(outer_.get()));
    evas_object_pass_events_set(frame_, EINA_TRUE);
    evas_object_show(image_);
    evas_event_callback_add(
        evas_object_evas_get(inner_), EVAS_CALLBACK_RENDER_POST,
        [](void *data, Evas *, void *) { static_cast<TvWindow *>(data)->content_drawn(); }, this);
    input_ = std::make_unique<InputFeed>(evas_object_evas_get(outer_.get()), inner_);
    pointer_ = std::make_unique<PointerHider>([this] {
        if (input_)
            input_->leave();
    });
}

void TvWindow::follow_events()
{
    evas_object_event_callback_add(inner_, EVAS_CALLBACK_SHOW, on_object<&TvWindow::shown>, this);
    evas_object_event_callback_add(inner_, EVAS_CALLBACK_HIDE, on_object<&TvWindow::hidden>, this);
    evas_object_event_callback_add(inner_, EVAS_CALLBACK_DEL, on_object<&TvWindow::inner_deleted>,
                                   this);
    evas_object_event_callback_add(outer_.get(), EVAS_CALLBACK_RESIZE, on_object<&TvWindow::fit>,
                                   this);
    evas_event_callback_add(
        evas_object_evas_get(outer_.get()), EVAS_CALLBACK_RENDER_FLUSH_POST,
        [](void *data, Evas *, void *) { static_cast<TvWindow *>(data)->frame_drawn(); }, this);

    evas_object_smart_callback_add(
        outer_.get(), "delete,request",
        [](void *data, Evas_Object *, void *) {
            static_cast<TvWindow *>(data)->listener_.closed();
        },
        this);
    evas_object_smart_callback_add(
        outer_.get(), "iconified",
        [](void *data, Evas_Object *, void *) {
            static_cast<TvWindow *>(data)->listener_.seen(false);
        },
        this);
    evas_object_smart_callback_add(
        outer_.get(), "normal",
        [](void *data, Evas_Object *, void *) {
            static_cast<TvWindow *>(data)->listener_.seen(true);
        },
        this);

    device_.reset(ecore_event_handler_add(
        ECORE_WL2_EVENT_DEVICE_ADDED,
        [](void *, int, void *) -> Eina_Bool {
            ecore_event_add(ECORE_EVENT_DEVICE_ADD, nullptr, nullptr, nullptr);
            return ECORE_CALLBACK_PASS_ON;
        },
        nullptr));

    angle_ = PanelModel::get().on_angle([this](int) { turn(); });
}

void TvWindow::fit()
{
    Size size;
    evas_object_geometry_get(outer_.get(), nullptr, nullptr, &size.width, &size.height);
    if (size.width <= 0 || size.height <= 0 || !inner_)
        return;
    mapping_->forget();
    Size output;
    ecore_wl2_display_screen_size_get(display_.get(), &output.width, &output.height);
    PanelModel::get().set_size(size.width, size.height, pixels_per_unit(output, size));
    place_content();
}

void TvWindow::turn()
{
    place_content();
    PLATFORM_LOGI(SERVICE, "content turned to %d degrees", PanelModel::get().angle());
    evas_object_smart_callback_call(inner_, "wm,rotation,changed", nullptr);
}

void TvWindow::place_content()
{
    const PanelModel &model = PanelModel::get();
    const Size panel = {model.width(), model.height()};
    const int degrees = model.angle();
    const Size content = Orientation::clockwise(degrees).of(panel);

    evas_object_image_size_set(image_, content.width, content.height);
    evas_object_image_fill_set(image_, 0, 0, content.width, content.height);
    evas_object_geometry_set(image_, (panel.width - content.width) / 2,
                             (panel.height - content.height) / 2, content.width, content.height);
    if (degrees == 0) {
        evas_object_map_enable_set(image_, EINA_FALSE);
    } else {
        Evas_Map *map = evas_map_new(4);
        evas_map_util_points_populate_from_object(map, image_);
        evas_map_util_rotate(map, -degrees, panel.width / 2, panel.height / 2);
        evas_map_smooth_set(map, EINA_FALSE);
        evas_map_alpha_set(map, EINA_TRUE);
        evas_object_map_set(image_, map);
        evas_object_map_enable_set(image_, EINA_TRUE);
        evas_map_free(map);
    }
    place_frame();
    input_->turn(panel, degrees);
    // The toolkit turns and resizes nothing here, a canvas in an image has no such thing: it only
    // keeps the angle for whoever asks. The function without the resize loses memory each time.
    elm_win_rotation_with_resize_set(inner_, degrees);
    evas_object_resize(inner_, content.width, content.height);
    fit_frame(content);
}

/** Leaves the real window no more to draw than what there is. */
void TvWindow::place_frame()
{
    // The toolkit cannot clip what a map turns: it would go on drawing the former part.
    if (PanelModel::get().angle() != 0) {
        evas_object_clip_unset(image_);
        evas_object_hide(frame_);
        return;
    }
    evas_object_geometry_set(frame_, drawn_part_.x, drawn_part_.y, drawn_part_.width,
                             drawn_part_.height);
    evas_object_show(frame_);
    evas_object_clip_set(image_, frame_);
}

/**
 * Elementary gives the inner window a frame, but leaves it at its first size: turned, the frame's
 * shadow would lie across the picture.
 */
void TvWindow::fit_frame(Size content)
{
    Evas_Object *object = evas_object_bottom_get(evas_object_evas_get(inner_));
    for (; object; object = evas_object_above_get(object)) {
        if (std::string_view(evas_object_type_get(object)) == "edje")
            evas_object_resize(object, content.width, content.height);
    }
}

void TvWindow::shown()
{
    awaiting_frame_ = true;
    hide_timer_.reset();
    evas_object_show(outer_.get());
    ecore_evas_focus_set(inner_canvas_, EINA_TRUE);
    if (mapping_->held()) {
        look_timer_.reset(ecore_timer_add(LOOK_S, on_timer<&TvWindow::look>, this));
        reveal_timer_.reset(
            ecore_timer_add(LONGEST_UNSEEN_S, on_timer<&TvWindow::give_up_waiting>, this));
    }
    Ecore_Wl2_Window *window = ecore_evas_wayland2_window_get(outer_canvas_);
    if (!idle_inhibitor_ && window)
        idle_inhibitor_ = IdleInhibitor::create(ecore_wl2_display_registry_get(display_.get()),
                                                ecore_wl2_window_surface_get(window));
}

void TvWindow::reveal()
{
    look_timer_.reset();
    reveal_timer_.reset();
    if (!mapping_->held() || mapping_->show())
        return;
    if (!inner_ || !evas_object_visible_get(inner_) || awaiting_frame_)
        return;
    // What was drawn is of another size. The toolkit draws again when the compositor asks for a
    // frame, which it never does for a window that it does not have.
    const PanelModel &panel = PanelModel::get();
    evas_damage_rectangle_add(evas_object_evas_get(outer_.get()), 0, 0, panel.width(),
                              panel.height());
    ecore_evas_manual_render(outer_canvas_);
}

/** For something to see in the window, for which no frame was asked for since the first one. */
void TvWindow::look()
{
    if (content_seen_.value_or(false))
        reveal();
    else if (!awaiting_frame_)
        ecore_evas_manual_render(outer_canvas_);
}

void TvWindow::give_up_waiting()
{
    listener_.without_picture();
    reveal();
}

void TvWindow::hidden()
{
    awaiting_frame_ = false;
    look_timer_.reset();
    reveal_timer_.reset();
    idle_inhibitor_.reset();
    if (mapping_->held())
        leave_screen();
    else
        hide_timer_.reset(ecore_timer_add(TIME_TO_END_S, on_timer<&TvWindow::leave_screen>, this));
    announce_visibility(false);
}

void TvWindow::leave_screen()
{
    hide_timer_.reset();
    mapping_->forget();
    evas_object_hide(outer_.get());
}

void TvWindow::frame_drawn()
{
    if (!awaiting_frame_)
        return;
    awaiting_frame_ = false;
    announce_visibility(true);
}

// Drawn into the image, but not yet shown: that is the outer window's next frame.
void TvWindow::content_drawn()
{
    Size size;
    evas_object_image_size_get(image_, &size.width, &size.height);
    const auto *pixels = static_cast<const uint32_t *>(ecore_evas_buffer_pixels_get(inner_canvas_));
    drawn_part_ = pixels ? drawn_part(pixels, size) : Rect();
    place_frame();
    const bool seen = !drawn_part_.empty();
    if (content_seen_ == seen)
        return;
    content_seen_ = seen;
    listener_.content_seen(seen);
}

// Not at once: the canvas is still at work when a frame was drawn, and the application may want to
// draw; and a window is hidden as part of its deletion, of which the application knows itself.
void TvWindow::announce_visibility(bool visible)
{
    visible_job_.reset();
    visible_ = visible;
    if (visible_ == announced_visible_)
        return;
    visible_job_.reset(ecore_job_add(
        [](void *data) {
            auto *window = static_cast<TvWindow *>(data);
            static_cast<void>(window->visible_job_.release()); // it goes by itself
            window->announced_visible_ = window->visible_;
            evas_object_smart_callback_call(window->inner_, "visibility,changed",
                                            reinterpret_cast<void *>(intptr_t{window->visible_}));
        },
        this));
}

void TvWindow::inner_deleted()
{
    inner_ = nullptr;
    inner_canvas_ = nullptr;
    angle_.reset();
    awaiting_frame_ = false;
    visible_job_.reset();
    idle_inhibitor_.reset();
    look_timer_.reset();
    reveal_timer_.reset();
    mapping_->forget();
    pointer_.reset();
    input_.reset();
    hide_timer_.reset();
    if (!outer_)
        return;
    // The inner window is a child of the outer one and in the middle of its own deletion.
    delete_job_.reset(ecore_job_add(
        [](void *data) {
            auto *window = static_cast<TvWindow *>(data);
            static_cast<void>(window->delete_job_.release()); // it goes by itself
            window->delete_outer();
        },
        this));
}

void TvWindow::delete_outer()
{
    delete_job_.reset();
    if (!outer_)
        return;
    mapping_->stay(listener_.gone);
    outer_.reset();
    outer_canvas_ = nullptr;
}

void TvWindow::sync()
{
    if (connection_watch_->toolkit_reads()) {
        ecore_wl2_display_flush(display_.get());
        return;
    }
    if (!wayland_roundtrip(ecore_wl2_display_get(display_.get())))
        PLATFORM_LOGW(SERVICE, "the compositor did not answer in time");
}

} // namespace platform

Evas_Object *app_get_preinitialized_window(const char * /*window_name*/)
{
    platform::TvWindow *window = platform::TvWindow::current();
    return window ? window->take() : nullptr;
}
