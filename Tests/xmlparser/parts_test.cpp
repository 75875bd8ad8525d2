// Below a whole document: the parse entry (encoding detection, decoding,
// the caller's buffer, failure records) and productions on a bare context.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include <gtest/gtest.h>

#include "dom/dom_test.h"
#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;
using namespace std::string_view_literals;
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr const char *kCorrupt = "Unable to process UTF-8 encoding, probably corrupt.";

// Parses exactly these bytes (terminator included) from a block of that size.
Parsed parseBytes(std::string_view bytes, std::string *after = nullptr) {
    std::unique_ptr<char[]> buffer(new char[bytes.size()]);
    std::memcpy(buffer.get(), bytes.data(), bytes.size());
    Parsed parsed{nullptr, {}};
    std::memset(&parsed.error, 0x55, sizeof parsed.error);
    parsed.document.reset(vrkDOM_parse(buffer.get(), &parsed.error));
    if (after) after->assign(buffer.get(), bytes.size());
    return parsed;
}

// A failure record in one line, with how its line numbers stand.
std::string record(const Parsed &p) {
    const vrkParseError &e = p.error;
    const auto text = [](const char *s) { return std::string(s ? s : "-"); };
    return p.document ? "a document"
                      : errorAt(e.code, e.offset) + " " + text(e.file) + " " + text(e.callerFile) +
                            " " + text(e.message) + (e.line <= 0 ? " no line" : "") +
                            (e.callerLine == 0        ? ""
                             : e.callerLine == e.line ? " same line"
                                                      : " caller line");
}
std::string noRoot(int32_t offset) {
    return errorAt(ERR_NO_ROOT_ELEMENT, offset) + " Source/xmlparser - -";
}
std::string entryFailure(int32_t code, const char *message) {
    return errorAt(code, 0) + " Source/dom Source/dom " + message + " same line";
}

// A context over the text with textEnd on its last unit.
struct Bare {
    Units text;
    ProduceContext context{};
    explicit Bare(std::u16string_view s) : text(units(s)) {
        context.textStart = context.cursor = text.data();
        context.textEnd = text.data() + s.size() - 1;
    }
};

}  // namespace

TEST(ParseEntry, IdentifiesTheEncodingFromTwoBytes) {
    constexpr int32_t NO = ENCODING_UNKNOWN;
    constexpr int32_t U8 = ENCODING_UTF8;
    constexpr int32_t U16 = ENCODING_UTF16;
    constexpr int32_t SW = ENCODING_UTF16_SWAPPED;
    const struct {
        unsigned char b0;
        unsigned char b1;
        int32_t length;
        int32_t expected;
    } rows[] = {{0xFF, 0xFE, 1, NO},   {0x3C, 0x00, 0, NO},  {0x3C, 0x00, -1, NO},
                {0xFE, 0xFF, 2, SW},   {0xFF, 0xFE, 2, U16}, {0x00, 0x3C, 2, SW},
                {0x3C, 0x00, 2, U16},  {0x00, 0x00, 2, U8},  {'a', 0x00, 2, U8},
                {0xFE, 0xFE, 2, U8},   {0x08, 0x00, 2, U8},  {0x0E, 0x00, 2, U8},
                {0xA0, 0x00, 2, U8},   {0x09, 0x00, 2, U16}, {0x0A, 0x00, 2, U16},
                {0x0B, 0x00, 2, U16},  {0x0C, 0x00, 2, U16}, {0x0D, 0x00, 2, U16},
                {0x20, 0x00, 99, U16}, {0x20, 'a', 2, U8},   {0x3C, 'a', 2, U8}};
    for (const auto &row : rows) {  // a block of two bytes, whatever length claims
        std::unique_ptr<unsigned char[]> bytes(new unsigned char[2]{row.b0, row.b1});
        EXPECT_EQ(IdentifyCharacterEncoding(bytes.get(), row.length), row.expected)
            << int{row.b0} << ' ' << int{row.b1} << " length " << row.length;
    }
}

