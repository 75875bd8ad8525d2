// The productions on a bare context: character classes, names, white space,
// references, an attribute, value resolution, tokens and the namespace stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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
    const std::array<std::pair<int, int>, 5> sizes{{{13602, 201}, {20912, 3}, {437, 86}, {149, 15}, {18, 10}}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        int values = 0, runs = 0;
        for (std::size_t u = 0; u < 65536; ++u) values += sets[i][u], runs += sets[i][u] && (u == 0 || !sets[i][u - 1]);
        EXPECT_EQ(std::make_pair(values, runs), sizes[i]) << names[i];
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

TEST(Productions, NamesWhiteSpaceAndEquals) {
    const struct {
        int32_t (*produce)(ProduceContext *);
        std::u16string text;
        int last;  // textEnd ahead of the real end when not negative
        int32_t result;
        std::ptrdiff_t cursor;
    } rows[] = {
        {Produce_NCName, u"a-1.b/", -1, PRODUCE_OK, 5}, {Produce_NCName, u"_", -1, PRODUCE_OK, 1},
        {Produce_NCName, u"-a", -1, PRODUCE_NO_MATCH, 0}, {Produce_NCName, u"1a", -1, PRODUCE_NO_MATCH, 0},
        {Produce_NCName, u"\u0300a", -1, PRODUCE_NO_MATCH, 0}, {Produce_NCName, u"\u00B7a", -1, PRODUCE_NO_MATCH, 0},
        {Produce_NCName, u":", -1, PRODUCE_NO_MATCH, 0}, {Produce_NCName, u"a:b", -1, PRODUCE_OK, 1},
        {Produce_NCName, u"a\u00D7b", -1, PRODUCE_OK, 1}, {Produce_NCName, u"ab\xD800\xDC00", -1, PRODUCE_OK, 2},
        {Produce_NCName, u"\u4E00\u0660\u3005x", -1, PRODUCE_OK, 4}, {Produce_NCName, u"abc", 1, PRODUCE_OK, 2},
        {Produce_Name, u":", -1, PRODUCE_OK, 1}, {Produce_Name, u"a:b:c=", -1, PRODUCE_OK, 5},
        {Produce_Name, u".a", -1, PRODUCE_NO_MATCH, 0}, {Produce_Name, u"ab:c", 0, PRODUCE_OK, 1},
        {Produce_Name, u"a:b", 0, PRODUCE_OK, 2},  // a colon is read without the bound
        {Produce_S, u" \t\r\n x", -1, PRODUCE_OK, 5}, {Produce_S, u"  ", -1, PRODUCE_OK, 2},
        {Produce_S, u"x ", -1, PRODUCE_NO_MATCH, 0}, {Produce_S, u"\v\f", -1, PRODUCE_NO_MATCH, 0},
        {Produce_S, u"\u00A0", -1, PRODUCE_NO_MATCH, 0}, {Produce_Eq, u"='v'", -1, PRODUCE_OK, 1},
        {Produce_Eq, u" \t=\r\n'v'", -1, PRODUCE_OK, 5}, {Produce_Eq, u" =", -1, PRODUCE_OK, 2},
        {Produce_Eq, u"  'v'", -1, PRODUCE_NO_MATCH, 0}, {Produce_Eq, u" \v= ", -1, PRODUCE_NO_MATCH, 0},
        {Produce_Eq, u"==", -1, PRODUCE_OK, 1},
    };
    for (const auto &row : rows) {
        Bare bare(row.text, row.last);
        bare.context.textStart = nullptr;  // callers outside the parser give only cursor and textEnd
        EXPECT_EQ(row.produce(&bare.context), row.result) << "row " << &row - rows;
        EXPECT_EQ(bare.cursor(), row.cursor) << "row " << &row - rows;
    }
    // Qualified names: "qualified prefix local" (prefix "-" for null tokens) or no match.
    const struct {
        std::u16string text;
        int last;
        std::u16string expected;
        std::ptrdiff_t cursor;
    } qnames[] = {
        {u"a:b=", -1, u"a:b a b", 3}, {u"ab=", -1, u"ab - ab", 2}, {u"a:b:c=", -1, u"a:b a b", 3},
        {u"xmlns:XML", -1, u"xmlns:XML xmlns XML", 9}, {u"a:bc", 2, u"a:b a b", 3}, {u"a:1", -1, u"", 0},
        {u"a:", -1, u"", 0}, {u":a", -1, u"", 0}, {u"1a", -1, u"", 0}, {u"a:\xDC00", -1, u"", 0},
    };
    for (const auto &row : qnames) {
        Bare bare(row.text, row.last);
        Token qualified{}, prefix{}, local{};
        std::u16string got;
        if (Produce_QName(&bare.context, &qualified, &prefix, &local) == PRODUCE_OK) {
            EXPECT_EQ(prefix.start == nullptr, prefix.end == nullptr);
            got = str(qualified) + u" " + (prefix.start ? str(prefix) : u"-") + u" " + str(local);
        }
        EXPECT_EQ(got, row.expected) << "qname row " << &row - qnames;
        EXPECT_EQ(bare.cursor(), row.cursor) << "qname row " << &row - qnames;
    }
}

TEST(Productions, References) {
    const int32_t OK = PRODUCE_OK, NO = PRODUCE_NO_MATCH, ER = PRODUCE_ERROR;
    const struct {
        std::u16string text;
        int32_t result;
        UniChar unit;           // the character node's value on OK
        std::ptrdiff_t cursor;  // on ER also the offset of ERR_CHAR_REF
    } rows[] = {
        {u"&lt;", OK, '<', 4}, {u"&gt;x", OK, '>', 4}, {u"&amp;", OK, '&', 5}, {u"&apos;", OK, '\'', 6},
        {u"&quot;", OK, '"', 6}, {u"&LT;", NO, 0, 0}, {u"&lt", NO, 0, 0}, {u"&nbsp;", NO, 0, 0}, {u"&", NO, 0, 0},
        {u"& #65;", NO, 0, 0}, {u"&#65;", OK, 'A', 5}, {u"&#x41;", OK, 'A', 6}, {u"&#x0041;", OK, 'A', 8},
        {u"&#0000065;", OK, 'A', 10}, {u"&#xaB;", OK, 0xAB, 6}, {u"&#xAb;", OK, 0xAB, 6}, {u"&#X41;", ER, 0, 2},
        {u"&#;", ER, 0, 3}, {u"&#x;", ER, 0, 4}, {u"&#a;", ER, 0, 2}, {u"&#xg;", ER, 0, 3}, {u"&#6a;", ER, 0, 3},
        {u"&#0;", ER, 0, 4}, {u"&#8;", ER, 0, 4}, {u"&#9;", OK, 9, 4}, {u"&#10;", OK, 10, 5}, {u"&#11;", ER, 0, 5},
        {u"&#12;", ER, 0, 5}, {u"&#13;", OK, 13, 5}, {u"&#31;", ER, 0, 5}, {u"&#32;", OK, 32, 5},
        {u"&#xD7FF;", OK, 0xD7FF, 8}, {u"&#xE000;", OK, 0xE000, 8}, {u"&#xFFFD;", OK, 0xFFFD, 8},
        {u"&#xD800;", ER, 0, 8}, {u"&#xDFFF;", ER, 0, 8}, {u"&#xFFFE;", ER, 0, 8}, {u"&#xFFFF;", ER, 0, 8},
        {u"&#x10000;", ER, 0, 9}, {u"&#x10041;", ER, 0, 9}, {u"&#65601;", ER, 0, 8},  // not cut to 16 bits
        {u"&#x100000041;", OK, 'A', 13}, {u"&#4294967361;", OK, 'A', 13}, {u"&#65", ER, 0, 4},
    };
    const UniChar name[] = {'e'};
    vrkDOMException exception{};
    for (const auto &row : rows) {
        Bare bare(row.text);
        vrkNode *element = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 1, &exception);
        bare.context.current = element;
        EXPECT_EQ(Produce_Reference(&bare.context, 1), row.result) << "row " << &row - rows;
        EXPECT_EQ(bare.cursor(), row.cursor) << "row " << &row - rows;
        EXPECT_EQ(bare.context.error.code, row.result == ER ? ERR_CHAR_REF : 0) << "row " << &row - rows;
        EXPECT_EQ(bare.context.error.offset, row.result == ER ? row.cursor : 0) << "row " << &row - rows;
        const vrkNode *made = element->firstChild;
        EXPECT_EQ(made ? str(made->value) : u"", row.result == OK ? std::u16string(1, row.unit) : u"") << "row " << &row - rows;
        vrkDOM_destroyNode(element, 1);
    }
    // The first error stays, though the cursor moves on.
    Bare pending(u"&#;");
    pending.context.error.code = ERR_TAG_END;
    pending.context.error.offset = 99;
    EXPECT_EQ(Produce_Reference(&pending.context, 1), PRODUCE_ERROR);
    EXPECT_EQ(pending.cursor(), 3);
    EXPECT_EQ(errorAt(pending.context.error.code, pending.context.error.offset), errorAt(ERR_TAG_END, 99));
    // Every mode but 1 validates only: no node, no allocation, current unused.
    for (int32_t mode : {0, 2, 3}) {
        Bare bare(u"&amp;&#65;");
        EXPECT_EQ(countAllocations([&] {
                      EXPECT_EQ(Produce_Reference(&bare.context, mode), PRODUCE_OK);
                      EXPECT_EQ(Produce_Reference(&bare.context, mode), PRODUCE_OK);
                  }),
                  0);
        EXPECT_EQ(bare.cursor(), 10);
    }
}

