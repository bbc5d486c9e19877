/**
 * What the widgets of the extension share: the window they are for, the theme, the scale and the
 * length of a layout unit. Main-loop thread only.
 */
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <Elementary.h>

#include "base/toolkit_handles.h"

namespace platform {

class PopupPrerender;

class WidgetManager {
  public:
    /** The one manager. */
    static WidgetManager &get();

    /**
     * Loads the theme, follows the window's size from now on, and prepares the first popup at an
     * idle moment after the window has come up.
     */
    void start(Evas_Object *window);

    /** Unloads the theme and forgets the window. */
    void stop();

    /** Whether all is loaded that a popup and a toast need. */
    bool is_prepared() const;

    /** Pixels of so many layout units, rounded. */
    int pixels(double units) const;

    /** Whether the window is as large as the theme's pictures are drawn for. */
    bool shows_pictures_unscaled() const;

    /** Gives a new widget its style of our theme, or none, and its scale. @return the widget. */
    Evas_Object *set_up(Evas_Object *widget, const char *style = nullptr);

    /** Sets a style of our theme while the theme is loaded, else leaves Elementary's. */
    void set_style(Evas_Object *widget, const char *style) const;

    /**
     * Lets a widget that its container deletes be deleted once more by its own pointer, without
     * effect, until control has returned to the main loop. Callers hold pointers to a container and
     * to what is in it and delete them in either order.
     */
    void outlive_container(Evas_Object *widget);

    /**
     * Draws the window at the next idle moment, rather than when the compositor asks for its next
     * frame, which a film may delay by a frame or two. A widget on another canvas does nothing.
     */
    void draw_soon(const Evas_Object *widget);

  private:
    WidgetManager();
    ~WidgetManager();
    int longer_side() const;
    void update_scale();
    void release_held_widgets();

    static void on_window_resized(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_window_deleted(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_widget_deleted(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_content_deleted(void *data, Evas *canvas, Evas_Object *object, void *event);
    static void on_control_returned(void *data);
    static Eina_Bool on_idle(void *data);

    Evas_Object *window_ = nullptr;
    std::unique_ptr<PopupPrerender> prerender_;
    std::string theme_; ///< the file that is loaded, or empty
    double scale_ = 1.0;
    std::vector<Evas_Object *> widgets_; ///< those that live
    /** Deleted widgets whose names are still held. */
    std::vector<std::unique_ptr<Evas_Object, HandleEnd<efl_unref>>> held_widgets_;
    JobPtr release_job_;
    IdlerPtr draw_idler_;
    bool others_were_idle_ = false; ///< since draw_soon()
};

} // namespace platform
