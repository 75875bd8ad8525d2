// Attributes of a start tag: names, values, references in values,
// declarations and duplicates.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/outcome.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

// A malloc'ed copy, as the value of a node is.
UniChar *heapCopy(std::u16string_view text) {
    auto *s = static_cast<UniChar *>(std::malloc((text.size() + 1) * sizeof(UniChar)));
    for (std::size_t i = 0; i < text.size(); ++i) s[i] = static_cast<UniChar>(text[i]);
    s[text.size()] = 0;
    return s;
}

}  // namespace

TEST(AttributeProductions, ValuesAndNames) {
    std::string xmlns("{");
    xmlns.append(utf8(XMLNS_URI)).append("}");
    const struct {
        std::string_view text;
        std::string expected;
    } rows[] = {
        {"<a x=''/>", R"(#document[a(x="")])"},
        {"<a x='\">' y=\"'>\"/>", R"(#document[a(x="\">" y="'>")])"},
        {"<a x = 'v'/>", R"(#document[a(x="v")])"},
        {"<a\n\tx\r\n=\n\t'v'\n/>", R"(#document[a(x="v")])"},
        {"<a x='\t\n\r\x01\x1F'/>", "#document[a(x=\"\t\n\r\x01\x1F\")]"},
        {"<a x='&#9;&#10;&#13;'/>", "#document[a(x=\"\t\n\r\")]"},
        {"<a x='&lt;&#65;&#x42;'/>", R"(#document[a(x="<AB")])"},
        {"<a x='&#38;amp;' y='&amp;lt;'/>", R"(#document[a(x="&amp;" y="&lt;")])"},
        {"<a x='&#x100000041;&quot;&apos;'/>", R"(#document[a(x="A\"'")])"},
        {"<a x='1'y='2'/>", R"(#document[a(x="1" y="2")])"},
        {"<a A='1' a='2'/>", R"(#document[a(A="1" a="2")])"},
        {"<a xmlns:p='u' p:a='1' xmlns:q='u' q:a='2'/>",
         "#document[a(" + xmlns + R"(xmlns:p="u" {u}p:a="1" )" + xmlns + R"(xmlns:q="u" {u}q:a="2")])"},
        // The stack keeps the raw value: the element's namespace name is x&amp;y.
        {"<p:e xmlns:p='x&amp;y'/>", "#document[{x&amp;y}p:e(" + xmlns + R"(xmlns:p="x&y")])"},
        {"<a x='x&y'/>", errorAt(ERR_ATTVALUE_END, 7)},
        {"<a x='&nope;'/>", errorAt(ERR_ATTVALUE_END, 6)},
        {"<a x='x<y'/>", errorAt(ERR_ATTVALUE_END, 7)},
        {"<a x='&#1;'/>", errorAt(ERR_CHAR_REF, 10)},
        {"<a x='&#xD800;'/>", errorAt(ERR_CHAR_REF, 14)},
        {"<a x='&#65'/>", errorAt(ERR_CHAR_REF, 10)},
        {"<a x='abc", errorAt(ERR_ATTVALUE_END, 9)},
        {"<a x='abc&", errorAt(ERR_ATTVALUE_END, 9)},
        {"<a x='\xC3\xA9&#65", errorAt(ERR_CHAR_REF, 11)},
        {"<a x=\"it's", errorAt(ERR_ATTVALUE_END, 10)},
        {"<a x=1/>", errorAt(ERR_OPENING_QUOTE, 5)},
        {"<a x= \t1/>", errorAt(ERR_OPENING_QUOTE, 7)},
        {"<a x/>", errorAt(ERR_EQ_MISSING, 4)},
        {"<a x  'v'/>", errorAt(ERR_EQ_MISSING, 4)},  // ahead of the white space
        {"<a a:b:c='v'/>", errorAt(ERR_EQ_MISSING, 6)},
        {"<a a:='v'/>", errorAt(ERR_TAG_END, 3)},
        {"<a xmlns:='v'/>", errorAt(ERR_NSATT_NAME, 9)},
        {"<a xmlns:1='v'/>", errorAt(ERR_NSATT_NAME, 9)},
        {"<a xmlns:a:b='v'/>", errorAt(ERR_EQ_MISSING, 10)},
        {"<a xmlnsfoo='v'/>", errorAt(ERR_EQ_MISSING, 8)},
        {"<a xmlns1='v'/>", errorAt(ERR_EQ_MISSING, 8)},
        // Errors in the attribute list come before the namespaces are resolved.
        {"<a p:x='1' y='&#1;'/>", errorAt(ERR_CHAR_REF, 18)},
        {"<a p:x='1' x='2' x='3'/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 22)},
        // An undeclared prefix recorded at the end of the tag stays first.
        {"<p:a x='1'>&#1;</p:a>", errorAt(ERR_UNDECLARED_PREFIX, 10)},
        // Duplicates: the whole name, exactly; the offset is behind the second value.
        {"<a x='1' x='2'/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 14)},
        {"<a x='1' y='' x='1'>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 19)},
        {"<a x='1'x=\"2\"/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 13)},
        {"<a xmlns='u' xmlns='v'/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 22)},
        {"<a xmlns:p='u' p:x='1' p:x='1'/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 30)},
    };
    for (const auto &row : rows) EXPECT_EQ(outcome(row.text), row.expected) << row.text;

    // Only the duplicate carries a message.
    EXPECT_STREQ(parseUtf8("<a x='1' x='1'/>").error.message, "Duplicate attribute name.");
    EXPECT_EQ(parseUtf8("<a x='&#1;' x='1'/>").error.message, nullptr);
    EXPECT_EQ(parseUtf8("<a x/>").error.message, nullptr);
}

TEST(AttributeProductions, SecondOfTwoNamesStaysInTheMap) {
    Units text = units(u"x='1' y='2' x=\"3\" ='4'");
    const UniChar name[] = {'e'};
    vrkDOMException exception{};
    vrkNode *element = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 1, &exception);
    ASSERT_NE(element, nullptr);
    ProduceContext context{};
    context.textStart = context.cursor = text.data();
    context.textEnd = text.data() + text.size() - 2;
    context.current = element;
    const std::pair<int32_t, std::ptrdiff_t> steps[] = {
        {PRODUCE_OK, 5}, {PRODUCE_OK, 11}, {PRODUCE_ERROR, 17}, {PRODUCE_NO_MATCH, 18}};
    for (const auto &[result, cursor] : steps) {
        Produce_S(&context);
        EXPECT_EQ(Produce_Attribute(&context), result);
        EXPECT_EQ(context.cursor - text.data(), cursor);
    }
    EXPECT_EQ(context.error.code, ERR_DUPLICATE_ATTRIBUTE);
    EXPECT_EQ(context.error.offset, 17);
    EXPECT_EQ(describe(element), R"(e(x="3" y="2"))");
    vrkDOM_destroyNode(element, 1);
}

TEST(AttributeProductions, ACurrentThatIsNoElementRefusesTheAttributeAndKeepsNothing) {
    Units text = units(u"x='1'");
    const UniChar value[] = {'t'};
    vrkDOMException exception{};
    vrkNode *node = vrkDOMReal_createTextNode(__FILE__, __LINE__, value, 1, &exception);
    ASSERT_NE(node, nullptr);
    ProduceContext context{};
    context.textStart = context.cursor = text.data();
    context.textEnd = text.data() + text.size() - 2;
    context.current = node;
    const int64_t live = liveAllocations();
    EXPECT_EQ(Produce_Attribute(&context), PRODUCE_ERROR);
    EXPECT_EQ(context.error.code, ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(node->attributes.count, 0);
    EXPECT_EQ(liveAllocations(), live);
    vrkDOM_destroyNode(node, 1);
}

TEST(AttributeProductions, ResolvingAValueInItsOwnBlock) {
    UniChar *plain = heapCopy(u"no references > here");
    UniChar *same = nullptr;
    EXPECT_EQ(countAllocations([&] { same = AttrValueRefResolve(plain); }), 0);
    EXPECT_EQ(same, plain);
    EXPECT_EQ(str(same), u"no references > here");
    std::free(same);

    const struct {
        std::u16string value, resolved;
    } rows[] = {
        {u"a&lt;b&#x41;&amp;amp;", u"a<bA&amp;"},
        {u"&#38;#65;&#x26;lt;", u"&#65;&lt;"},
        {u"&quot;&apos;&gt;", u"\"'>"},
        {u"x&y&nope;&", u"x&y&nope;&"},  // kept as it is
        {u"&#;&#1;&#65", u"&#;&#1;&#65"},
        {u"&#1;&lt;", u"&#1;<"},
    };
    for (const auto &row : rows) {
        UniChar *value = heapCopy(row.value);
        UniChar *resolved = nullptr;
        // One shrink, no second buffer.
        EXPECT_EQ(countAllocations([&] { resolved = AttrValueRefResolve(value); }), 1);
        ASSERT_NE(resolved, nullptr);
        EXPECT_EQ(str(resolved), row.resolved);
        std::free(resolved);
    }
}

TEST(AttributeProductions, EveryRefusedAllocationFailsCleanly) {
    const std::string_view text =
        "<r xmlns:p='urn:x&amp;' p:a='&lt;1&#65;' b=\"x&amp;y\" c=''>"
        "<p:c d='&#x42;' xmlns='urn:d'>t&amp;</p:c></r>";
    std::string expected("#document[r({");
    expected.append(utf8(XMLNS_URI))
        .append(R"x(}xmlns:p="urn:x&" {urn:x&amp;}p:a="<1A" b="x&y" c=""))x"
                R"([{urn:x&amp;}p:c(d="B" xmlns="urn:d")["t","&"]]])");
    const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed = parseUtf8(text);
        if (!run.failed()) {
            EXPECT_EQ(parsed.document != nullptr ? describe(parsed.document.get()) : "(null)", expected);
            return;
        }
        EXPECT_EQ(parsed.document, nullptr) << "allocation " << run.failingIndex();
        const int32_t code = run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
        EXPECT_EQ(parsed.error.code, code) << "allocation " << run.failingIndex();
    });
    EXPECT_GT(runs, 20);
}
