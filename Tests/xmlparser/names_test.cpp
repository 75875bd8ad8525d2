// Character classes, names, white space and the equals sign: the pure
// recognisers at the bottom of the grammar.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/unitext.h"

using namespace vrktest;

namespace {

// A context in which only cursor and textEnd are set, as a caller outside
// the parser gives it.  textEnd is the last unit unless `last` says earlier.
struct NameText {
    Units text;
    ProduceContext context{};
    explicit NameText(std::u16string_view units_, std::optional<std::size_t> last = std::nullopt) : text(units(units_)) {
        context.cursor = text.data();
        context.textEnd = text.data() + last.value_or(units_.size() - 1);
    }
    std::ptrdiff_t cursor() const { return context.cursor - text.data(); }
};

using SetOfUnits = std::vector<bool>;  // indexed by unit value

}  // namespace

TEST(NameProductions, CharacterClassesAreExactlyTheTable) {
    const auto path = std::filesystem::path(VRKXML_SHARED_DIR) / "xml-char-classes.txt";
    std::ifstream in(path);
    if (!in) GTEST_SKIP() << "character class table not found at " << path;

    const std::array<std::string, 5> names{"BaseChar", "Ideographic", "CombiningChar", "Digit", "Extender"};
    std::array<SetOfUnits, 5> sets;
    sets.fill(SetOfUnits(65536, false));
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string name, first, last;
        fields >> name >> first >> last;
        const auto index = static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
        ASSERT_LT(index, names.size()) << line;
        for (unsigned long unit = std::stoul(first, nullptr, 16); unit <= std::stoul(last, nullptr, 16); ++unit) {
            sets[index][unit] = true;
        }
    }
    // Runs come from the set: adjacent lines of the table may join.
    const std::array<std::pair<int, int>, 5> sizes{{{13602, 201}, {20912, 3}, {437, 86}, {149, 15}, {18, 10}}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        int values = 0, runs = 0;
        for (std::size_t unit = 0; unit < 65536; ++unit) {
            values += sets[i][unit];
            runs += sets[i][unit] && (unit == 0 || !sets[i][unit - 1]);
        }
        EXPECT_EQ(values, sizes[i].first) << names[i];
        EXPECT_EQ(runs, sizes[i].second) << names[i];
    }

    SetOfUnits letter(65536), ncNameChar(65536), nameChar(65536);
    for (std::size_t unit = 0; unit < 65536; ++unit) {
        letter[unit] = sets[0][unit] || sets[1][unit];
        ncNameChar[unit] = letter[unit] || sets[2][unit] || sets[3][unit] || sets[4][unit] || unit == '-' ||
                           unit == '.' || unit == '_';
        nameChar[unit] = ncNameChar[unit] || unit == ':';
    }
    const struct {
        const char *name;
        int32_t (*produce)(ProduceContext *);
        const SetOfUnits &accepted;
    } productions[] = {
        {"BaseChar", Produce_BaseChar, sets[0]},         {"Ideographic", Produce_Ideographic, sets[1]},
        {"CombiningChar", Produce_CombiningChar, sets[2]}, {"Digit", Produce_Digit, sets[3]},
        {"Extender", Produce_Extender, sets[4]},         {"Letter", Produce_Letter, letter},
        {"NCNameChar", Produce_NCNameChar, ncNameChar},  {"NameChar", Produce_NameChar, nameChar},
    };
    for (const auto &production : productions) {
        std::ostringstream wrong;
        int wrongCount = 0;
        for (uint32_t value = 0; value < 65536; ++value) {
            UniChar buffer[2] = {static_cast<UniChar>(value), 0};
            ProduceContext context{};
            context.cursor = context.textEnd = buffer;
            const bool accepted = production.accepted[value];
            const bool right = production.produce(&context) == (accepted ? PRODUCE_OK : PRODUCE_NO_MATCH) &&
                               context.cursor == buffer + (accepted ? 1 : 0);
            if (!right && ++wrongCount <= 8) wrong << " 0x" << std::hex << value;
        }
        EXPECT_EQ(wrongCount, 0) << production.name << " is wrong for" << wrong.str();
    }
}

