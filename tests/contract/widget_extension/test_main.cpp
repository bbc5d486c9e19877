#include <cstdarg>
#include <cstdio>
#include <utility>

#include "widget_test.h"

namespace {

void note_line(const Eina_Log_Domain *domain, Eina_Log_Level level, const char *, const char *, int,
               const char *format, void *data, va_list arguments)
{
    if (level > EINA_LOG_LEVEL_ERR)
        return;
    char text[512];
    vsnprintf(text, sizeof text, format, arguments);
    static_cast<std::vector<std::string> *>(data)->push_back(std::string(domain->name) + ": " +
                                                             text);
}

} // namespace

std::vector<std::string> &WidgetTest::library_errors()
{
    static std::vector<std::string> errors;
    return errors;
}

void WidgetTest::SetUp()
{
    library_errors().clear();
    eina_log_print_cb_set(note_line, &library_errors());
}

void WidgetTest::TearDown()
{
    EXPECT_THAT(library_errors(), testing::IsEmpty());
    eina_log_print_cb_set(eina_log_print_cb_stderr, nullptr);
}

std::ostream &operator<<(std::ostream &stream, const PanelSize &size)
{
    return stream << size.width << "x" << size.height;
}

ShownPopup::ShownPopup(const std::vector<std::string> &rows, int row_in_force, PanelSize size)
    : stage(size.width, size.height), scene(stage.window(), "Demo", rows, row_in_force)
{
    scene.show();
    stage.settle();
}

FrameWatch::FrameWatch(Evas *canvas, std::function<void()> drawn)
    : canvas_(canvas), drawn_(std::move(drawn))
{
    evas_event_callback_add(canvas_, EVAS_CALLBACK_RENDER_FLUSH_POST, on_drawn, this);
}

FrameWatch::~FrameWatch()
{
    evas_event_callback_del_full(canvas_, EVAS_CALLBACK_RENDER_FLUSH_POST, on_drawn, this);
}

void FrameWatch::on_drawn(void *data, Evas *, void *)
{
    static_cast<FrameWatch *>(data)->drawn_();
}

Ground::Ground(const Stage &stage)
{
    const Eina_Rectangle place = Stage::geometry(stage.window());
    Evas_Object *ground = evas_object_rectangle_add(stage.canvas());
    evas_object_resize(ground, place.w, place.h);
    evas_object_show(ground);
    evas_object_event_callback_add(
        ground, EVAS_CALLBACK_MOUSE_DOWN,
        [](void *data, Evas *, Evas_Object *, void *) { ++static_cast<Ground *>(data)->presses; },
        this);
}

const Evas_Object *find_drawing(const Evas_Object *object, const std::string &group,
                                const Eina_Rectangle *place)
{
    // Only objects made of others have members, and asking the others is an error.
    const std::string type = evas_object_type_get(object);
    if (type == "rectangle" || type == "image" || type == "text" || type == "textblock")
        return nullptr;
    const char *name = nullptr;
    if (type == "edje")
        edje_object_file_get(object, nullptr, &name);
    if (name && group == name &&
        (!place ||
         (lies_in(Stage::geometry(object), *place) && lies_in(*place, Stage::geometry(object)))))
        return object;
    const Evas_Object *found = nullptr;
    Eina_List *members = evas_object_smart_members_get(object);
    for (const Eina_List *node = members; node && !found; node = eina_list_next(node))
        found = find_drawing(static_cast<Evas_Object *>(eina_list_data_get(node)), group, place);
    eina_list_free(members);
    return found;
}

Eina_Rectangle panel_of(const Evas_Object *popup)
{
    const Evas_Object *drawing = find_drawing(popup, "elm/popup/base/velt");
    if (!drawing)
        drawing = find_drawing(popup, "elm/popup/base/velt_toast");
    return drawing ? Stage::geometry(drawing) : Eina_Rectangle{0, 0, 0, 0};
}

RowView::RowView(Elm_Object_Item *item)
{
    const Evas_Object *tracked = item ? elm_object_item_track(item) : nullptr;
    if (!tracked)
        return;
    const Eina_Rectangle place = Stage::geometry(tracked);
    drawing_ = find_drawing(elm_object_item_widget_get(item),
                            "elm/genlist/item/C_TextTile_SingleLine_02/velt", &place);
    elm_object_item_untrack(item);
}

Eina_Rectangle RowView::part(const char *name) const
{
    const Eina_Rectangle place = Stage::geometry(drawing_);
    Eina_Rectangle part = {0, 0, 0, 0};
    edje_object_part_geometry_get(drawing_, name, &part.x, &part.y, &part.w, &part.h);
    part.x += place.x;
    part.y += place.y;
    return part;
}

std::string RowView::state(const char *part) const
{
    double value = 0.0;
    const char *name = drawing_ ? edje_object_part_state_get(drawing_, part, &value) : nullptr;
    return name ? name : "";
}

std::string RowView::text() const
{
    const char *shown = drawing_ ? edje_object_part_text_get(drawing_, "MainText") : nullptr;
    return shown ? shown : "";
}

bool lies_in(const Eina_Rectangle &inner, const Eina_Rectangle &outer)
{
    return inner.x >= outer.x && inner.y >= outer.y && inner.x + inner.w <= outer.x + outer.w &&
           inner.y + inner.h <= outer.y + outer.h;
}

int main(int count, char **words)
{
    testing::InitGoogleMock(&count, words);
    Stage::open_house();
    const int result = RUN_ALL_TESTS();
    Stage::close_house();
    return result;
}
