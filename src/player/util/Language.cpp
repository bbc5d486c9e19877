// From the system language to the suffix of subtitle files in that language.

#include "player/util/OstrelDemoUtil.h"

#include <cstdlib>
#include <cstring>

#include "player/util/Log.h"
#include "system_facts.h"

namespace {

struct stLanguage {
    char szLocale[20];
    char szSuffix[10];
};

// The first row whose locale occurs in the system language wins, so the order matters.
constexpr stLanguage LANGUAGES[] = {
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
    {"ckb_IQ", "_Sor"},  {"ku_TR", "_Kur"},          {"en_AU", "_Au"},
};
static_assert(sizeof(LANGUAGES) / sizeof(LANGUAGES[0]) == 87, "a language row is missing");

} // namespace

std::string COstrelDemoUtil::GetSystemLanguage()
{
    LOGI("");
    char *pLanguage = nullptr;
    if (runtime_info_get_value_string(RUNTIME_INFO_KEY_LANGUAGE, &pLanguage) != 0) {
        LOGE("Get System Language Failed");
        return "";
    }
    LOGI("%s", pLanguage != nullptr ? pLanguage : "(null)");
    const std::string strLanguage = pLanguage != nullptr ? pLanguage : "";
    free(pLanguage);

    for (const stLanguage &stRow : LANGUAGES) {
        if (strLanguage.find(stRow.szLocale) != std::string::npos)
            return stRow.szSuffix;
    }
    LOGW("%s, not find", strLanguage.c_str());
    return "";
}
