#include "widget_extension/widget_manager.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <unistd.h>

#include "log/platform_log.h"
#include "settings/settings.h"
#include "widget_extension/popup_prerender.h"

namespace platform {
namespace {

constexpr double UNITS_OF_LONGER_SIDE = 240.0;
/** The longer side of the panel that the theme is drawn for. */
constexpr double DESIGN_SIDE = 1920.0;
/** Its pictures are drawn larger. */
constexpr double PICTURE_SCALE = 2.0;
/** Seconds that the list takes to follow the focus; Elementary's own lags behind a held key. */
constexpr double BRING_IN_SECONDS = 0.22;
/** Room for the letters of a popup on the largest panel; Elementary's own value forgets them. */
constexpr int FONT_CACHE_KILOBYTES = 8192;

} // namespace

WidgetManager::WidgetManager() = default;

WidgetManager::~WidgetManager() = default;

WidgetManager &WidgetManager::get()
{
    static WidgetManager manager;
    return manager;
}

void WidgetManager::start(Evas_Object *window)
{
    stop();
    window_ = window;
    evas_object_event_callback_add(window, EVAS_CALLBACK_RESIZE, on_window_resized, this);
    evas_object_event_callback_add(window, EVAS_CALLBACK_DEL, on_window_deleted, this);
    elm_config_scroll_bring_in_scroll_friction_set(BRING_IN_SECONDS);
    // Elementary empties its caches every minute, after which the next popup would load all anew.
    elm_config_cache_flush_enabled_set(EINA_FALSE);
    elm_config_cache_font_cache_size_set(FONT_CACHE_KILOBYTES);
    update_scale();

    const std::string theme = Settings::get().resource_dir + "/theme/ostrel.edj";
    if (access(theme.c_str(), R_OK) != 0) {
        PLATFORM_LOGE("widget_extension", "no theme at %s, the widgets look like a desktop's",
                      theme.c_str());
        return;
    }
    elm_theme_extension_add(nullptr, theme.c_str());
    theme_ = theme;
    // Our widgets show their focus themselves. The first key would switch Elementary's moving frame
    // on again, so it gets a style that draws nothing.
    elm_win_focus_highlight_style_set(window, "velt");
    prerender_ = std::make_unique<PopupPrerender>(window);
}

void WidgetManager::stop()
{
    prerender_.reset();
    draw_idler_.reset();
    if (window_) {
        evas_object_event_callback_del_full(window_, EVAS_CALLBACK_RESIZE, on_window_resized, this);
        evas_object_event_callback_del_full(window_, EVAS_CALLBACK_DEL, on_window_deleted, this);
        window_ = nullptr;
    }
    if (!theme_.empty()) {
        elm_theme_extension_del(nullptr, theme_.c_str());
        theme_.clear();
    }
    release_held_widgets();
}

bool WidgetManager::is_prepared() const
{
    return prerender_ && prerender_->done();
}

int WidgetManager::longer_side() const
{
    int width = 0;
    int height = 0;
    if (window_) {
        evas_object_geometry_get(window_, nullptr, nullptr, &width, &height);
        // A window that was not laid out yet is one pixel large.
        if (std::max(width, height) <= 1)
            elm_win_screen_size_get(window_, nullptr, nullptr, &width, &height);
    }
    const int longer = std::max(width, height);
    return longer > 1 ? longer : static_cast<int>(DESIGN_SIDE);
}

int WidgetManager::pixels(double units) const
{
    const double pixels = units * longer_side() / UNITS_OF_LONGER_SIDE;
    return std::isfinite(pixels) ? static_cast<int>(std::lround(pixels)) : 0;
}

bool WidgetManager::shows_pictures_unscaled() const
{
    return longer_side() == static_cast<int>(PICTURE_SCALE * DESIGN_SIDE);
}

void WidgetManager::update_scale()
{
    // The panel's pixels alone decide: Elementary's own scale is taken out again.
    const double scale = longer_side() / DESIGN_SIDE / elm_config_scale_get();
    if (std::abs(scale - scale_) < 1e-6)
        return;
    scale_ = scale;
    for (Evas_Object *widget : widgets_)
        elm_object_scale_set(widget, scale_);
}

Evas_Object *WidgetManager::set_up(Evas_Object *widget, const char *style)
{
    if (!widget)
        return nullptr;
    widgets_.push_back(widget);
    evas_object_event_callback_add(widget, EVAS_CALLBACK_DEL, on_widget_deleted, this);
    elm_object_scale_set(widget, scale_);
    if (style)
        set_style(widget, style);
    return widget;
}

void WidgetManager::set_style(Evas_Object *widget, const char *style) const
{
    if (!theme_.empty() && !elm_object_style_set(widget, style))
        PLATFORM_LOGW("widget_extension", "the theme has no style %s", style);
}

void WidgetManager::outlive_container(Evas_Object *widget)
{
    // Nobody holds pointers to what is drawn ahead on another canvas, which is soon deleted.
    if (window_ && evas_object_evas_get(widget) != evas_object_evas_get(window_))
        return;
    evas_object_event_callback_del_full(widget, EVAS_CALLBACK_DEL, on_content_deleted, this);
    evas_object_event_callback_add(widget, EVAS_CALLBACK_DEL, on_content_deleted, this);
}

void WidgetManager::draw_soon(const Evas_Object *widget)
{
    if (!window_ || evas_object_evas_get(widget) != evas_object_evas_get(window_))
        return;
    others_were_idle_ = false;
    if (!draw_idler_)
        draw_idler_.reset(ecore_idler_add(on_idle, this));
}

Eina_Bool WidgetManager::on_idle(void *data)
{
    auto *self = static_cast<WidgetManager *>(data);
    // Idlers that were added before this one are called after it.
    if (!std::exchange(self->others_were_idle_, true))
        return ECORE_CALLBACK_RENEW;
    static_cast<void>(self->draw_idler_.release()); // it goes by itself
    // The window's content is drawn into a picture of the real window, whose turn it is.
    const Evas_Object *picture = elm_win_inlined_image_object_get(self->window_);
    ecore_evas_manual_render(ecore_evas_ecore_evas_get(evas_object_evas_get(picture)));
    return ECORE_CALLBACK_CANCEL;
}

void WidgetManager::release_held_widgets()
{
    release_job_.reset();
    // What goes may hold other contents, which are then held for the first time.
    const auto going = std::exchange(held_widgets_, {});
}

void WidgetManager::on_window_resized(void *data, Evas *, Evas_Object *, void *)
{
    static_cast<WidgetManager *>(data)->update_scale();
}

void WidgetManager::on_window_deleted(void *data, Evas *, Evas_Object *, void *)
{
    auto *self = static_cast<WidgetManager *>(data);
    self->prerender_.reset();
    self->draw_idler_.reset();
    self->window_ = nullptr;
}

void WidgetManager::on_widget_deleted(void *data, Evas *, Evas_Object *object, void *)
{
    auto &widgets = static_cast<WidgetManager *>(data)->widgets_;
    widgets.erase(std::remove(widgets.begin(), widgets.end(), object), widgets.end());
}

void WidgetManager::on_content_deleted(void *data, Evas *, Evas_Object *object, void *)
{
    auto *self = static_cast<WidgetManager *>(data);
    self->held_widgets_.emplace_back(efl_ref(object));
    if (!self->release_job_)
        self->release_job_.reset(ecore_job_add(on_control_returned, self));
}

void WidgetManager::on_control_returned(void *data)
{
    auto *self = static_cast<WidgetManager *>(data);
    static_cast<void>(self->release_job_.release()); // it goes by itself
    self->release_held_widgets();
}

} // namespace platform
