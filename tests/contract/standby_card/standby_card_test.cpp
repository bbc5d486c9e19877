// The standby card: what it says, and that all of it can be read on every panel.
//
// STANDBY_PICTURES=FOLDER keeps the pictures, for somebody who reads these languages.

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

#include <Ecore_Evas.h>
#include <Edje.h>
#include <Efreet.h>
#include <gmock/gmock.h>

#include "standby_card/standby_card.h"
#include "store_support/scratch.h"
#include "system_facts/language.h"
#include "system_facts/message_catalogue.h"

using namespace testing;
using namespace platform;
using Kind = StandbyMessage::Kind;

namespace {

const std::vector<std::string> LANGUAGES = {"ar_AE", "de_DE", "en_US", "es_ES", "fr_FR", "he_IL",
                                            "hi_IN", "it_IT", "ja_JP", "ko_KR", "pl_PL", "pt_BR",
                                            "ru_RU", "th_TH", "tr_TR", "vi_VN", "zh_CN", "zh_TW"};

const std::map<std::string, Size> PANELS = {{"landscape", {960, 540}}, {"portrait", {540, 960}}};

StandbyMessage no_content()
{
    return {Kind::NoContent, "/opt/data/demo_movie", {}};
}

/** As bad as it gets: long names in both directions, with spaces and without, and long reasons. */
StandbyMessage unplayable()
{
    const std::string long_reason(400, 'w');
    StandbyMessage message = {Kind::UnplayableFiles, "", {}};
    message.files = {{std::string(251, 'n') + ".mp4", long_reason},
                     {"A walk through the mountains and along the coast on the first day of a long "
                      "summer.mkv",
                      "The file is damaged, or of a kind that is not known."},
                     {"مشاهد من الطبيعة.mp4", "no film"},
                     {"서울의 밤.ts", "its first picture did not come within 15 s"},
                     {"b\xff<b>&amp;.avi", "no decoder for video/x-<something>"},
                     {"f.mp4", "no film"},
                     {"g.mp4", "no film"}};
    return message;
}

/** A card on a panel of its own, which is in memory. */
class DrawnCard {
  public:
    explicit DrawnCard(Size size)
        : size_(size), canvas_(ecore_evas_buffer_new(size.width, size.height)),
          card_(ecore_evas_get(canvas_.get()))
    {
        card_.resize(size);
    }

    std::vector<uint32_t> draw(const StandbyMessage &message)
    {
        card_.say(message);
        ecore_evas_manual_render(canvas_.get());
        const auto *pixels =
            static_cast<const uint32_t *>(ecore_evas_buffer_pixels_get(canvas_.get()));
        return {pixels, pixels + size_.area()};
    }

    bool fits() const { return card_.fits(); }

  private:
    const Size size_;
    const CanvasPtr canvas_;
    StandbyCard card_;
};

void keep(const std::string &name, const std::vector<uint32_t> &picture, Size size)
{
    const char *folder = std::getenv("STANDBY_PICTURES");
    if (!folder)
        return;
    std::ofstream file(std::string(folder) + "/" + name + ".ppm", std::ios::binary);
    file << "P6 " << size.width << " " << size.height << " 255\n";
    for (const uint32_t pixel : picture)
        file << static_cast<char>(pixel >> 16) << static_cast<char>(pixel >> 8)
             << static_cast<char>(pixel);
}

class StandbyCardTest : public Test {
  protected:
    static void speak(const std::string &language)
    {
        ASSERT_TRUE(set_language(language));
        choose_catalogue_language();
    }
};

/** The toolkit loses its engine when it is shut down and begun again; so once for all tests. */
class Toolkit : public Environment {
  public:
    void SetUp() override
    {
        setenv("OSTREL_DEMO_RESOURCE_DIR", BUILT_RESOURCE_DIR, 1);
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        efreet_cache_disable(); // it would start a daemon
        ecore_evas_init();
        edje_init();
        bind_message_catalogue();
    }
    void TearDown() override
    {
        ecore_main_loop_iterate(); // or what the toolkit has told itself is lost
        edje_shutdown();
        ecore_evas_shutdown();
    }
};

const Environment *const TOOLKIT = AddGlobalTestEnvironment(new Toolkit);

class EachPanel : public StandbyCardTest,
                  public WithParamInterface<std::pair<const std::string, Size>> {};

} // namespace

TEST_P(EachPanel, HasRoomForAllInEveryLanguage)
{
    const auto &[name, size] = GetParam();
    DrawnCard card(size);
    std::set<std::vector<uint32_t>> pictures;
    for (const std::string &language : LANGUAGES) {
        SCOPED_TRACE(language);
        speak(language);
        const std::map<std::string, StandbyMessage> messages = {
            {"moment", {}}, {"content", no_content()}, {"files", unplayable()}};
        for (const auto &[what, message] : messages) {
            const auto picture = card.draw(message);
            keep(what + "-" + name + "-" + language, picture, size);
            EXPECT_TRUE(card.fits()) << what;
            EXPECT_TRUE(pictures.insert(picture).second) << what << " looks like another";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Panels, EachPanel, ValuesIn(PANELS),
                         [](const auto &panel) { return panel.param.first; });

TEST_F(StandbyCardTest, SaysWhereContentBelongs)
{
    speak("en_US");
    const std::string markup = standby_markup(no_content(), 1);
    EXPECT_THAT(markup, HasSubstr("Copy videos or photos to"));
    EXPECT_THAT(markup, HasSubstr("/opt/data/demo_movie"));
    EXPECT_THAT(markup, HasSubstr(", or plug in a stick with a folder demo"));
    EXPECT_THAT(markup, Not(HasSubstr("A&gt;&gt;")));
}

TEST_F(StandbyCardTest, NamesTheFirstFilesWithTheirReasonsAndCountsTheOthers)
{
    const std::string markup = standby_markup(unplayable(), 5);
    EXPECT_THAT(markup, HasSubstr("The file is damaged, or of a kind that is not known."));
    EXPECT_THAT(markup, HasSubstr("서울의 밤.ts"));
    EXPECT_THAT(markup, HasSubstr("b\uFFFD&lt;b&gt;&amp;amp;.avi"));
    EXPECT_THAT(markup, Not(HasSubstr("f.mp4")));
    EXPECT_THAT(markup, HasSubstr("+ 2"));
    // Of a long name, beginning and end.
    EXPECT_THAT(markup, HasSubstr("nnn&hellip;nnn"));
    EXPECT_THAT(markup, HasSubstr("nnn.mp4"));
}

TEST_F(StandbyCardTest, APictureOfItLooksTheSame)
{
    speak("en_US");
    const Size size = PANELS.at("portrait");
    EXPECT_EQ(standby_picture(unplayable(), size), DrawnCard(size).draw(unplayable()));
}

TEST_F(StandbyCardTest, ADemoThatIsSwitchedOffHasNothingButTheName)
{
    EXPECT_EQ(standby_markup({Kind::SwitchedOff, "", {}}, 1), "<name>Ostrel demo player</name>");
}
