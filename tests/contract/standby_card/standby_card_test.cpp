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

/** As bad as it gets: all the reasons, long names in both directions, with spaces and without. */
StandbyMessage unplayable()
{
    using Why = UnplayableFile::Kind;
    StandbyMessage message = {Kind::UnplayableFiles, "", {}};
    message.files = {
        {"/demo/" + std::string(251, 'n') + ".mp4", "it is a photo", Why::Damaged},
        {"/demo/A walk through the mountains and along the coast on the first day of a long "
         "summer.mkv",
         "no decoder is installed for it (H.264)", Why::NoDecoder},
        {"/demo/مشاهد من الطبيعة.mp4", "there is no such file", Why::Unreadable},
        {"/demo/서울의 밤.ts", "its first frame does not come", Why::TooSlow},
        {"/demo/b\xff<b>&amp;\u202e\n.avi", "there is no thread to open it", Why::Refused},
        {"/demo/f.mp4", "it has no picture", Why::Damaged},
        {"/demo/g.mp4", "it has no picture", Why::Damaged}};
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
            {"moment", {}},
            {"again", {Kind::BeginsAgain, "", {}}},
            {"off", {Kind::SwitchedOff, "", {}}},
            {"content", no_content()},
            {"files", unplayable()}};
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
    const std::string markup = standby_markup(no_content(), 1, false);
    EXPECT_THAT(markup, HasSubstr("Copy videos or photos to"));
    EXPECT_THAT(markup, HasSubstr("/\u2060opt/\u2060data/\u2060demo_movie")) << "in one piece";
    EXPECT_THAT(markup, HasSubstr(", or plug in a stick with a folder demo"));
    EXPECT_THAT(markup, Not(HasSubstr("A&gt;&gt;")));
    EXPECT_THAT(markup, Not(HasSubstr("portrait_")));
    EXPECT_THAT(standby_markup(no_content(), 1, true),
                AllOf(StartsWith(markup), HasSubstr("begin with &lrm;portrait_")));
}

TEST_F(StandbyCardTest, NamesTheFirstFilesWithTheirReasonsAndCountsTheOthers)
{
    const std::string markup = standby_markup(unplayable(), 5, false);
    EXPECT_THAT(markup, HasSubstr("summer.mkv</file><ps/><why>No decoder for it is installed<"));
    EXPECT_THAT(markup, HasSubstr("<file>서울의 밤.ts</file><ps/><why>Takes too long to read<"));
    EXPECT_THAT(markup, HasSubstr("<file>b\\xff&lt;b&gt;&amp;amp;\\xe2\\x80\\xae\\n.avi<"));
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

TEST_F(StandbyCardTest, GivesEachKindOfReasonInEveryLanguage)
{
    for (const std::string &language : LANGUAGES) {
        speak(language);
        std::set<std::string> reasons;
        for (const UnplayableFile &file : unplayable().files)
            reasons.insert(
                standby_markup({Kind::UnplayableFiles, "", {{"a", "", file.kind}}}, 1, false));
        EXPECT_EQ(reasons.size(), 5u) << language;
        for (const std::string &markup : reasons)
            EXPECT_THAT(markup, Not(HasSubstr("STANDBY_"))) << language;
    }
}
