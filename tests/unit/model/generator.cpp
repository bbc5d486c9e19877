#include "generator.h"

#include <random>

#include "model.h"

namespace model {

namespace {

class Generator {
  public:
    Generator(uint64_t seed, int length) : random_(seed), length_(length) {}

    Steps make()
    {
        set_up();
        add({"create", {}, {}}, 30);
        add(launch_step(), 6);
        add({"visible", {"1"}, {}}, 6);
        for (int i = 0; i < length_ && model_.running(); ++i)
            add(any_step(), 4);
        return steps_;
    }

  private:
    // std::uniform_int_distribution differs between libraries; the same seed must give the same
    // sequence everywhere.
    int below(size_t limit) { return static_cast<int>(random_() % limit); }
    bool one_in(size_t n) { return below(n) == 0; }
    std::string number(size_t limit) { return std::to_string(below(limit)); }
    template <typename... Texts> std::string one_of(const Texts &...texts)
    {
        const std::string all[] = {texts...};
        return all[below(sizeof...(texts))];
    }

    /** @param odds one step in so many meets a failing function */
    void add(Step step, size_t odds)
    {
        const auto &functions = functions_that_fail();
        while (one_in(odds) && step.failing.size() < 3)
            step.failing.push_back(functions[static_cast<size_t>(below(functions.size()))]);
        if (!model_.possible(step))
            return;
        model_.apply(step);
        steps_.push_back(std::move(step));
    }

    void set_up();
    std::vector<std::string> some_files();
    Step launch_step();
    Step any_step();
    Step fact_step();
    Step config_step();