TEST(Productions, AttributeOnAContext) {
    const UniChar name[] = {'e'};
    vrkDOMException exception{};
    Bare bare(u"x='1' y='2' x=\"3\" ='4'");
    vrkNode *element = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 1, &exception);
    bare.context.current = element;
    const std::pair<int32_t, std::ptrdiff_t> steps[] = {
        {PRODUCE_OK, 5}, {PRODUCE_OK, 11}, {PRODUCE_ERROR, 17}, {PRODUCE_NO_MATCH, 18}};
    for (const auto &[result, cursor] : steps) {
        Produce_S(&bare.context);
        EXPECT_EQ(Produce_Attribute(&bare.context), result);
        EXPECT_EQ(bare.cursor(), cursor);
    }
    // The second of two names stays in the map.
    EXPECT_EQ(errorAt(bare.context.error.code, bare.context.error.offset), errorAt(ERR_DUPLICATE_ATTRIBUTE, 17));
    EXPECT_EQ(describe(element), R"(e(x="3" y="2"))");
    vrkDOM_destroyNode(element, 1);

    // Regression: a current node that refuses attributes must not keep the new one.
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

TEST(Productions, ValueResolutionShrinksInPlace) {
    const auto heapCopy = [](std::u16string_view s) {
        auto *out = static_cast<UniChar *>(std::malloc((s.size() + 1) * sizeof(UniChar)));
        std::copy(s.begin(), s.end(), out);
        out[s.size()] = 0;
        return out;
    };
    const std::pair<std::u16string, std::u16string> rows[] = {
        {u"no references > here", u""}, {u"a&lt;b&#x41;&amp;amp;", u"a<bA&amp;"}, {u"&#38;#65;&#x26;lt;", u"&#65;&lt;"},
        {u"&quot;&apos;&gt;", u"\"'>"}, {u"x&y&nope;&", u"x&y&nope;&"}, {u"&#;&#1;&#65", u"&#;&#1;&#65"},
        {u"&#1;&lt;", u"&#1;<"}};
    for (const auto &[value, resolved] : rows) {
        UniChar *copy = heapCopy(value), *out = nullptr;
        // Without a reference the same block, else one shrink and no second buffer.
        EXPECT_EQ(countAllocations([&] { out = AttrValueRefResolve(copy); }), resolved.empty() ? 0 : 1) << &value - &rows[0].first;
        if (resolved.empty()) {
            EXPECT_EQ(out, copy);
        }
        EXPECT_EQ(str(out), resolved.empty() ? value : resolved);
        std::free(out);
    }
}

