#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "settings/settings.h"
#include "settings/tv_conf.h"
#include "store_support/scratch.h"
#include "system_facts.h"
#include "system_facts/language.h"

namespace {

using store_test::Environment;

constexpr char DISCLAIMER[] = "com.norvane/featureconf/ostrel_demo_player.show_disclaimer";

// The settings of the process are read once, so the tests of this file share one configuration. It
// is written and named before the first test asks for it.
class SystemFacts : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        scratch_ = new store_test::ScratchDir;
        const Environment conf("OSTREL_DEMO_TV_CONF", *scratch_ / "tv.conf");
        store_test::write_file(*scratch_ / "tv.conf",
                               "[product]\ndisclaimer = yes\nstore_content_type = 1\n");
        platform::Settings::get();
    }
    static void TearDownTestSuite()
    {
        delete scratch_;
        scratch_ = nullptr;
    }

    static std::string language()
    {
        char *text = nullptr;
        EXPECT_EQ(runtime_info_get_value_string(RUNTIME_INFO_KEY_LANGUAGE, &text), 0);
        const std::unique_ptr<char, void (*)(void *)> owner(text, std::free);
        return text != nullptr ? text : "";
    }

    static store_test::ScratchDir *scratch_;
    Environment all_{"LC_ALL"};
    Environment messages_{"LC_MESSAGES"};
    Environment lang_{"LANG"};
};

store_test::ScratchDir *SystemFacts::scratch_ = nullptr;

TEST_F(SystemFacts, DisclaimerFeatureIsThatOfTvConf)
{
    bool value = false;
    EXPECT_EQ(system_info_get_custom_bool(DISCLAIMER, &value), 0);
    EXPECT_TRUE(value);
}

TEST_F(SystemFacts, UnknownFeatureFailsAndLeavesTheValue)
{
    bool value = true;
    EXPECT_LT(system_info_get_custom_bool("com.norvane/other", &value), 0);
    EXPECT_TRUE(value);
    EXPECT_LT(system_info_get_custom_bool(nullptr, &value), 0);
    EXPECT_LT(system_info_get_custom_bool(DISCLAIMER, nullptr), 0);
}

TEST_F(SystemFacts, StoreContentTypeIsThatOfTvConf)
{
    int value = 0;
    EXPECT_EQ(system_info_get_value_int(713, &value), 0);
    EXPECT_EQ(value, 1);
}

TEST_F(SystemFacts, UnknownNumberFailsAndLeavesTheValue)
{
    int value = 5;
    EXPECT_LT(system_info_get_value_int(712, &value), 0);
    EXPECT_EQ(value, 5);
    EXPECT_LT(system_info_get_value_int(713, nullptr), 0);
}

TEST_F(SystemFacts, LanguageIsThatOfTheLocale)
{
    EXPECT_EQ(language(), "en_US");
    const Environment lang("LANG", "de_DE.UTF-8");
    EXPECT_EQ(language(), "de_DE.UTF-8");
    const Environment messages("LC_MESSAGES", "fr_FR");
    EXPECT_EQ(language(), "fr_FR");
    const Environment all("LC_ALL", "ko_KR.UTF-8");
    EXPECT_EQ(language(), "ko_KR.UTF-8");
}

TEST_F(SystemFacts, NeutralLocaleMeansAmericanEnglish)
{
    for (const char *neutral : {"C", "POSIX", "C.UTF-8", ""}) {
        const Environment all("LC_ALL", neutral);
        EXPECT_EQ(language(), "en_US") << neutral;
    }
}

TEST_F(SystemFacts, OtherRuntimeTextsFailAndLeaveTheValue)
{
    char *text = nullptr;
    EXPECT_LT(runtime_info_get_value_string(2, &text), 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_LT(runtime_info_get_value_string(RUNTIME_INFO_KEY_LANGUAGE, nullptr), 0);
}

TEST_F(SystemFacts, MenusRunFromRightToLeftWhereTheLanguageIsWrittenSo)
{
    for (const char *locale :
         {"ar_AE", "he_IL.UTF-8", "fa_IR", "ur_PK", "ckb_IQ", "pa_PK", "pa_PK.UTF-8", "dv_MV",
          "iw_IL", "ks_IN", "nqo_GN", "ps_AF", "sd_PK", "syr_SY", "ug_CN", "yi_US"}) {
        const Environment all("LC_ALL", locale);
        EXPECT_EQ(ua_UI_orientation_get(), UI_ORIENTATION_RIGHT_TO_LEFT) << locale;
    }
    for (const char *locale : {"ko_KR", "en_US", "az_AZ", "pa_IN", "pa", "C"}) {
        const Environment all("LC_ALL", locale);
        EXPECT_EQ(ua_UI_orientation_get(), UI_ORIENTATION_LEFT_TO_RIGHT) << locale;
    }
}

TEST_F(SystemFacts, LanguageNamesAreCheckedForm)
{
    for (const char *good : {"ko_KR", "ckb_IQ", "de_DE.UTF-8", "uz_UZ@cyrillic"})
        EXPECT_TRUE(platform::is_language(good)) << good;
    for (const char *bad :
         {"", "ko", "ko_", "ko_K", "KO_kr", "ko-KR", "korean_KR", "ko_KR;x", "_KR"})
        EXPECT_FALSE(platform::is_language(bad)) << bad;
}

// Last, because there is no way back to the locale.
TEST_F(SystemFacts, LanguageSetAtRunTimeWins)
{
    const Environment all("LC_ALL", "ko_KR");
    EXPECT_FALSE(platform::set_language("nonsense"));
    EXPECT_EQ(language(), "ko_KR");
    EXPECT_TRUE(platform::set_language("ar_AE"));
    EXPECT_EQ(language(), "ar_AE");
    EXPECT_EQ(ua_UI_orientation_get(), UI_ORIENTATION_RIGHT_TO_LEFT);
}

} // namespace
