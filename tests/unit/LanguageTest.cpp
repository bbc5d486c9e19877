#include "player/util/OstrelDemoUtil.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"

namespace {

struct Row {
    const char *locale;
    const char *suffix;
};

// In the order of the table: the first row that fits wins.
constexpr Row ROWS[] = {
    {"ko_KR", "_Kor"},   {"en_US", "_EngUS"},        {"fr_CA", "_FraUS"}, {"es_MX", "_SpaUS"},
    {"pt_BR", "_PorUS"}, {"sq_AL", "_Alb"},          {"az_AZ", "_Aze"},   {"bs_BA", "_Bos"},
    {"bg_BG", "_Bul"},   {"hr_HR", "_Cro"},          {"cs_CZ", "_Cze"},   {"da_DK", "_Dan"},
    {"nl_NL", "_Dut"},   {"et_EE", "_Est"},          {"fi_FI", "_Fin"},   {"fr_FR", "_Fra"},
    {"de_DE", "_Deu"},   {"el_GR", "_Gre"},          {"hu_HU", "_Hun"},   {"it_IT", "_Ita"},
    {"kk_KZ", "_Kaz"},   {"lv_LV", "_Lat"},          {"lt_LT", "_Ltu"},   {"mk_MK", "_Mac"},
    {"nn_NO", "_Nor"},   {"en_GB", "_Eng"},          {"pl_PL", "_Pol"},   {"pt_PT", "_Por"},
    {"ro_RO", "_Rom"},   {"ru_RU", "_Rus"},          {"sr_RS", "_Ser"},   {"sk_SK", "_Slk"},
    {"sl_SI", "_Slv"},   {"es_ES", "_Spa"},          {"sv_SE", "_Swe"},   {"tr_TR", "_Tur"},
    {"uk_UA", "_Ukr"},   {"uz_UZ@cyrillic", "_Uzb"}, {"zh_CN", "_Chi"},   {"zh_HK", "_Hkg"},
    {"zh_TW", "_Tpe"},   {"th_TH", "_Tha"},          {"ar_AE", "_Arb"},   {"fa_IR", "_Fsi"},
    {"he_IL", "_Heb"},   {"id_ID", "_Ind"},          {"ms_MY", "_Mal"},   {"vi_VN", "_Vie"},
    {"as_IN", "_Asm"},   {"bn_IN", "_Ben"},          {"bh_IN", "_Bhi"},   {"gu_IN", "_Guj"},
    {"kn_IN", "_Kan"},   {"ks_IN", "_Kas"},          {"kok_IN", "_Kon"},  {"ml_IN", "_Mym"},
    {"mai_IN", "_Mai"},  {"mni_IN", "_Man"},         {"mr_IN", "_Mar"},   {"ne_NP", "_Nep"},
    {"or_IN", "_Ori"},   {"pa_PK", "_Pun"},          {"sat_IN", "_San"},  {"sa_IN", "_Sas"},
    {"sd_IN", "_Sin"},   {"ta_IN", "_Tam"},          {"te_IN", "_Tel"},   {"tu_IN", "_Tul"},
    {"hi_IN", "_Dev"},   {"ur_PK", "_Urd"},          {"af_ZA", "_Afr"},   {"zu_ZA", "_Zul"},
    {"sw_KE", "_Swa"},   {"am_ET", "_Amh"},          {"yo_NG", "_Yor"},   {"ig_NG", "_Igb"},
    {"ha_NG", "_Hau"},   {"xh_ZA", "_Xho"},          {"mn_MN", "_Mon"},   {"ja_JP", "_Jpn"},
    {"hy_AM", "_Arm"},   {"ka_GE", "_Geo"},          {"my_MM", "_Bur"},   {"km_KH", "_Khm"},
    {"ckb_IQ", "_Sor"},  {"ku_TR", "_Kur"},          {"en_AU", "_Au"}};

class LanguageTest : public testing::Test {
  protected:
    LanguageTest() : fake_(fake::reset()) {}
    ~LanguageTest() override { EXPECT_THAT(fake_.leftovers(), testing::IsEmpty()); }

    std::string suffix_of(const std::string &language)
    {
        fake_.system.language = language;
        return COstrelDemoUtil::GetSystemLanguage();
    }

    // What reading a language leaves; the text is released before the table is searched.
    static Lines read_lines(const std::string &language)
    {
        return {"I \"\"", "runtime_info_get_value_string(1)", "I \"" + language + "\"",
                "free(text from runtime_info_get_value_string)"};
    }

    static Lines not_found(const std::string &language)
    {
        Lines lines = read_lines(language);
        lines.push_back("W \"" + language + ", not find\"");
        return lines;
    }

    fake::Platform &fake_;
};

class LanguageTableTest : public LanguageTest, public testing::WithParamInterface<Row> {};

TEST_P(LanguageTableTest, TheLocaleYieldsItsSuffix)
{
    EXPECT_EQ(suffix_of(GetParam().locale), GetParam().suffix);

    EXPECT_EQ(fake_.all(), read_lines(GetParam().locale));
}

TEST_P(LanguageTableTest, AnEncodingBehindTheLocaleMakesNoDifference)
{
    EXPECT_EQ(suffix_of(std::string(GetParam().locale) + ".UTF-8"), GetParam().suffix);
}

INSTANTIATE_TEST_SUITE_P(All, LanguageTableTest, testing::ValuesIn(ROWS));

TEST_F(LanguageTest, TheTableHas87Rows)
{
    EXPECT_EQ(std::size(ROWS), 87U);
}

// No fall-back to the language alone, and no other case.
TEST_F(LanguageTest, ALocaleOutsideTheTableIsNotFound)
{
    for (const char *language : {"en_IE", "de_AT", "de", "ko_kr", "KO_KR", "uz_UZ", ""}) {
        fake_.forget();
        EXPECT_EQ(suffix_of(language), "");
        EXPECT_EQ(fake_.all(), not_found(language));
    }
}

TEST_F(LanguageTest, UzbekNeedsItsModifier)
{
    EXPECT_EQ(suffix_of("uz_UZ@cyrillic"), "_Uzb");
    EXPECT_EQ(suffix_of("uz_UZ@cyrillic.UTF-8"), "_Uzb");
}

TEST_F(LanguageTest, TheLocaleIsFoundAnywhereInTheText)
{
    EXPECT_EQ(suffix_of("LANG=de_DE.UTF-8"), "_Deu");
}

TEST_F(LanguageTest, OfTwoLocalesTheEarlierRowWins)
{
    EXPECT_EQ(suffix_of("fr_FR:en_US"), "_EngUS");
}

TEST_F(LanguageTest, ALanguageThatCannotBeReadYieldsNothing)
{
    fake_.fail("runtime_info_get_value_string");

    EXPECT_EQ(suffix_of("ko_KR"), "");

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "runtime_info_get_value_string(1)",
                                      "E \"Get System Language Failed\""));
}

TEST_F(LanguageTest, ANullTextCountsAsEmpty)
{
    fake_.system.language_missing = true;

    EXPECT_EQ(suffix_of("ko_KR"), "");

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "runtime_info_get_value_string(1)", "I \"(null)\"",
                                      "W \", not find\""));
}

} // namespace
