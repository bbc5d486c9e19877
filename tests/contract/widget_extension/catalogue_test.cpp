// Message catalogues: every language has every text, and every text its slots.

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

#include "widget_test.h"

using namespace testing;

namespace {

const std::string LANDSCAPE = "TV_SID_ZAVO_MIX_CAAUG_LANDSCAPE_TIMER_A_MINS";
const std::string PORTRAIT = "TV_SID_ZAVO_MIX_CAAUG_PORTRAIT_TIMER_A_MINS";

/** Text ids, and how many slots each text has to have. */
const std::map<std::string, int> SLOTS_OF_TEXT = {
    {"SID_OFF", 0},
    {"SID_ON", 0},
    {"SID_OK", 0},
    {"COM_HTS_SID_PLAY_ALL", 0},
    {"COM_SID_DEMO", 0},
    {"COM_ID_QUENDIRA_ROTATION", 0},
    {LANDSCAPE, 1},
    {LANDSCAPE + "_B_SEC", 2},
    {PORTRAIT, 1},
    {PORTRAIT + "_B_SEC", 2},
    {"TV_SID_ZAVO_MIX_CAAUG_RESET_P_L_TIMER_A_MINS", 1},
    {"STANDBY_ONE_MOMENT", 0},
    {"STANDBY_NO_CONTENT", 1},
    {"STANDBY_UPRIGHT_NAMES", 1},
    {"STANDBY_UNPLAYABLE_FILES", 0},
    {"STANDBY_SWITCHED_OFF", 0},
    {"STANDBY_BEGINS_AGAIN", 0},
    {"STANDBY_FILE_DAMAGED", 0},
    {"STANDBY_FILE_NO_DECODER", 0},
    {"STANDBY_FILE_UNREADABLE", 0},
    {"STANDBY_FILE_TOO_SLOW", 0},
    {"STANDBY_FILE_REFUSED", 0}};

std::uint32_t word_at(const std::string &bytes, std::size_t position)
{
    std::uint32_t word = 0;
    if (position + sizeof word <= bytes.size())
        std::memcpy(&word, bytes.data() + position, sizeof word);
    return word;
}

/** Reads a compiled catalogue: a table of ids and one of texts, each length and position. */
std::map<std::string, std::string> read_catalogue(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    std::map<std::string, std::string> texts;
    if (word_at(bytes, 0) != 0x950412de)
        return texts;
    const std::uint32_t count = word_at(bytes, 8);
    const std::uint32_t ids = word_at(bytes, 12);
    const std::uint32_t translations = word_at(bytes, 16);
    const auto text_at = [&bytes](std::uint32_t entry) {
        return bytes.substr(word_at(bytes, entry + 4), word_at(bytes, entry));
    };
    for (std::uint32_t i = 0; i < count; ++i)
        texts[text_at(ids + 8 * i)] = text_at(translations + 8 * i);
    return texts;
}

int occurrences(const std::string &text, const std::string &what)
{
    int count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

class CatalogueTest : public TestWithParam<const char *> {};

} // namespace

TEST_P(CatalogueTest, HasEveryTextWithItsSlots)
{
    const auto texts = read_catalogue(std::string(BUILT_RESOURCE_DIR) + "/locale/" + GetParam() +
                                      "/LC_MESSAGES/ostrel-demo-player-tv.mo");
    ASSERT_THAT(texts, Not(IsEmpty()));
    for (const auto &[id, slots] : SLOTS_OF_TEXT) {
        SCOPED_TRACE(id);
        const auto entry = texts.find(id);
        ASSERT_NE(entry, texts.end());
        const std::string &text = entry->second;
        EXPECT_THAT(text, Not(IsEmpty()));
        EXPECT_NE(text, id);
        EXPECT_EQ(occurrences(text, "<<A>>"), slots >= 1 ? 1 : 0) << text;
        EXPECT_EQ(occurrences(text, "<<B>>"), slots >= 2 ? 1 : 0) << text;
        EXPECT_EQ(occurrences(text, "<<"), slots) << text;
        EXPECT_TRUE(eina_unicode_utf8_get_len(text.c_str()) > 0);
    }
    // One entry more than the texts: the header.
    EXPECT_EQ(texts.size(), SLOTS_OF_TEXT.size() + 1);
    EXPECT_THAT(texts.at(""), HasSubstr("charset=UTF-8"));
}

INSTANTIATE_TEST_SUITE_P(Languages, CatalogueTest,
                         Values("en", "ko", "de", "fr", "es", "it", "pt_BR", "pl", "ru", "tr", "ar",
                                "he", "hi", "th", "vi", "zh_CN", "zh_TW", "ja"),
                         [](const auto &language) { return std::string(language.param); });