TEST(Productions, TokenCopiesAndNamespaceStack) {
    const std::u16string_view text = u"ab\u4E2Dcd\u00FFxy";
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[17]);  // odd address, no terminator behind
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

    UniChar s[] = {'p', 'u', 'r', 'i', 0};
    ProduceContext context{};
    const Token prefix{s, s}, uri{s + 1, s + 3}, none{nullptr, s + 3}, empty{s + 1, s};
    for (int32_t depth : {0, 1, 1, 2}) {
        context.depth = depth;
        ASSERT_EQ(pushNameSpaceStack(&context, depth == 1 ? &none : &prefix, depth == 2 ? &empty : &uri), 1);
    }
    const NameSpaceStackEntry *top = context.nameSpaceStack, *below = top->next;
    EXPECT_TRUE(top->depth == 2 && top->prefix == s && top->prefixLength == 1 && top->uri == s + 1 && top->uriLength == 0);
    EXPECT_TRUE(below->depth == 1 && below->prefix == nullptr && below->prefixLength == 0 && below->uriLength == 3);
    // A pop takes the entries of depths at or above the context's.
    const std::pair<int32_t, int32_t> pops[] = {{3, 4}, {2, 3}, {2, 3}, {1, 1}, {-1, 0}};
    for (const auto &[depth, left] : pops) {
        context.depth = depth;
        popNameSpaceStack(&context);
        int32_t count = 0;
        for (const NameSpaceStackEntry *e = context.nameSpaceStack; e; e = e->next) ++count;
        EXPECT_EQ(count, left) << "depth " << depth;
    }
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  const int32_t pushed = pushNameSpaceStack(&context, &prefix, &uri);
                  EXPECT_EQ(pushed, run.failed() ? 0 : 1);
                  EXPECT_EQ(context.nameSpaceStack == nullptr, run.failed());
                  popNameSpaceStack(&context);  // depth -1 takes all
              }),
              2);
}
