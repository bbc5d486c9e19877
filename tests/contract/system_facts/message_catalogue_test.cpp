// The language of the texts, from the locale to the catalogue that is looked into.

#include <clocale>
#include <libintl.h>
#include <string>

#include <gtest/gtest.h>

#include "store_support/scratch.h"
#include "system_facts/message_catalogue.h"

namespace {

using store_test::Environment;

class MessageCatalogueTest : public testing::Test {
  protected:
    ~MessageCatalogueTest() override { setlocale(LC_ALL, "C"); }

    static std::string off() { return dgettext("ostrel-demo-player-tv", "SID_OFF"); }

    // The settings of the process are read once, so all tests name the same folder.
    const Environment resources_{"OSTREL_DEMO_RESOURCE_DIR", BUILT_RESOURCE_DIR};
    const Environment language_{"LANGUAGE"};
    const Environment messages_{"LC_MESSAGES"};
};

TEST_F(MessageCatalogueTest, TextsAreInTheSetsLanguageFromTheStart)
{
    const Environment locale("LC_ALL", "ko_KR.UTF-8");
    platform::bind_message_catalogue();
    EXPECT_EQ(off(), "꺼짐");
}

TEST_F(MessageCatalogueTest, TextsFollowAChangeOfTheLanguage)
{
    const Environment locale("LC_ALL", "de_DE");
    platform::bind_message_catalogue();
    EXPECT_EQ(off(), "Aus");
    const Environment other("LC_ALL", "ko_KR");
    platform::choose_catalogue_language();
    EXPECT_EQ(off(), "꺼짐");
}

TEST_F(MessageCatalogueTest, ACountryWithoutTextsOfItsOwnHasThoseOfItsRelative)
{
    const Environment locale("LC_ALL", "pt_BR");
    platform::bind_message_catalogue();
    const std::string of_relative = off();
    const Environment other("LC_ALL", "pt_PT");
    platform::choose_catalogue_language();
    EXPECT_EQ(off(), of_relative);
}

TEST_F(MessageCatalogueTest, ALanguageWithoutTextsHasEnglishOnes)
{
    const Environment locale("LC_ALL", "nl_NL");
    platform::bind_message_catalogue();
    EXPECT_EQ(off(), "Off");
}

} // namespace