TEST(ParseEntry, FailureRecordsAndOffsetsInUnits) {
    const std::string bad = entryFailure(ERR_BAD_ENCODING, "Must be UTF-8 or UTF-16 encoding");
    const std::string corrupt = entryFailure(ERR_ENCODING_DECL, kCorrupt);
    const std::pair<std::string_view, std::string> rows[] = {
        // a UTF-8 mark is one unit, and only one is taken
        {"\0"sv, bad},
        {"\0<\0a\0/\0>\0\0"sv, bad},
        {"a\xC3(\0"sv, corrupt},
        {"\x80\0"sv, corrupt},
        {"\xEF\xBF\xBF\0"sv, corrupt},
        {"<\xF0\x9F\x98\x80/>\0"sv, corrupt} /* beyond U+FFFF */,
        {"<a>\xE2\x82\0"sv, corrupt},
        {"\xEF\xBB\xBF\0"sv, noRoot(1)},
        {"\xEF\xBB\xBF<!DOCTYPE \xE4\xB8\xAD><a/>\0"sv, noRoot(1)},
        {"\xEF\xBB\xBF\xEF\xBB\xBF\0"sv, noRoot(1)},
        {"<!DOCTYPE a><a/>\0"sv, noRoot(0)},
        {"a\0"sv, noRoot(0)},
        {"x\0\0\0"sv, noRoot(0)},    // unmarked UTF-16 "x" is UTF-8 "x"
        {"<\0\0\0"sv, noRoot(0)},    // one byte of the UTF-16 class: one unit
        {"\f\0\0\0"sv, noRoot(0)}};  // a space to the detection, none to XML
    for (const auto &[bytes, expected] : rows) {
        const int64_t live = liveAllocations();
        std::string after;
        EXPECT_EQ(record(parseBytes(bytes, &after)), expected);
        EXPECT_EQ(after, bytes) << "the caller's buffer changed";
        EXPECT_EQ(liveAllocations(), live) << "a block left behind";
    }
    for (bool odd : {false, true}) {
        EXPECT_EQ(record(parseUtf16(u"<!DOCTYPE a><a/>", {Utf16Form::Native, false, odd})),
                  noRoot(0));
        for (Utf16Form form : {Utf16Form::Native, Utf16Form::Swapped})
            for (std::u16string_view text : {u""sv, u"x"sv, u"<!DOCTYPE \U0001F600\u0100><a/>"sv})
                EXPECT_EQ(record(parseUtf16(text, {form, true, odd})), noRoot(1));
    }
}

