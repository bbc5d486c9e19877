// The table of key names.

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <sstream>

#include <gmock/gmock.h>

#include "player_rules/key_names.h"
#include "set_keys.h"
#include "store_support/scratch.h"

namespace platform {
namespace {

const std::map<std::string, std::string> NOTHING;

TEST(KeyNamesTest, TheSetHasEachKeyOnceAndItFitsAKeyList)
{
    std::set<std::string> seen;
    for (const char *name : tv_key_names()) {
        EXPECT_TRUE(seen.insert(name).second) << name << " twice";
        EXPECT_LT(std::string(name).size(), 32u) << name;
    }
    EXPECT_LE(seen.size(), 256u);
}

TEST(KeyNamesTest, TranslationsLeadToKeysOfTheSet)
{
    for (const auto &[typed, name] : default_key_translations())
        EXPECT_TRUE(is_tv_key_name(name)) << typed << " leads to " << name;
}

TEST(KeyNamesTest, ThePlayersOwnKeysAreNeverRenamed)
{
    for (const set_keys::Key &key : set_keys::USED) {
        EXPECT_TRUE(is_tv_key_name(key.name)) << key.name;
        EXPECT_EQ(translate_key(key.name, key.name, NOTHING), nullptr) << key.name;
    }
}

TEST(KeyNamesTest, AnUnknownOrMissingNameStays)
{
    EXPECT_EQ(translate_key("F12", "F12", NOTHING), nullptr);
    EXPECT_EQ(translate_key("", "", NOTHING), nullptr);
    EXPECT_EQ(translate_key(nullptr, nullptr, NOTHING), nullptr);
    EXPECT_FALSE(is_tv_key_name("xf86back"));
}

TEST(KeyNamesTest, TheNameWithModifiersGoesFirst)
{
    EXPECT_STREQ(translate_key("p", "P", NOTHING), "XF86AudioPlay");
    EXPECT_STREQ(translate_key("p", "Escape", NOTHING), "XF86Back");
}

TEST(KeyNamesTest, AConfiguredNameGoesBeforeTheTable)
{
    const std::map<std::string, std::string> configured = {
        {"Escape", "XF86Exit"}, {"F1", "0"}, {"XF86AudioNext", "XF86NextChapter"}};
    EXPECT_STREQ(translate_key("Escape", "Escape", configured), "XF86Exit");
    EXPECT_STREQ(translate_key("F1", "F1", configured), "0");
    EXPECT_STREQ(translate_key("XF86AudioNext", "XF86AudioNext", configured), "XF86NextChapter");
    EXPECT_STREQ(translate_key("f", "f", configured), "XF86AudioNext");
    EXPECT_STREQ(translate_key("space", "space", configured), "XF86PlayBack");
}

/** The cells of the README's table of keys: names of the set's keys, and keys of a PC keyboard. */
struct Row {
    std::string text;
    std::set<std::string> names;
    std::vector<std::string> typed;
};

/** The parts of a text between any of the separators, without blanks and backticks around them. */
std::vector<std::string> parts(const std::string &text, const char *separators)
{
    std::vector<std::string> found;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find_first_of(separators, begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        const size_t first = part.find_first_not_of(" `");
        if (first != std::string::npos)
            found.push_back(part.substr(first, part.find_last_not_of(" `") - first + 1));
        begin = end + 1;
    }
    return found;
}

std::vector<Row> staff_table()
{
    std::istringstream lines(store_test::read_file(README));
    std::vector<Row> rows;
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("| On a PC keyboard |") != std::string::npos)
            inside = true;
        else if (inside && line.empty())
            break;
        else if (inside && line.compare(0, 4, "|---") != 0) {
            const std::vector<std::string> cells = parts(line, "|");
            Row row = {line, {}, parts(cells.at(1), ",;")};
            const std::vector<std::string> pieces = parts(cells.at(0), "`(), ");
            std::copy_if(pieces.begin(), pieces.end(), std::inserter(row.names, row.names.end()),
                         is_tv_key_name);
            rows.push_back(row);
        }
    }
    return rows;
}

/** What the toolkit calls a key that a person knows by the label on it. */
std::string keysym(const std::string &label)
{
    static const std::map<std::string, std::string> labels = {
        {"Enter", "Return"},    {"Backspace", "BackSpace"}, {"Page Up", "Prior"},
        {"Page Down", "Next"},  {"Space", "space"},         {"Shift+Tab", "ISO_Left_Tab"},
        {"Arrow Left", "Left"}, {"Arrow Right", "Right"},   {"Arrow Up", "Up"},
        {"Arrow Down", "Down"},
    };
    const auto known = labels.find(label);
    if (known != labels.end())
        return known->second;
    return label.size() == 1 ? std::string(1, static_cast<char>(std::tolower(label[0]))) : label;
}

std::string as_the_player_sees(const std::string &label)
{
    const std::string name = keysym(label);
    const char *translated = translate_key(name.c_str(), name.c_str(), NOTHING);
    return translated ? translated : name;
}

TEST(StaffTableTest, EveryKeyOfThePlayerCanBeTypedAsTheReadmeSays)
{
    const std::vector<Row> rows = staff_table();
    ASSERT_GT(rows.size(), 5u) << "the README has no table of keys";
    std::set<std::string> reached;
    for (const Row &row : rows) {
        for (const std::string &label : row.typed)
            reached.insert(as_the_player_sees(label));
        for (const std::string &name : row.names) {
            EXPECT_TRUE(
                std::any_of(row.typed.begin(), row.typed.end(),
                            [&](const auto &label) { return as_the_player_sees(label) == name; }))
                << name << " is not typed by any key of its line: " << row.text;
        }
    }
    for (const set_keys::Key &key : set_keys::USED)
        EXPECT_EQ(reached.count(key.name), 1u) << key.name << " is missing in the README";
}

TEST(StaffTableTest, NoKeyOfTheReadmeDoesSomethingElseThanItsLineSays)
{
    // Arrows are previous and next as the keys of these names are.
    const std::map<std::string, std::string> same = {{"Left", "XF86PreviousChapter"},
                                                     {"Right", "XF86NextChapter"}};
    for (const Row &row : staff_table()) {
        for (const std::string &label : row.typed) {
            std::string name = as_the_player_sees(label);
            if (row.names.count(name) == 0 && same.count(name) == 1)
                name = same.at(name);
            EXPECT_EQ(row.names.count(name), 1u)
                << label << " is " << name << ", which is not in its line: " << row.text;
        }
    }
}

} // namespace
} // namespace platform
