// The productions on a bare context: character classes, references, an
// attribute, value resolution and token copies.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

// A context over the text with textEnd on unit `last` (the last unit if negative).
struct Bare {
    Units text;
    ProduceContext context{};
    explicit Bare(std::u16string_view s, int last = -1) : text(units(s)) {
        context.textStart = context.cursor = text.data();
        context.textEnd = text.data() + (last < 0 ? static_cast<int>(s.size()) - 1 : last);
    }
    std::ptrdiff_t cursor() const { return context.cursor - text.data(); }
};

}  // namespace

TEST(Productions, CharacterClassesAreExactlyTheTable) {
    const auto path = std::filesystem::path(VRKXML_SHARED_DIR) / "xml-char-classes.txt";
    std::ifstream in(path);
    if (!in) GTEST_SKIP() << "character class table not found at " << path;
    const std::array<std::string, 5> names{"BaseChar", "Ideographic", "CombiningChar", "Digit", "Extender"};
    std::array<std::vector<bool>, 8> sets;  // the five, then Letter, NCNameChar, NameChar
    sets.fill(std::vector<bool>(65536, false));
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string name, first, last;
        fields >> name >> first >> last;
        const auto index = static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
        ASSERT_LT(index, names.size()) << line;
        for (unsigned long u = std::stoul(first, nullptr, 16); u <= std::stoul(last, nullptr, 16); ++u) sets[index][u] = true;
    }
    // Values and runs of each class, so that a damaged table shows.
    const std::pair<int, int> sizes[] = {{13602, 201}, {20912, 3}, {437, 86}, {149, 15}, {18, 10}};
    for (std::size_t i = 0, values = 0, runs = 0; i < names.size(); ++i, values = runs = 0) {
        for (std::size_t u = 0; u < 65536; ++u) values += sets[i][u], runs += sets[i][u] && (u == 0 || !sets[i][u - 1]);
        EXPECT_EQ(std::make_pair(static_cast<int>(values), static_cast<int>(runs)), sizes[i]) << names[i];
    }
    for (std::size_t u = 0; u < 65536; ++u) {
        sets[5][u] = sets[0][u] || sets[1][u];
        sets[6][u] = sets[5][u] || sets[2][u] || sets[3][u] || sets[4][u] || u == '-' || u == '.' || u == '_';
        sets[7][u] = sets[6][u] || u == ':';
    }
    int32_t (*const produce[])(ProduceContext *) = {Produce_BaseChar, Produce_Ideographic, Produce_CombiningChar,
                                                    Produce_Digit,    Produce_Extender,    Produce_Letter,
                                                    Produce_NCNameChar, Produce_NameChar};
    for (std::size_t p = 0; p < 8; ++p) {
        std::ostringstream wrong;
        int wrongCount = 0;
        for (uint32_t value = 0; value < 65536; ++value) {
            UniChar buffer[2] = {static_cast<UniChar>(value), 0};
            ProduceContext context{};
            context.cursor = context.textEnd = buffer;
            const bool member = sets[p][value];
            if ((produce[p](&context) != (member ? PRODUCE_OK : PRODUCE_NO_MATCH) || context.cursor != buffer + member) &&
                ++wrongCount <= 8)
                wrong << " 0x" << std::hex << value;
        }
        EXPECT_EQ(wrongCount, 0) << "production " << p << " is wrong for" << wrong.str();
    }
}

TEST(Productions, References) {
    const struct {
        std::u16string text;
        UniChar unit;           // the character node's value; 0 for no node
        std::ptrdiff_t cursor;  // 0: no match; with no unit the offset of ERR_CHAR_REF
    } rows[] = {
        {u"&lt;", '<', 4}, {u"&gt;x", '>', 4}, {u"&amp;", '&', 5}, {u"&apos;", '\'', 6}, {u"&quot;", '"', 6},
        {u"&LT;", 0, 0}, {u"&lt", 0, 0}, {u"&nbsp;", 0, 0}, {u"&", 0, 0}, {u"& #65;", 0, 0}, {u"&#65;", 'A', 5},
        {u"&#x41;", 'A', 6}, {u"&#x0041;", 'A', 8}, {u"&#0000065;", 'A', 10}, {u"&#xaB;", 0xAB, 6}, {u"&#xAb;", 0xAB, 6},
        {u"&#X41;", 0, 2}, {u"&#;", 0, 3}, {u"&#x;", 0, 4}, {u"&#a;", 0, 2}, {u"&#xg;", 0, 3}, {u"&#6a;", 0, 3},
        {u"&#0;", 0, 4}, {u"&#8;", 0, 4}, {u"&#9;", 9, 4}, {u"&#10;", 10, 5}, {u"&#11;", 0, 5}, {u"&#12;", 0, 5},
        {u"&#13;", 13, 5}, {u"&#31;", 0, 5}, {u"&#32;", 32, 5}, {u"&#xD7FF;", 0xD7FF, 8}, {u"&#xE000;", 0xE000, 8},
        {u"&#xFFFD;", 0xFFFD, 8}, {u"&#xD800;", 0, 8}, {u"&#xDFFF;", 0, 8}, {u"&#xFFFE;", 0, 8}, {u"&#xFFFF;", 0, 8},
        {u"&#x10000;", 0, 9}, {u"&#x10041;", 0, 9}, {u"&#65601;", 0, 8},  // not cut to 16 bits
        {u"&#x100000041;", 'A', 13}, {u"&#4294967361;", 'A', 13}, {u"&#65", 0, 4},
    };
    const UniChar name[] = {'e'};
    vrkDOMException exception{};
    for (const auto &row : rows) {
        Bare bare(row.text);
        vrkNode *element = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 1, &exception);
        bare.context.current = element;
        const int32_t result = row.unit ? PRODUCE_OK : row.cursor ? PRODUCE_ERROR : PRODUCE_NO_MATCH;
        const int32_t error = result == PRODUCE_ERROR ? ERR_CHAR_REF : 0;
        EXPECT_EQ(Produce_Reference(&bare.context, 1), result) << "row " << &row - rows;
        // Cursor, error record and the node made, in one line.
        EXPECT_EQ(errorAt(bare.context.error.code, bare.context.error.offset) + " " + std::to_string(bare.cursor()) +
                      " " + utf8(element->firstChild ? element->firstChild->value : nullptr),
                  errorAt(error, error ? static_cast<int32_t>(row.cursor) : 0) + " " + std::to_string(row.cursor) + " " +
                      utf8(row.unit ? units(std::u16string(1, row.unit)).data() : nullptr));
        vrkDOM_destroyNode(element, 1);
    }
}