TEST(Productions, AttributeOnAContextGivenByACaller) {
    Bare bare(u"x='1' y='2' x=\"3\" ='4'");
    Bare onText(u"x='1'");
    const int64_t before = liveAllocations();
    vrkNode *element = domtest::element(u"e");
    bare.context.current = element;
    std::string steps;  // result and cursor of each step
    for (int i = 0; i < 4; ++i) {
        Produce_S(&bare.context);
        const int32_t result = Produce_Attribute(&bare.context);
        steps += std::to_string(result) + "@" +
                 std::to_string(bare.context.cursor - bare.text.data()) + " ";
    }
    EXPECT_EQ(steps, std::to_string(PRODUCE_OK) + "@5 " + std::to_string(PRODUCE_OK) + "@11 " +
                         std::to_string(PRODUCE_ERROR) + "@17 " +
                         std::to_string(PRODUCE_NO_MATCH) + "@18 ");
    // The second of two names stays in the map.
    EXPECT_EQ(errorAt(bare.context.error.code, bare.context.error.offset),
              errorAt(ERR_DUPLICATE_ATTRIBUTE, 17));
    EXPECT_EQ(describe(element), R"(e(x="3" y="2"))");
    vrkDOM_destroyNode(element, 1);
    EXPECT_EQ(liveAllocations(), before) << "the displaced first x was left behind";
    // Regression: on a current that is no element the new attribute used to be left behind.
    vrkNode *text = domtest::textNode(u"e");
    onText.context.current = text;
    const int64_t live = liveAllocations();
    EXPECT_EQ(Produce_Attribute(&onText.context), PRODUCE_ERROR);
    EXPECT_EQ(onText.context.error.code, ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(text->attributes.count, 0);
    EXPECT_EQ(liveAllocations(), live);
    vrkDOM_destroyNode(text, 1);
}

TEST(Productions, StartTagAndValueOnAContextGivenByACaller) {
    Bare value(u"'a&lt;b'>");
    Token token{};
    EXPECT_EQ(Produce_AttValue(&value.context, &token), PRODUCE_OK);
    EXPECT_EQ(token.end - token.start + 1, 6) << "the value stays raw: a&lt;b";
    EXPECT_EQ(value.context.cursor - value.text.data(), 8);

    // Under a document that has its element, a second one is refused and not left over.
    Bare tag(u"<second a='1'/>");
    vrkDOMException exception{};
    vrkNode *document = vrkDOM_createDocument(&exception);
    vrkNode_appendChild(document, domtest::element(u"r"), &exception);
    tag.context.document = tag.context.current = document;
    const int64_t live = liveAllocations();
    int32_t hasContent = -1;
    EXPECT_EQ(Produce_STagOREmptyElemTag(&tag.context, &token, &hasContent), PRODUCE_ERROR);
    EXPECT_EQ(tag.context.error.code, ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(liveAllocations(), live) << "the refused element was left behind";
    EXPECT_EQ(describe(document), "#document[r]");
    // Text there is refused the same way; the production itself matched.
    Bare text(u"words<");
    text.context.document = text.context.current = document;
    EXPECT_EQ(Produce_CharData(&text.context), PRODUCE_OK);
    EXPECT_EQ(text.context.error.code, ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(liveAllocations(), live) << "the refused text node was left behind";
    // A pending error refuses the node, as the factory would.
    text.context.cursor = text.text.data();
    EXPECT_EQ(Produce_CharData(&text.context), PRODUCE_ERROR);
    EXPECT_EQ(describe(document), "#document[r]");
    vrkDOM_destroyNode(document, 1);
}

namespace {

// A node named "e", with the prefix (null: none).
vrkNode *named(int32_t type, const char16_t *prefix) {
    if (prefix == nullptr) return domtest::named(type, u"e");
    return domtest::nsNode(type, nullptr, prefix, u"e");
}

// resolveNameSpace's result, the code it left, and the node's namespace name.
std::string resolved(ProduceContext &context, vrkNode *node) {
    context.error = vrkParseError{};
    const int32_t result = resolveNameSpace(&context, node);
    std::string text = std::to_string(result) + " code " + std::to_string(context.error.code);
    text += " {" + utf8(node->namespaceURI) + "}";
    vrkDOM_destroyNode(node, 1);
    return text;
}

}  // namespace

// The exported namespace entries and token copy, which the parser itself no
// longer calls, on a caller's context: p and the default declared.
TEST(Productions, NamespaceEntriesAndTokenCopyForACaller) {
    Bare bare(u"p urn:p urn:d");
    UniChar *t = bare.text.data();
    const Token prefix{t, t};
    const Token none{nullptr, nullptr};
    const Token uri{t + 2, t + 6};
    const Token defaultUri{t + 8, t + 12};
    ASSERT_EQ(pushNameSpaceStack(&bare.context, &prefix, &uri), 1);
    ASSERT_EQ(pushNameSpaceStack(&bare.context, &none, &defaultUri), 1);
    Bare empty(u"");
    EXPECT_EQ(resolved(empty.context, named(ELEMENT_NODE, nullptr)), "0 code 0 {(null)}")
        << "no default declared: no namespace and no error";
    EXPECT_EQ(resolved(bare.context, named(ELEMENT_NODE, u"p")), "1 code 0 {urn:p}");
    EXPECT_EQ(resolved(bare.context, named(ELEMENT_NODE, nullptr)), "1 code 0 {urn:d}");
    EXPECT_EQ(resolved(bare.context, named(ATTRIBUTE_NODE, nullptr)), "1 code 0 {(null)}")
        << "the default namespace is for elements only";
    EXPECT_EQ(resolved(bare.context, named(ELEMENT_NODE, u"q")),
              "0 code " + std::to_string(ERR_UNDECLARED_PREFIX) + " {(null)}");
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkNode *node = named(ELEMENT_NODE, u"p");
        if (node == nullptr) return;
        const std::string got = resolved(bare.context, node);
        const std::string refused = "0 code " + std::to_string(ERR_OUT_OF_MEMORY);
        EXPECT_EQ(got.substr(0, refused.size()), run.failed() ? refused : "1 code 0");
    });
    bare.context.depth = 0;
    popNameSpaceStack(&bare.context);
    const Token token{t + 2, t + 12};
    // A freed block of the copy's size, its end not zero, for the copy to reuse.
    void *dirty = std::malloc(24);
    ASSERT_NE(dirty, nullptr);
    std::memset(dirty, 0xFF, 24);
    asm volatile("" : : "r"(dirty) : "memory");  // the compiler keeps the stores
    std::free(dirty);
    UniChar *copy = tokenToString(&token);
    EXPECT_EQ(str(copy), u"urn:p urn:d") << "a copy ends with a zero unit";
    std::free(copy);
    forEachAllocationFailure([&](const AllocationRun &run) {
        copy = tokenToString(&token);
        EXPECT_EQ(copy == nullptr, run.failed());
        std::free(copy);
    });
}

// The exported character-class recognisers and the document production, which
// the parser reaches through paths of its own: each takes one unit of its
// class and moves the cursor by one, and refuses any other unit.
TEST(Productions, CharacterClassesAndTheDocumentForACaller) {
    using Production = int32_t (*)(ProduceContext *);
    const struct {
        Production produce;
        char16_t taken;
        char16_t refused;
        const char *name;
    } rows[] = {{Produce_BaseChar, u'a', u'1', "BaseChar"},
                {Produce_Ideographic, u'\u4E00', u'a', "Ideographic"},
                {Produce_CombiningChar, u'\u0300', u'a', "CombiningChar"},
                {Produce_Digit, u'7', u'a', "Digit"},
                {Produce_Extender, u'\u00B7', u'a', "Extender"},
                {Produce_Letter, u'\u4E00', u'-', "Letter"},
                {Produce_NCNameChar, u'-', u':', "NCNameChar"},
                {Produce_NameChar, u':', u' ', "NameChar"},
                {Produce_NameChar, u'a', u'>', "NameChar"}};
    for (const auto &row : rows) {
        Bare taken(std::u16string(1, row.taken) + u"x");
        EXPECT_EQ(row.produce(&taken.context), PRODUCE_OK) << row.name;
        EXPECT_EQ(taken.context.cursor, taken.text.data() + 1) << row.name;
        Bare refused(std::u16string(1, row.refused) + u"x");
        EXPECT_EQ(row.produce(&refused.context), PRODUCE_NO_MATCH) << row.name;
        EXPECT_EQ(refused.context.cursor, refused.text.data()) << row.name;
    }
    Bare behind(u"a");  // a name character behind the text's end is no match
    behind.context.cursor = behind.text.data() + 1;
    EXPECT_EQ(Produce_NCNameChar(&behind.context), PRODUCE_NO_MATCH);
    Bare document(u"<a/>");
    ASSERT_EQ(Produce_document(&document.context), PRODUCE_OK);
    EXPECT_EQ(describe(document.context.document), "#document[a]");
    vrkDOM_destroyNode(document.context.document, 1);
}

// AttrValueRefResolve on a caller's value: references resolve in place, a &
// that begins none is kept (the parser never hands one in).
TEST(Productions, ValueResolutionKeepsAnAmpersandThatBeginsNoReference) {
    for (const auto &[value, resolved] :
         {std::pair<std::u16string, std::u16string>{u"a&lt;b&#x41;&amp;amp;", u"a<bA&amp;"},
          {u"x&y&nope;&#;&#65&", u"x&y&nope;&#;&#65&"}}) {
        Units copy = units(value);
        auto *block = static_cast<UniChar *>(std::malloc(copy.size() * sizeof(UniChar)));
        ASSERT_NE(block, nullptr);
        std::copy(copy.begin(), copy.end(), block);
        UniChar *out = AttrValueRefResolve(block);
        EXPECT_EQ(str(out), resolved);
        std::free(out);
    }
}
