/** What the tests of the widgets share: no error line may come from the library underneath. */
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "player_scenes.h"
#include "stage.h"
#include "widget_extension.h"

/** The pixels of a panel. */
struct PanelSize {
    int width;
    int height;
};
std::ostream &operator<<(std::ostream &stream, const PanelSize &size);

constexpr PanelSize FULL_HD = {1920, 1080};

class WidgetTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /** Lines of error level that Elementary and its libraries have logged. */
    static std::vector<std::string> &library_errors();
};

/** A stage on which the options popup has been opened and everything has come to rest. */
struct ShownPopup {
    ShownPopup(const std::vector<std::string> &rows, int row_in_force, PanelSize size = FULL_HD);

    Stage stage;
    PopupScene scene;
};

/** Calls a function whenever a canvas has been drawn anew. The canvas outlives it. */
class FrameWatch {
  public:
    FrameWatch(Evas *canvas, std::function<void()> drawn);
    ~FrameWatch();
    FrameWatch(const FrameWatch &) = delete;
    FrameWatch &operator=(const FrameWatch &) = delete;

  private:
    static void on_drawn(void *data, Evas *canvas, void *event);

    Evas *canvas_;
    std::function<void()> drawn_;
};

/** A ground as large as its stage, under all that comes there later. */
class Ground {
  public:
    explicit Ground(const Stage &stage);
    Ground(const Ground &) = delete;
    Ground &operator=(const Ground &) = delete;

    int presses = 0; ///< mouse-downs that nothing above has kept from it
};

/**
 * Finds the drawing made from a group of the theme among an object's members.
 *
 * @param place the place it must have, or null for any
 * @return the drawing, or null
 */
const Evas_Object *find_drawing(const Evas_Object *object, const std::string &group,
                                const Eina_Rectangle *place = nullptr);

/** Where the panel of a popup or a toast is; the popup's object itself covers the window. */
Eina_Rectangle panel_of(const Evas_Object *popup);

/** The drawing of a row. It is there only while the row is in or near the view. */
class RowView {
  public:
    explicit RowView(Elm_Object_Item *item);

    explicit operator bool() const { return drawing_ != nullptr; }
    /** Place of a part on the canvas. */
    Eina_Rectangle part(const char *name) const;
    std::string state(const char *part) const;
    std::string text() const;
    Eina_Rectangle place() const { return Stage::geometry(drawing_); }

  private:
    const Evas_Object *drawing_ = nullptr;
};

/** Whether one rectangle lies in another. */
bool lies_in(const Eina_Rectangle &inner, const Eina_Rectangle &outer);