TEST(Productions, AttributeOnAContextGivenByACaller) {
    const UniChar name[] = {'e'};
    vrkDOMException exception{};
    Bare bare(u"x='1' y='2' x=\"3\" ='4'");
    vrkNode *element = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 1, &exception);
    bare.context.current = element;
    for (const auto &[result, cursor] : {std::pair<int32_t, std::ptrdiff_t>{PRODUCE_OK, 5}, {PRODUCE_OK, 11},
                                         {PRODUCE_ERROR, 17}, {PRODUCE_NO_MATCH, 18}}) {
        Produce_S(&bare.context);
        EXPECT_EQ(Produce_Attribute(&bare.context), result);
        EXPECT_EQ(bare.cursor(), cursor);
    }
    // The second of two names stays in the map.
    EXPECT_EQ(errorAt(bare.context.error.code, bare.context.error.offset), errorAt(ERR_DUPLICATE_ATTRIBUTE, 17));
    EXPECT_EQ(describe(element), R"(e(x="3" y="2"))");
    vrkDOM_destroyNode(element, 1);

    // Regression: on a current that is no element the new attribute used to be left behind.
    Bare onText(u"x='1'");
    vrkNode *text = vrkDOMReal_createTextNode(__FILE__, __LINE__, name, 1, &exception);
    onText.context.current = text;
    const int64_t live = liveAllocations();
    EXPECT_EQ(Produce_Attribute(&onText.context), PRODUCE_ERROR);
    EXPECT_EQ(onText.context.error.code, ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(text->attributes.count, 0);
    EXPECT_EQ(liveAllocations(), live);
    vrkDOM_destroyNode(text, 1);
}

TEST(Productions, TokenCopiedFromAnOddAddress) {
    const std::u16string_view text = u"ab\u4E2Dcd\u00FFxy";
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[17]);  // no terminator behind
    for (std::size_t i = 0; i < 16; ++i) bytes[1 + i] = static_cast<unsigned char>(text[i / 2] >> (i % 2 * 8));
    auto *odd = reinterpret_cast<UniChar *>(bytes.get() + 1);
    for (std::size_t first : {0u, 3u, 7u})
        EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                      const Token token{odd + first, odd + 7};
                      UniChar *copy = tokenToString(&token);
                      EXPECT_EQ(str(copy), run.failed() ? std::u16string_view{} : text.substr(first));
                      std::free(copy);
                  }),
                  2);
}

TEST(Productions, ValueResolutionShrinksInPlace) {
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"no references > here", u"no references > here"}, {u"a&lt;b&#x41;&amp;amp;", u"a<bA&amp;"},
        {u"&#38;#65;&#x26;lt;&quot;&apos;&gt;", u"&#65;&lt;\"'>"}, {u"x&y&nope;&#;&#1;&#65&", u"x&y&nope;&#;&#1;&#65&"},
        {u"&#1;&lt;", u"&#1;<"}};
    for (const auto &[value, resolved] : rows) {
        auto *copy = static_cast<UniChar *>(std::malloc((value.size() + 1) * sizeof(UniChar)));
        *std::copy(value.begin(), value.end(), copy) = 0;
        UniChar *out = nullptr;
        // Without a reference the same block, else one shrink and no second buffer.
        const bool same = &value == &rows[0].first;
        EXPECT_EQ(countAllocations([&] { out = AttrValueRefResolve(copy); }), same ? 0 : 1) << &value - &rows[0].first;
        EXPECT_TRUE(!same || out == copy);
        EXPECT_EQ(str(out), resolved);
        std::free(out);
    }
}