TEST(NameProductions, NamesEndWhereTheirCharactersEnd) {
    const struct {
        int32_t (*produce)(ProduceContext *);
        std::u16string text;
        std::optional<std::size_t> last;  // textEnd ahead of the real end of the text
        int32_t result;
        std::ptrdiff_t cursor;
    } rows[] = {
        {Produce_NCName, u"a-1.b/", {}, PRODUCE_OK, 5},    {Produce_NCName, u"_", {}, PRODUCE_OK, 1},
        {Produce_NCName, u"-a", {}, PRODUCE_NO_MATCH, 0},   {Produce_NCName, u"1a", {}, PRODUCE_NO_MATCH, 0},
        {Produce_NCName, u"\u0300a", {}, PRODUCE_NO_MATCH, 0}, {Produce_NCName, u"\u00B7a", {}, PRODUCE_NO_MATCH, 0},
        {Produce_NCName, u":", {}, PRODUCE_NO_MATCH, 0},    {Produce_NCName, u"a:b", {}, PRODUCE_OK, 1},
        {Produce_NCName, u"a\u00D7b", {}, PRODUCE_OK, 1},   {Produce_NCName, u"ab\xD800\xDC00", {}, PRODUCE_OK, 2},
        {Produce_NCName, u"\u4E00\u0660\u3005x", {}, PRODUCE_OK, 4}, {Produce_NCName, u"abc", 1, PRODUCE_OK, 2},
        {Produce_Name, u":", {}, PRODUCE_OK, 1},            {Produce_Name, u"a:b:c=", {}, PRODUCE_OK, 5},
        {Produce_Name, u".a", {}, PRODUCE_NO_MATCH, 0},     {Produce_Name, u"ab:c", 0, PRODUCE_OK, 1},
        {Produce_Name, u"a:b", 0, PRODUCE_OK, 2},  // a colon is read without the bound
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        NameText text(row.text, row.last);
        EXPECT_EQ(row.produce(&text.context), row.result);
        EXPECT_EQ(text.cursor(), row.cursor);
    }
}

TEST(NameProductions, QualifiedNameOutcomes) {
    const struct {
        std::u16string text;
        std::optional<std::size_t> last;
        int32_t result;
        std::u16string qualified, prefix, local;  // prefix empty: null tokens
        std::ptrdiff_t cursor;
    } rows[] = {
        {u"a:b=", {}, PRODUCE_OK, u"a:b", u"a", u"b", 3},
        {u"ab=", {}, PRODUCE_OK, u"ab", u"", u"ab", 2},
        {u"a:b:c=", {}, PRODUCE_OK, u"a:b", u"a", u"b", 3},
        {u"xmlns:XML", {}, PRODUCE_OK, u"xmlns:XML", u"xmlns", u"XML", 9},
        {u"a:bc", 2, PRODUCE_OK, u"a:b", u"a", u"b", 3},
        {u"a:1", {}, PRODUCE_NO_MATCH, u"", u"", u"", 0},
        {u"a:", {}, PRODUCE_NO_MATCH, u"", u"", u"", 0},
        {u":a", {}, PRODUCE_NO_MATCH, u"", u"", u"", 0},
        {u"1a", {}, PRODUCE_NO_MATCH, u"", u"", u"", 0},
        {u"a:\xDC00", {}, PRODUCE_NO_MATCH, u"", u"", u"", 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        NameText text(row.text, row.last);
        Token qualified{}, prefix{}, local{};
        ASSERT_EQ(Produce_QName(&text.context, &qualified, &prefix, &local), row.result);
        EXPECT_EQ(text.cursor(), row.cursor);
        if (row.result != PRODUCE_OK) continue;
        EXPECT_EQ(str(qualified), row.qualified);
        EXPECT_EQ(str(local), row.local);
        EXPECT_EQ(prefix.start == nullptr ? u"" : str(prefix), row.prefix);
        EXPECT_EQ(prefix.start == nullptr, prefix.end == nullptr);
    }
}

TEST(NameProductions, WhiteSpaceAndEquals) {
    const struct {
        int32_t (*produce)(ProduceContext *);
        std::u16string text;
        int32_t result;
        std::ptrdiff_t cursor;
    } rows[] = {
        {Produce_S, u" \t\r\n x", PRODUCE_OK, 5},      {Produce_S, u"  ", PRODUCE_OK, 2},
        {Produce_S, u"x ", PRODUCE_NO_MATCH, 0},        {Produce_S, u"\v\f", PRODUCE_NO_MATCH, 0},
        {Produce_S, u"\u00A0", PRODUCE_NO_MATCH, 0},    {Produce_Eq, u"='v'", PRODUCE_OK, 1},
        {Produce_Eq, u" \t=\r\n'v'", PRODUCE_OK, 5},   {Produce_Eq, u" =", PRODUCE_OK, 2},
        {Produce_Eq, u"  'v'", PRODUCE_NO_MATCH, 0},    {Produce_Eq, u" \v= ", PRODUCE_NO_MATCH, 0},
        {Produce_Eq, u"==", PRODUCE_OK, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        NameText text(row.text);
        EXPECT_EQ(row.produce(&text.context), row.result);
        EXPECT_EQ(text.cursor(), row.cursor);
    }
}
