/**
 * What the player does with the widgets, call by call in its order: the options popup, the toast
 * and the disclaimer. Tests and the gallery look at what becomes of it.
 */
#pragma once

#include <string>
#include <vector>

#include <Elementary.h>

/** The options popup. Deleting what it made is the test's affair, as it is the player's. */
class PopupScene {
  public:
    PopupScene(Evas_Object *window, const std::string &title, std::vector<std::string> rows,
               int row_in_force, const std::string &button_text = "OK");
    ~PopupScene();
    PopupScene(const PopupScene &) = delete;
    PopupScene &operator=(const PopupScene &) = delete;

    Evas_Object *popup = nullptr;
    Evas_Object *layout = nullptr;
    Evas_Object *genlist = nullptr;
    Evas_Object *button = nullptr;

    void show();
    /** Deletes the three objects in the order in which the player takes a closed popup down. */
    void delete_closed();
    /** Deletes them as the player does when it ends with the popup still open. */
    void delete_at_end();

    Elm_Object_Item *row(unsigned int index) const;
    /** Index of the focused row, -1 when the list has not the focus. */
    int focused_row() const;
    static int index_of(const Elm_Object_Item *item);

    std::vector<std::string> keys; ///< key-down names that reached the list
    int clicked = 0;               ///< "clicked" of the button
    int timed_out = 0;             ///< "timeout" of the popup
    int button_presses = 0;        ///< mouse-down of the button
    int list_shown = 0;            ///< EVAS_CALLBACK_SHOW of the list
    int pressed_row = -1;          ///< row under the last mouse-down on the list
    int rows_deleted = 0;

  private:
    struct Record {
        int index;
        std::string text;
        PopupScene *scene;
    };

    void make_list(const std::vector<std::string> &rows);
    void make_button(const std::string &text);
    void watch_list();

    static char *text_of(void *data, Evas_Object *object, const char *part);
    static void delete_record(void *data, Evas_Object *object);
    static Eina_Bool focus_row_in_force(void *data);

    int row_in_force_;
    Ecore_Idler *idler_ = nullptr;
};

/** The toast. @return the popup. */
Evas_Object *show_toast(Evas_Object *window, const std::string &text);

/** The disclaimer, built hidden. */
struct DisclaimerScene {
    DisclaimerScene(Evas_Object *window, bool portrait, const std::string &folder);
    void show(bool portrait);
    void hide();

    Evas_Object *root = nullptr;
    Evas_Object *image = nullptr;

  private:
    std::string picture(bool portrait) const;
    std::string folder_;
};
