/**
 * A window inside a window that draws into memory, as the player's window is one inside the
 * panel's, with everything a test needs to act like a viewer: keys, pointer, time passing and a
 * look at the picture. One stage at a time; the main loop is the test's own.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <Elementary.h>

class Stage {
  public:
    /** Starts Elementary for the whole program; to be called once, before any stage. */
    static void open_house();
    static void close_house();

    Stage(int width, int height);
    ~Stage();
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    Evas_Object *window() const { return window_; }
    Evas *canvas() const { return evas_object_evas_get(window_); }
    /** Of the panel, which shows the window. */
    Evas *panel_canvas() const { return evas_object_evas_get(panel_); }

    /** Deletes the window before the stage ends. */
    void delete_window();

    /** Runs the main loop until the condition holds. @return false when it did not in time. */
    static bool until(const std::function<bool()> &condition, double seconds = 10.0);

    /** Runs the main loop for so long, to have a picture of what it looks like then; not for tests.
     */
    static void pass(double seconds);

    /** Runs the main loop until all that is pending has been done and drawn. */
    void settle();

    void press_key(const char *name);
    void move_pointer(int x, int y);
    void click(int x, int y);
    /** Moves the pointer to an object's middle, and clicks there. */
    void click(const Evas_Object *object);

    /** Draws what is pending. @return the pixels, ARGB, premultiplied, row by row. */
    const std::uint32_t *draw();
    std::uint32_t pixel(int x, int y);

    bool save_picture(const std::string &path);

    static Eina_Rectangle geometry(const Evas_Object *object);

  private:
    static void work_off(const std::function<void()> &after_each_round = [] {});

    Evas_Object *panel_;
    Evas_Object *window_;
    int width_;
    int height_;
    unsigned int time_ = 0;
};
