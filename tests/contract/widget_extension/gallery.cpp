// velt-gallery: draws one scene of the player's user interface over a colourful picture into a
// file.
//
//   velt-gallery SCENE SIZE FILE [option…]
//   SCENE   popup, toast or disclaimer
//   SIZE    for example 1920x1080; a size that is higher than wide is a portrait panel
//   options rtl, long, many, rows=N (only the first N), ar, ko, 2lines, force=N (row in force),
//           key=NAME (pressed, repeatable), after=SECONDS (time to pass before the picture),
//           before=SECONDS (time to pass before the scene: two are enough to have it prepared),
//           time (print the processor time that the popup took)

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "player_scenes.h"
#include "stage.h"

namespace {

struct Wish {
    std::string scene;
    int width = 1920;
    int height = 1080;
    std::string file;
    bool long_names = false;
    bool many = false;
    bool two_lines = false;
    bool print_time = false;
    std::string language = "en";
    int row_in_force = 2;
    std::size_t rows = SIZE_MAX;
    double seconds_before = 0.0;
    double seconds = 0.0;
    std::vector<std::string> keys;
};

bool starts_with(const std::string &text, const char *prefix)
{
    return text.rfind(prefix, 0) == 0;
}

void read_option(const std::string &option, Wish &wish)
{
    if (option == "rtl")
        elm_config_mirrored_set(EINA_TRUE);
    else if (option == "long")
        wish.long_names = true;
    else if (option == "many")
        wish.many = true;
    else if (option == "2lines")
        wish.two_lines = true;
    else if (option == "time")
        wish.print_time = true;
    else if (option == "ar" || option == "ko")
        wish.language = option;
    else if (starts_with(option, "force="))
        wish.row_in_force = std::atoi(option.c_str() + strlen("force="));
    else if (starts_with(option, "rows="))
        wish.rows = std::strtoul(option.c_str() + strlen("rows="), nullptr, 10);
    else if (starts_with(option, "before="))
        wish.seconds_before = std::atof(option.c_str() + strlen("before="));
    else if (starts_with(option, "after="))
        wish.seconds = std::atof(option.c_str() + strlen("after="));
    else if (starts_with(option, "key="))
        wish.keys.push_back(option.substr(strlen("key=")));
    else
        std::fprintf(stderr, "unknown option %s\n", option.c_str());
}

/** Something bright and busy, as a demo film is. */
void paint_background(const Stage &stage, int width, int height)
{
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
    const double scale = 1920.0 / std::max(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = x * scale / 240.0;
            const double v = y * scale / 240.0;
            const auto wave = [](double angle) {
                return static_cast<std::uint32_t>(127.5 + 127.5 * std::sin(angle));
            };
            const bool band = std::fmod(u + v + 0.4 * std::sin(3.0 * u), 1.0) < 0.12;
            const std::uint32_t red = band ? 255 : wave(u * 1.3);
            const std::uint32_t green = band ? 240 : wave(v * 1.7 + u);
            const std::uint32_t blue = band ? 220 : wave(2.0 + v - u * 0.7);
            pixels[static_cast<std::size_t>(y) * width + x] =
                0xff000000u | (red << 16) | (green << 8) | blue;
        }
    }
    Evas_Object *picture = evas_object_image_filled_add(stage.canvas());
    evas_object_image_size_set(picture, width, height);
    evas_object_image_data_copy_set(picture, pixels.data());
    evas_object_size_hint_weight_set(picture, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_win_resize_object_add(stage.window(), picture);
    evas_object_show(picture);
}

std::vector<std::string> row_texts(const Wish &wish)
{
    std::vector<std::string> rows = {"Off", "Play all"};
    if (wish.language == "ar")
        rows = {"إيقاف", "تشغيل الكل"};
    if (wish.language == "ko")
        rows = {"꺼짐", "모두 재생"};
    const std::vector<std::string> names = {"City lights", "<b>Bold</b> & co", "Ocean life",
                                            "Northern sky", "portrait_Waterfall"};
    rows.insert(rows.end(), names.begin(), names.end());
    if (wish.language == "ar")
        rows.insert(rows.begin() + 3, "مشاهد من الطبيعة");
    if (wish.language == "ko")
        rows.insert(rows.begin() + 3, "서울의 밤");
    if (wish.long_names) {
        rows.insert(rows.begin() + 2, "A journey along the coast, from the first light of the "
                                      "morning to the last boat of the evening");
        rows.insert(rows.begin() + 3,
                    "رحلة طويلة على امتداد الساحل من أول ضوء في الصباح إلى آخر قارب في المساء ثم "
                    "العودة إلى الميناء");
    }
    for (int i = 1; wish.many && i <= 1000; ++i)
        rows.push_back("Clip number " + std::to_string(i));
    rows.resize(std::min(rows.size(), wish.rows));
    return rows;
}

const char *title_of(const Wish &wish)
{
    return wish.language == "ar" ? "عرض توضيحي" : wish.language == "ko" ? "데모" : "Demo";
}

const char *toast_of(const Wish &wish)
{
    if (wish.language == "ar")
        return "مؤقت الوضع الأفقي: 5 د 30 ث";
    if (wish.language == "ko")
        return "가로 화면 타이머: 5분 30초";
    return wish.two_lines ? "Portrait and landscape timers have both been reset to their first "
                            "value, which is: 5 min"
                          : "Landscape timer: 5 min 30 sec";
}

/** Processor time of all threads so far. */
double processor_milliseconds()
{
    return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

std::unique_ptr<PopupScene> play(const Wish &wish, Stage &stage)
{
    const bool portrait = wish.height > wish.width;
    std::unique_ptr<PopupScene> scene;
    if (wish.scene == "toast")
        show_toast(stage.window(), toast_of(wish));
    if (wish.scene == "disclaimer")
        DisclaimerScene(stage.window(), portrait, getenv("OSTREL_DEMO_RESOURCE_DIR"))
            .show(portrait);
    if (wish.scene == "popup") {
        const double start = processor_milliseconds();
        scene =
            std::make_unique<PopupScene>(stage.window(), title_of(wish), row_texts(wish),
                                         wish.row_in_force, wish.language == "ar" ? "موافق" : "OK");
        scene->show();
        const double made = processor_milliseconds() - start;
        ecore_main_loop_iterate();
        stage.draw();
        if (wish.print_time)
            std::printf("made in %.1f ms, first frame after %.1f ms\n", made,
                        processor_milliseconds() - start);
    }
    stage.settle();
    return scene;
}

} // namespace

int main(int count, char **words)
{
    Wish wish;
    if (count < 4 || std::sscanf(words[2], "%dx%d", &wish.width, &wish.height) != 2) {
        std::fprintf(stderr, "usage: velt-gallery popup|toast|disclaimer WxH FILE [option...]\n");
        return 2;
    }
    wish.scene = words[1];
    wish.file = words[3];
    Stage::open_house();
    for (int i = 4; i < count; ++i)
        read_option(words[i], wish);
    bool saved = false;
    {
        Stage stage(wish.width, wish.height);
        paint_background(stage, wish.width, wish.height);
        stage.settle();
        Stage::pass(wish.seconds_before);
        const std::unique_ptr<PopupScene> scene = play(wish, stage);
        for (const std::string &key : wish.keys)
            stage.press_key(key.c_str());
        Stage::pass(wish.seconds);
        saved = stage.save_picture(wish.file);
        stage.delete_window();
    }
    Stage::close_house();
    return saved ? 0 : 1;
}
