// Entity and character references: on a bare context and in content.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/outcome.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

constexpr UniChar kUntouched = 0x7777;

}  // namespace

TEST(ReferenceProductions, OutcomesOnAContext) {
    const struct {
        std::u16string text;
        int32_t result;
        UniChar unit;           // on PRODUCE_OK
        std::ptrdiff_t cursor;  // on PRODUCE_ERROR also the offset of ERR_CHAR_REF
    } rows[] = {
        {u"&lt;", PRODUCE_OK, '<', 4},           {u"&gt;x", PRODUCE_OK, '>', 4},
        {u"&amp;", PRODUCE_OK, '&', 5},          {u"&apos;", PRODUCE_OK, '\'', 6},
        {u"&quot;", PRODUCE_OK, '"', 6},         {u"&LT;", PRODUCE_NO_MATCH, 0, 0},
        {u"&lt", PRODUCE_NO_MATCH, 0, 0},        {u"&nbsp;", PRODUCE_NO_MATCH, 0, 0},
        {u"&", PRODUCE_NO_MATCH, 0, 0},          {u"& #65;", PRODUCE_NO_MATCH, 0, 0},
        {u"&#65;", PRODUCE_OK, 'A', 5},          {u"&#x41;", PRODUCE_OK, 'A', 6},
        {u"&#x0041;", PRODUCE_OK, 'A', 8},       {u"&#0000065;", PRODUCE_OK, 'A', 10},
        {u"&#xaB;", PRODUCE_OK, 0xAB, 6},        {u"&#xAb;", PRODUCE_OK, 0xAB, 6},
        {u"&#X41;", PRODUCE_ERROR, 0, 2},        {u"&#;", PRODUCE_ERROR, 0, 3},
        {u"&#x;", PRODUCE_ERROR, 0, 4},          {u"&#a;", PRODUCE_ERROR, 0, 2},
        {u"&#xg;", PRODUCE_ERROR, 0, 3},         {u"&#6a;", PRODUCE_ERROR, 0, 3},
        {u"&#0;", PRODUCE_ERROR, 0, 4},          {u"&#8;", PRODUCE_ERROR, 0, 4},
        {u"&#9;", PRODUCE_OK, 9, 4},             {u"&#10;", PRODUCE_OK, 10, 5},
        {u"&#11;", PRODUCE_ERROR, 0, 5},         {u"&#12;", PRODUCE_ERROR, 0, 5},
        {u"&#13;", PRODUCE_OK, 13, 5},           {u"&#31;", PRODUCE_ERROR, 0, 5},
        {u"&#32;", PRODUCE_OK, 32, 5},           {u"&#xD7FF;", PRODUCE_OK, 0xD7FF, 8},
        {u"&#xE000;", PRODUCE_OK, 0xE000, 8},    {u"&#xFFFD;", PRODUCE_OK, 0xFFFD, 8},
        {u"&#xD800;", PRODUCE_ERROR, 0, 8},      {u"&#xDFFF;", PRODUCE_ERROR, 0, 8},
        {u"&#xFFFE;", PRODUCE_ERROR, 0, 8},      {u"&#xFFFF;", PRODUCE_ERROR, 0, 8},
        {u"&#x10000;", PRODUCE_ERROR, 0, 9},     {u"&#x10041;", PRODUCE_ERROR, 0, 9},  // not cut to 16 bits
        {u"&#65601;", PRODUCE_ERROR, 0, 8},      {u"&#x100000041;", PRODUCE_OK, 'A', 13},
        {u"&#4294967361;", PRODUCE_OK, 'A', 13}, {u"&#65", PRODUCE_ERROR, 0, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows);
        Units text = units(row.text);
        ProduceContext context{};
        context.textStart = context.cursor = text.data();
        context.textEnd = text.data() + row.text.size() - 1;
        EXPECT_EQ(Produce_Reference(&context, 2), row.result);
        EXPECT_EQ(context.cursor - text.data(), row.cursor);
        EXPECT_EQ(context.error.code, row.result == PRODUCE_ERROR ? ERR_CHAR_REF : 0);
        EXPECT_EQ(context.error.offset, row.result == PRODUCE_ERROR ? row.cursor : 0);
        EXPECT_EQ(context.error.message, nullptr);

        // Each part alone, on a context holding nothing but the cursor; out
        // is written on a match only.
        UniChar entity = kUntouched, character = kUntouched;
        context = ProduceContext{};
        context.textStart = context.cursor = text.data();
        const int32_t byEntity = Produce_EntityRef(&context, &entity);
        const int32_t byCharacter = byEntity == PRODUCE_OK ? PRODUCE_NO_MATCH : Produce_CharRef(&context, &character);
        EXPECT_EQ(context.cursor - text.data(), row.cursor);
        EXPECT_EQ(byEntity == PRODUCE_OK ? entity : character, row.result == PRODUCE_OK ? row.unit : kUntouched);
        EXPECT_EQ(byEntity == PRODUCE_OK ? character : entity, kUntouched);
        EXPECT_EQ(row.text[1] == '#' ? byEntity : byCharacter, PRODUCE_NO_MATCH);
    }
}