    std::mt19937_64 random_;
    int length_;
    Model model_;
    Steps steps_;
};

std::vector<std::string> Generator::some_files()
{
    // Few names, so that lists of none, one and two entries of each kind are frequent.
    std::vector<std::string> names;
    for (const char *name :
         {"a.mp4", "b.MKV", "clip.final.ts", "d.smp4", "p1.jpg", "p2.jpeg", "portrait_v.mp4",
          "Portrait_w.avi", "portrait_p.jpg", "portrait_q.JPG", "a.srt", "a_EngUS.srt", "a_Kor.smi",
          "portrait_v_Deu.ass", "readme.txt", "noextension", "x.", ".hidden"}) {
        if (one_in(3))
            names.emplace_back(name);
    }
    return names;
}

void Generator::set_up()
{
    for (const char *fact : {"window", "rotator", "disclaimer", "backlight", "right-to-left"}) {
        if (one_in(2))
            add({"set", {fact, number(2)}, {}}, 1000);
    }
    add({"set", {"language", one_of("en_US", "ko_KR", "de_DE.UTF-8", "en_IE")}, {}}, 1000);

    const auto folder = [&](const std::string &path) {
        std::vector<std::string> arguments = {path};
        for (const std::string &name : some_files())
            arguments.push_back(name);
        add({"content", arguments, {}}, 1000);
    };
    if (!one_in(12))
        folder("/opt/data/demo_movie/");
    if (one_in(2))
        folder("/demo/show/");
    if (one_in(2))
        folder(one_of("/media/usb1/show/", "/media/usb2/show/"));
    if (one_in(2))
        add({"sticks", {"/media/usb1", "/media/usb2"}, {}}, 1000);

    for (const char *key : {DEMO_MODE, FILE_MODE, AUTO_MODE, PORTRAIT_TIMER, LANDSCAPE_TIMER,
                            ROTATION_STATE, USE_MODE}) {
        if (!one_in(8))
            add({"config", {key, number(key == AUTO_MODE ? 2 : 4)}, {}}, 1000);
    }
    if (one_in(2))
        add({"config", {DEMO_MODE, "0"}, {}}, 1000);
}

Step Generator::launch_step()
{
    Step step = {"launch", {}, {}};
    if (one_in(30))
        step.arguments.push_back("__K_RELOCATE_BELOW=" + one_of("com.norvane.tv.aod", "other"));
    if (one_in(30))
        step.arguments.push_back("mode=" + one_of("factory_start", "factory_stop"));
    if (one_in(3))
        step.arguments.push_back("demo_player_mode=" +
                                 one_of("folder_contents_player", "folder_contents_player", "no"));
    if (one_in(3))
        step.arguments.push_back("repeat_mode=" + one_of("no", "No", "yes"));
    if (one_in(2))
        step.arguments.push_back("folder_path=" + one_of("/demo/show/", "show", "/demo/none/"));
    if (one_in(3))
        step.arguments.push_back("path_location=" + one_of("usb", "usb", "disk"));
    return step;
}

Step Generator::fact_step()
{
    switch (below(8)) {
    case 0:
        return {"sticks",
                one_in(2) ? std::vector<std::string>{} : std::vector<std::string>{"/media/usb2"},
                {}};
    case 1:
        return {"no-content", {one_of("/opt/data/demo_movie/", "/media/usb1/show/")}, {}};
    case 2:
        return {"content", {"/opt/data/demo_movie/", "new.mp4"}, {}};
    case 3:
        return {"set", {"language", one_of("en_US", "ko_KR")}, {}};
    case 4:
        return {"set", {"sound", one_of("0", "8", "3")}, {}};
    default:
        return {
            "set", {one_of("disclaimer", "rotator", "resources", "right-to-left"), number(2)}, {}};
    }
}

Step Generator::config_step()
{
    switch (below(7)) {
    case 0:
        return {"config", {DEMO_MODE, one_of("0", "1", "2", "258", "513", "1280", "-1")}, {}};
    case 1:
        return {"config", {FILE_MODE, one_of("0", "1", "2", "2", "7", "-")}, {}};
    case 2:
        return {
            "config", {one_of(PORTRAIT_TIMER, LANDSCAPE_TIMER), one_of("0", "9", "8", "-")}, {}};
    case 3:
        // Beyond the table: another program's mistake.
        return {"config", {one_of(PORTRAIT_TIMER, LANDSCAPE_TIMER), one_of("10", "-1", "77")}, {}};
    case 4:
        return {"config", {DEMO_MODE, one_of("0", "0", "-")}, {}};
    case 5:
        return {"change", {DEMO_MODE, one_of("0", "1", "-1", "2", "256")}, {}};
    default:
        return {"change", {USE_MODE, one_of("0", "1", "2")}, {}};
    }
}

Step Generator::any_step()
{
    // What the set has under way comes first, most of the time.
    if (!model_.set.queue.empty() && !one_in(4))
        return {"deliver", {}, {}};
    if (!model_.set.untold.empty() && one_in(3))
        return {"tell", {}, {}};
    if (model_.set.preparing && one_in(3))
        return {"prepared", {}, {}};
    if (model_.set.picture && model_.set.decode_followed && one_in(4))
        return {"decoded", {one_in(5) ? number(6) : "3"}, {}};
    if (model_.set.picture && model_.set.parse_followed && one_in(4))
        return {"parsed", {one_in(5) ? number(4) : "0"}, {}};
    if (model_.set.video == Video::Playing && one_in(6))
        return {"completed", {}, {}};
    if (model_.genlist && one_in(4)) {
        switch (below(9)) {
        case 0:
        case 1:
            return {"row", {number(5)}, {}};
        case 2:
            return {"hover", {number(5)}, {}};
        case 3:
            return {"focus", {number(5)}, {}};
        case 4:
            return {"list-key", {one_of("Return", "Return", "Up", "XF86Back")}, {}};
        case 5:
            return {"list-shown", {}, {}};
        case 6:
            return {"ok", {}, {}};
        case 7:
            return {"ok-press", {std::to_string(1 + below(2))}, {}};
        default:
            return {"popup-timeout", {}, {}};
        }
    }

    const int dice = below(200);
    if (dice < 60)
        return {"key", {key_names()[static_cast<size_t>(below(key_names().size()))]}, {}};
    if (dice < 72)
        return {"press", {std::to_string(one_in(5) ? 2 : 1)}, {}};
    if (dice < 84)
        return {"wait", {one_of("100", "500", "800", "3000", "5000", "30000")}, {}};
    if (dice < 104) {
        // To the next timer, whatever it is for.
        const TimerId next = model_.set.next_due(INT64_MAX - 1);
        const int64_t due =
            next == NONE ? 1000 : model_.set.timers[static_cast<size_t>(next)].due - model_.set.now;
        return {"wait", {std::to_string(due)}, {}};
    }
    if (dice < 114)
        return {"turn", {one_of("0", "90", "180", "270", "45")}, {}};
    if (dice < 124)
        return {"rotator", {std::to_string(below(9) - 3)}, {}};
    if (dice < 136)
        return config_step();
    if (dice < 146)
        return fact_step();
    if (dice < 154)
        return {"record", {std::to_string(below(14) - 1), std::to_string(below(20) - 1)}, {}};
    if (dice < 164)
        return launch_step();
    if (dice < 168)
        return {"idle", {}, {}};
    if (dice < 172)
        return {"error", {one_of("-26476496", "-1", "0")}, {}};
    if (dice < 176)
        return {"interrupted", {number(6)}, {}};
    if (dice < 180)
        return {"visible", {number(2)}, {}};
    if (dice < 184)
        return {"resize", {}, {}};
    if (dice < 187)
        return {"language", {}, {}};
    if (dice < 190)
        return {"subtitle", {}, {}};
    if (dice < 193)
        return {"conflict", {one_of("10", "10", "2")}, {}};
    if (dice < 195)
        return {"null-record", {}, {}};
    if (dice < 197)
        return {"power", {one_of("poweroff", "standby", "wakeup", "state")}, {}};
    if (dice < 198)
        return {"pause", {}, {}};
    if (dice < 199)
        return {"resume", {}, {}};
    return one_in(3) ? Step{"terminate", {}, {}} : Step{"idle", {}, {}};
}

} // namespace

Steps make_sequence(uint64_t seed, int length)
{
    return Generator(seed, length).make();
}

} // namespace model