TEST(ReferenceProductions, FirstErrorStaysAndOnlyContentModeMakesNodes) {
    Units text = units(u"&#;");
    ProduceContext context{};
    context.textStart = context.cursor = text.data();
    context.error.code = ERR_TAG_END;
    context.error.offset = 99;
    EXPECT_EQ(Produce_Reference(&context, 1), PRODUCE_ERROR);
    EXPECT_EQ(context.cursor - text.data(), 3);  // moves all the same
    EXPECT_EQ(context.error.code, ERR_TAG_END);
    EXPECT_EQ(context.error.offset, 99);

    // Every mode but 1 validates only: no node, no allocation, current unused.
    for (int32_t mode : {0, 2, 3}) {
        Units good = units(u"&amp;&#65;");
        ProduceContext bare{};
        bare.cursor = good.data();
        EXPECT_EQ(countAllocations([&] {
                      EXPECT_EQ(Produce_Reference(&bare, mode), PRODUCE_OK);
                      EXPECT_EQ(Produce_Reference(&bare, mode), PRODUCE_OK);
                  }),
                  0);
        EXPECT_EQ(bare.cursor - good.data(), 10);
    }
}

TEST(ReferenceProductions, InContent) {
    const struct {
        std::string_view text;
        std::string expected;
    } rows[] = {
        {"<a>a&#65;</a>", R"(#document[a["a","A"]])"},
        {"<a>a&amp;b</a>", R"(#document[a["a","&","b"]])"},
        {"<a>&lt;&gt;&amp;&apos;&quot;</a>", R"(#document[a["<",">","&","'","\""]])"},
        {"<a>&#13;&#x100000041;</a>", "#document[a[\"\r\",\"A\"]]"},
        {"<a>&amp;lt;</a>", R"(#document[a["&","lt;"]])"},
        {"<a><b>&#x42;</b>&#67;</a>", R"(#document[a[b["B"],"C"]])"},
        {"<a>&#1;</a>", "error 15 at 7"},
        {"<a>\xC3\xA9&#1;</a>", "error 15 at 8"},  // units, not bytes
        {"<a>&#X41;</a>", "error 15 at 5"},
        {"<a>&#65", "error 15 at 7"},  // on the terminator
        {"<a>&#xFFFF;</a>", "error 15 at 11"},
        {"<a>x&LT;</a>", "error 14 at 4"},  // no reference: the content stops on the &
        {"<a>&#1;&#;</a>", "error 15 at 7"},
    };
    for (const auto &row : rows) EXPECT_EQ(outcome(row.text), row.expected) << row.text;

    // A byte order mark counts as one unit.
    Parsed marked = parseUtf16(u"<a>&#;</a>", {Utf16Form::Native, true, false});
    EXPECT_EQ(marked.document, nullptr);
    EXPECT_EQ(marked.error.code, ERR_CHAR_REF);
    EXPECT_EQ(marked.error.offset, 7);
}
