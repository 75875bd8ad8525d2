// Whole documents: the tree each gives, or its error code and offset (in
// units), with no block left behind (outcome() appends " (leaked)"); deep,
// large and generated documents, and every refused allocation.
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/random.h"
#include "support/small_stack.h"
#include "support/tree_text.h"

using namespace vrktest;

#define XMLNS "{http://www.w3.org/2000/xmlns/}"
#define XML_NS "{http://www.w3.org/XML/1998/namespace}"

namespace {

const auto err = errorAt;
constexpr int32_t kDepth = 100000;

// Expected: an error, or the children of the document.
void expectOutcomes(std::initializer_list<Case> cases) {
    for (const Case &c : cases) {
        const bool error = c.expected.rfind("error ", 0) == 0;
        EXPECT_EQ(outcome(c.text), error ? c.expected : "#document[" + c.expected + "]") << c.text;
    }
}

std::string repeat(const std::string &piece, int32_t count) {
    std::string out;
    while (count-- > 0) out += piece;
    return out;
}

}  // namespace

// Nothing behind the root is examined; end tag names compare exactly and fail
// behind the >; content no end tag follows fails where the content stopped.
TEST(Documents, TagsContentAndWhatFollowsTheRoot) {
    expectOutcomes({
        // clang-format off
        {"<a \t\r\n/>", "a"}, {"<a><b></b>t<c/></a>", "a[b,\"t\",c]"},
        {"<a> <b/>\n</a>", "a[\" \",b,\"\n\"]"},
        // clang-format on
        {"<a.b-c_d\xC3\xA9\xE4\xB8\xAD></a.b-c_d\xC3\xA9\xE4\xB8\xAD>",
         "a.b-c_d\xC3\xA9\xE4\xB8\xAD"},
        {"<a>]</a>", "a[\"]\"]"},
        {"<a>x]]y]>z></a>", "a[\"x]]y]>z>\"]"},
        {"<a>a&amp;b&lt;&gt;&quot;&apos;&#65;&#x42;</a>",
         "a[\"a\",\"&\",\"b\",\"<\",\">\",\"\\\"\",\"'\",\"A\",\"B\"]"},
        // clang-format off
        {"<a><![CDATA[]]></a>", "a[C\"\"]"},
        {"<a><![CDATA[<![CDATA[x]]></a>", "a[C\"<![CDATA[x\"]"},
        {"<a><![CDATA[<b>&amp;]]]]></a>", "a[C\"<b>&amp;]]\"]"},
        {"<a>x<![CDATA[y]]>z</a>", "a[\"x\",C\"y\",\"z\"]"}, {"<a/>junk", "a"},
        {"<a></a></b>", "a"}, {"<a/>&bogus;< ]]>", "a"}, {"<a", err(ERR_TAG_END, 2)},
        {"<a x='1' ?>", err(ERR_TAG_END, 9)}, {"<a / >", err(ERR_TAG_END, 3)},
        {"< a/>", err(ERR_NO_ROOT_ELEMENT, 0)}, {"text<a/>", err(ERR_NO_ROOT_ELEMENT, 0)},
        {"<![CDATA[x]]><a/>", err(ERR_NO_ROOT_ELEMENT, 0)}, {"<a></ a>", err(ERR_ETAG_NAME, 5)},
        {"<a></>", err(ERR_ETAG_NAME, 5)}, {"<a></a", err(ERR_TAG_END, 6)},
        {"<a></a b>", err(ERR_TAG_END, 7)}, {"<a></A>", err(ERR_END_TAG, 7)},
        {"<a></aa>", err(ERR_END_TAG, 8)}, {"<a><b></a></b>", err(ERR_END_TAG, 10)},
        {"<p:a xmlns:p='u' xmlns:q='u'></q:a>", err(ERR_END_TAG, 35)},
        {"<a>", err(ERR_END_TAG, 3)}, {"<a>text", err(ERR_END_TAG, 7)},
        {"<a><b/>", err(ERR_END_TAG, 7)}, {"<a>x]]>y</a>", err(ERR_END_TAG, 4)},
        {"<a>x&y;</a>", err(ERR_END_TAG, 4)}, {"<a>&amp</a>", err(ERR_END_TAG, 3)},
        {"<a>x< b/></a>", err(ERR_END_TAG, 4)}, {"<a><![CDATA[", err(ERR_UNTERMINATED, 12)},
        {"<a><![CDATA[x</b>", err(ERR_UNTERMINATED, 17)},
        {"<a><![CDATA[x]]></a", err(ERR_TAG_END, 19)},
        {"<a><![CDATA x]]></a>", err(ERR_END_TAG, 3)},
        {"<a>t<![CDATA[x]]>]]></a>", err(ERR_END_TAG, 17)},
        {"<a>\xC3\xA9&#1;</a>", err(ERR_CHAR_REF, 8)}, {"<a>&#65", err(ERR_CHAR_REF, 7)},
        // clang-format on
    });
    // Character references one by one: a value outside Char fails behind it, syntax at the
    // first bad unit; no reference at all ends the content on the &.
    expectOutcomes(
        {{"<a>&#65;&#x41;&#x0041;&#0000065;&#xaB;&#xAb;&#9;&#10;&#13;&#32;&#xD7FF;&#xE000;&#xFFFD;"
          "&#x100000041;&#4294967361;</a>",  // not cut to 32 bits
          "a[\"A\",\"A\",\"A\",\"A\",\"\xC2\xAB\",\"\xC2\xAB\",\"\t\",\"\n\",\"\r\",\" "
          "\",\"\xED\x9F\xBF\",\"\xEE\x80\x80\","
          "\"\xEF\xBF\xBD\",\"A\",\"A\"]"}});
    const std::pair<std::string, int32_t> references[] = {
        {"&#X41;", 2},
        {"&#;", 3},
        // clang-format off
                        {"&#x;", 4},      {"&#a;", 2}, {"&#xg;", 3},     {"&#6a;", 3},
                        {"&#0;", 4},      {"&#8;", 4}, {"&#11;", 5},     {"&#12;", 5},
                        {"&#31;", 5},     {"&#xD800;", 8}, {"&#xDFFF;", 8},  {"&#xFFFE;", 8},
                        {"&#xFFFF;", 8},  {"&#x10000;", 9}, {"&#x10041;", 9}, {"&#65601;", 8},
                        {"&#65", 4},      {"&LT;", -3}, {"&lt", -3},      {"&nbsp;", -3},
        // clang-format on
        {"&", -3},
        {"& #65;", -3}};  // negative: no reference, at the &
    for (const auto &[reference, offset] : references)
        EXPECT_EQ(outcome("<a>" + reference + "</a>"),
                  offset < 0 ? err(ERR_END_TAG, 3) : err(ERR_CHAR_REF, 3 + offset));
}

// "<!--" is not reused for "-->"; only the target xml followed by white space
// is refused; parsing stops at the first unit behind the root that is no Misc.
TEST(Documents, CommentsProcessingInstructionsAndMisc) {
    expectOutcomes({
        // clang-format off
        {"<!--p--><a>x<!--c-->y</a><!--t-->", "a[\"x\",\"y\"]"},
        {"<a><!--<b>&nope;<![CDATA[ ]]>?>--></a>", "a"}, {"<!-->--><a/>", "a"},
        {"<!--->--><a/>", "a"}, {"<!--><a/>", err(ERR_UNTERMINATED, 9)},
        {"<!---><a/>", err(ERR_UNTERMINATED, 10)},
        {"<a><!-- x ---></a>", err(ERR_COMMENT_HYPHENS, 10)},
        {"<a><!--\xC3\xA9 -- --></a>", err(ERR_COMMENT_HYPHENS, 9)},
        {"<a><!-- x", err(ERR_UNTERMINATED, 9)},
        {"<a><?t \t\r\n d  e \n?></a>", "a[?t\"d  e \n\"]"},
        // clang-format on
        {"<a><?t a?b? >?"
         "?></a>",
         "a[?t\"a?b? >?\"]"},
        {"<a><?p:q-1.x <x>?></a>", "a[?p:q-1.x\"<x>\"]"},
        {"<!----><?xml?><a/>", "?xml\"\",a"},
        {"<a><?XmL?><?xml-stylesheet href='s'?><?xmlx?></a>",
         "a[?XmL\"\",?xml-stylesheet\"href='s'\",?xmlx\"\"]"},
        // clang-format off
        {"<a><?t data", err(ERR_BAD_PI, 11)}, {"<a><? t?></a>", err(ERR_BAD_PI, 5)},
        {"<a><?1x?></a>", err(ERR_BAD_PI, 5)}, {"<a><?XML\td?></a>", err(ERR_BAD_PI, 5)},
        {"<a/><?xml\r?>", err(ERR_BAD_PI, 6)}, {"<?Xml version='1.0'?><a/>", err(ERR_BAD_PI, 2)},
        // clang-format on
        {"<?p1?><!--c-->\n<?p2 x?><a><?in?></a><?t1?> <!--c-->\t<?t2 y?>\n",
         "?p1\"\",?p2\"x\",a[?in\"\"],?t1\"\",?t2\"y\""},
        {"<a/><?t?>junk<?u?>", "a,?t\"\""},
        {"<a/> <b/><?u?>", "a"},
    });
}

// The detected encoding decides whatever the declaration names; not at the very
// start it is a refused PI; a pending declaration error wins unless there is no root.
TEST(Documents, XmlDeclaration) {
    expectOutcomes({
        // clang-format off
        {"<?xml version='2.0' ?><a/>", "a"}, {"<?xml version=\"abc_.:-Z9\"?><a/>", "a"},
        {"<?xml\tversion='1.0'\nencoding='Utf-8'\r\nstandalone=\"yes\"?><a/>", "a"},
        {"<?xml version='1.0' encoding=''?><a/>", "a"},
        {"<?xml version='1.0' encoding='utf-16'?><a/>", "a"},
        {"<?xml?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xmlversion='1.0'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml Version='1.0'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml-stylesheet href='s'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml version '1.0'?><a/>", err(ERR_EQ_MISSING, 13)},
        {"<?xml version=1.0?><a/>", err(ERR_OPENING_QUOTE, 14)},
        {"<?xml version=''?><a/>", err(ERR_DECL_VALUE, 15)},
        {"<?xml version='1.0\"?><a/>", err(ERR_CLOSING_QUOTE, 18)},
        {"<?xml version='1.0'  x?><a/>", err(ERR_XMLDECL_END, 21)},
        {"<?xml version='1.0'encoding='UTF-8'?><a/>", err(ERR_XMLDECL_END, 19)},
        {"<?xml version='1.0' encoding='UTF-8'standalone='no'?><a/>", err(ERR_XMLDECL_END, 36)},
        {"<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>", err(ERR_XMLDECL_END, 37)},
        {"<?xml version='1.0' ?", err(ERR_XMLDECL_END, 20)},
        {"<?xml version='1.0' encoding=UTF-8?><a/>", err(ERR_ENCODING_DECL, 29)},
        {"<?xml version='1.0' encoding='ASCII'?><a/>", err(ERR_BAD_ENCODING, 30)},
        {"<?xml version='1.0' encoding='a:b'?><a/>", err(ERR_CLOSING_QUOTE, 31)},
        {"<?xml version='1.0' standalone=yes?><a/>", err(ERR_OPENING_QUOTE, 31)},
        {"<?xml version='1.0' standalone='Yes'?><a/>", err(ERR_DECL_VALUE, 32)},
        {"\xEF\xBB\xBF<?xml?><a/>", err(ERR_XMLDECL_VERSION, 6)},
        {" <?xml version='1.0'?><a/>", err(ERR_BAD_PI, 3)},
        {"<!----><?xml version='1.0'?><a/>", err(ERR_BAD_PI, 9)},
        {"<?xml version='1.0' encoding?><a></b>", err(ERR_EQ_MISSING, 28)},
        {"<?xml version='1.0' standalone?><a/>", err(ERR_EQ_MISSING, 30)},
        {"<?xml version='1.0' encoding?> <!--c--> junk", err(ERR_NO_ROOT_ELEMENT, 40)},
        // clang-format on
    });
    // The mark counts as one unit in UTF-16 as well.
    Parsed wide =
        parseUtf16(u"<?xml version='1.0' encoding='ascii'?><a/>", {.byteOrderMark = true});
    EXPECT_EQ(err(wide.error.code, wide.error.offset), err(ERR_BAD_ENCODING, 31));
}

// Errors in the attribute list come before namespace resolution; duplicates
// compare whole names exactly and fail behind the second value.
TEST(Documents, Attributes) {
    expectOutcomes({
        // clang-format off
        {"<a x='\">' y=\"'>\"/>", R"(a(x="\">" y="'>"))"},
        {"<a\n\tx\r\n=\n\t'v'\n/>", R"(a(x="v"))"},
        {"<a x='\t\n\r\x01\x1F&#9;&#10;&#13;'/>", "a(x=\"\t\n\r\x01\x1F\t\n\r\")"},
        {"<a x='&lt;&#65;&#x42;&#x100000041;&quot;&apos;'/>", R"(a(x="<ABA\"'"))"},
        {"<a x='&#38;amp;' y='&amp;lt;'/>", R"(a(x="&amp;" y="&lt;"))"},
        {"<a x='1'y='2'/>", R"(a(x="1" y="2"))"}, {"<a A='1' a='2'/>", R"(a(A="1" a="2"))"},
        // clang-format on
        {"<a xmlns:p='u' p:a='1' xmlns:q='u' q:a='2'/>",
         "a(" XMLNS R"(xmlns:p="u" {u}p:a="1" )" XMLNS R"(xmlns:q="u" {u}q:a="2"))"},
        // clang-format off
        {"<a x='x&y'/>", err(ERR_ATTVALUE_END, 7)}, {"<a x='&nope;'/>", err(ERR_ATTVALUE_END, 6)},
        {"<a x='x<y'/>", err(ERR_ATTVALUE_END, 7)}, {"<a x='&#xD800;'/>", err(ERR_CHAR_REF, 14)},
        {"<a x='abc", err(ERR_ATTVALUE_END, 9)}, {"<a x='\xC3\xA9&#65", err(ERR_CHAR_REF, 11)},
        {"<a x=\"it's", err(ERR_ATTVALUE_END, 10)}, {"<a x=1/>", err(ERR_OPENING_QUOTE, 5)},
        {"<a x/>", err(ERR_EQ_MISSING, 4)}, {"<a x  'v'/>", err(ERR_EQ_MISSING, 4)},
        {"<a a:b:c='v'/>", err(ERR_EQ_MISSING, 6)}, {"<a a:='v'/>", err(ERR_TAG_END, 3)},
        {"<a xmlns:='v'/>", err(ERR_NSATT_NAME, 9)},
        {"<a xmlns:a:b='v'/>", err(ERR_EQ_MISSING, 10)},
        {"<a xmlnsfoo='v'/>", err(ERR_EQ_MISSING, 8)},
        {"<a p:x='1' y='&#1;'/>", err(ERR_CHAR_REF, 18)},
        {"<a p:x='1' x='2' x='3'/>", err(ERR_DUPLICATE_ATTRIBUTE, 22)},
        {"<p:a x='1'>&#1;</p:a>", err(ERR_UNDECLARED_PREFIX, 10)},
        {"<a x='1' y='' x='1'>", err(ERR_DUPLICATE_ATTRIBUTE, 19)},
        {"<a xmlns='u' xmlns='v'/>", err(ERR_DUPLICATE_ATTRIBUTE, 22)},
        {"<a xmlns:p='u' p:x='1' p:x='1'/>", err(ERR_DUPLICATE_ATTRIBUTE, 30)},
        // clang-format on
    });
    // Only the duplicate carries a message.
    EXPECT_STREQ(parseUtf8("<a x='1' x='1'/>").error.message, "Duplicate attribute name.");
    EXPECT_EQ(parseUtf8("<a x='&#1;' x='1'/>").error.message, nullptr);
    EXPECT_EQ(parseUtf8("<a x/>").error.message, nullptr);
}

// Resolution follows the last attribute of a tag; the default applies to elements
// only; reserved prefixes need no declaration, fold case and cannot be rebound; the
// namespace name is the raw text; a pending failure wins over later ones.
TEST(Documents, NamespaceScope) {
    expectOutcomes({
        {"<a xmlns='u' b='1'/>", "{u}a(xmlns=\"u\" b=\"1\")"},
        {"<a xmlns:p=''><p:b/></a>", "a(" XMLNS "xmlns:p=\"\")[{}p:b]"},
        {"<x p:a='1' xmlns:p='u'/>", "x({u}p:a=\"1\" " XMLNS "xmlns:p=\"u\")"},
        {"<p:a xmlns:p='1'><p:b xmlns:p='2'><p:c/></p:b><p:d/></p:a>",
         "{1}p:a(" XMLNS "xmlns:p=\"1\")[{2}p:b(" XMLNS "xmlns:p=\"2\")[{2}p:c],{1}p:d]"},
        {"<a xmlns='1'><b xmlns='2'/><c xmlns=''><d/></c><e/></a>",
         "{1}a(xmlns=\"1\")[{2}b(xmlns=\"2\"),{}c(xmlns=\"\")[{}d],{1}e]"},
        {"<r><a xmlns='1'><b/></a><c/></r>", "r[{1}a(xmlns=\"1\")[{1}b],c]"},
        {"<a xml:lang='en'><b XML:lang='de'/></a>",
         "a(" XML_NS "xml:lang=\"en\")[b(" XML_NS "XML:lang=\"de\")]"},
        {"<xmlns:a XMLNS:b='1'/>", "" XMLNS "xmlns:a(" XMLNS "XMLNS:b=\"1\")"},
        {"<a xmlns:xml='u'><xml:b/></a>", "a(" XMLNS "xmlns:xml=\"u\")[" XML_NS "xml:b]"},
        {"<a xmlns='a&amp;b' xmlns:p='&#x75;'><p:b/></a>",
         "{a&amp;b}a(xmlns=\"a&b\" " XMLNS "xmlns:p=\"u\")[{&#x75;}p:b]"},
        // clang-format off
        {"<p:a/>", err(ERR_UNDECLARED_PREFIX, 4)},
        {"<a p:b='1'/>", err(ERR_UNDECLARED_PREFIX, 10)},
        {"<r><a xmlns:p='u'></a><p:b/></r>", err(ERR_UNDECLARED_PREFIX, 26)},
        {"<a xmlns:p='u'><P:b/></a>", err(ERR_UNDECLARED_PREFIX, 19)},
        {"<a xmlns:p='u'><pp:b/></a>", err(ERR_UNDECLARED_PREFIX, 20)},
        {"<a XMLNS:p='u'><p:b/></a>", err(ERR_UNDECLARED_PREFIX, 19)},
        {"<p:a ?>", err(ERR_UNDECLARED_PREFIX, 5)}, {"<p:a>text", err(ERR_UNDECLARED_PREFIX, 4)},
        {"<a><p:b>x</p:b><c></d></a>", err(ERR_UNDECLARED_PREFIX, 7)},
        {"<q:a xmlns:p='1' xmlns:p='2'/>", err(ERR_DUPLICATE_ATTRIBUTE, 28)},
        // clang-format on
    });
    // prefix|localName|namespaceURI of every element and attribute.
    Parsed parsed =
        parseUtf8("<r><p:a xmlns:p='u' b='1' p:c='2'/><d xmlns='v'/><e xmlns=''/><f/></r>");
    EXPECT_EQ(
        namespaceFields(parsed.document.get()),
        "(null)|(null)|(null);p|a|u;xmlns|p|http://www.w3.org/2000/xmlns/"
        ";(null)|(null)|(null);p|c|u;"
        "(null)|d|v;(null)|(null)|(null);(null)|e|;(null)|(null)|(null);(null)|(null)|(null);");
}

TEST(Documents, HundredThousandLevelsOnASmallStack) {
    // Every level but the innermost gets a sibling behind its end tag.
    const std::string text =
        "<a xmlns:p='u'>" + repeat("<a>", kDepth - 1) + "<p:t/>" + repeat("</a><b/>", kDepth);
    const int64_t liveBefore = liveAllocations();
    int32_t levels = 1;
    int32_t wellFormed = 0;
    std::string innermost;
    runOnSmallStack([&] {  // the document is destroyed on the small stack too
        Parsed parsed = parseUtf8(text);
        const vrkNode *e = parsed.document ? parsed.document->firstChild : nullptr;
        for (; e && e->firstChild && e->firstChild->type == ELEMENT_NODE &&
               utf8(e->firstChild->name) == "a";
             ++levels) {
            wellFormed += utf8(e->lastChild->name) == "b" && e->firstChild->next == e->lastChild;
            e = e->firstChild;
        }
        innermost = describe(e);
        for (int32_t i = 0; i < kDepth && e != nullptr; ++i) e = e->parent;
        if (e != parsed.document.get()) innermost += " with broken parent links";
    });
    EXPECT_EQ(levels, kDepth);
    EXPECT_EQ(wellFormed, kDepth - 1) << "levels with their sibling behind them";
    EXPECT_EQ(innermost, "a[{u}p:t]");
    EXPECT_EQ(liveAllocations(), liveBefore);
    // Failures at the innermost level; a declaration on every level makes the
    // lookup walk them all.
    for (const auto &[failing, expected] :
         std::initializer_list<std::pair<std::string, std::string>>{
             {repeat("<a>", kDepth) + "</b>" + repeat("</a>", kDepth),
              err(ERR_END_TAG, 3 * kDepth + 4)},
             {repeat("<a>", kDepth) + repeat("</a>", kDepth - 1) + "</b>",
              err(ERR_END_TAG, 7 * kDepth)},
             {repeat("<a>", kDepth) + "x", err(ERR_END_TAG, 3 * kDepth + 1)},
             {repeat("<a xmlns='k'>", kDepth) + "<q:x/></b>",
              err(ERR_UNDECLARED_PREFIX, 13 * kDepth + 4)}}) {
        std::string got;
        runOnSmallStack([&, &failing = failing] { got = outcome(failing); });
        EXPECT_EQ(got, expected);
    }
}

TEST(Documents, EveryRefusedAllocationFailsTheParseCleanly) {
    const std::string text =
        "<?xml version='1.0' standalone='no'?>\n<!-- c --><?p1 d?><p:r xmlns:p='u&amp;' xmlns='d' "
        "a='1&amp;2' "
        "p:b='&lt;x&#65;' c=''>t&lt;<![CDATA[c]]><e xmlns:q='v' q:f=''/><p:g>&#65;<?in x?></p:g> "
        "</p:r><?t1?>";
    const std::string tree =
        "#document[?p1\"d\",{u&amp;}p:r(" XMLNS
        "xmlns:p=\"u&\" xmlns=\"d\" a=\"1&2\" {u&amp;}p:b=\"<xA\" c=\"\")"
        "[\"t\",\"<\",C\"c\",{d}e(" XMLNS
        "xmlns:q=\"v\" {v}q:f=\"\"),{u&amp;}p:g[\"A\",?in\"x\"],\" \"],?t1\"\"]";
    for (const bool wide : {false, true}) {
        const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
            Parsed parsed =
                wide ? parseUtf16(std::u16string(text.begin(), text.end())) : parseUtf8(text);
            // In UTF-8 the first allocation is the decoded copy.
            const int32_t code =
                !wide && run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
            EXPECT_EQ(parsed.document ? describe(parsed.document.get())
                                      : "error " + std::to_string(parsed.error.code),
                      run.failed() ? "error " + std::to_string(code) : tree)
                << "allocation " << run.failingIndex();
        });
        EXPECT_GT(runs, 1) << (wide ? "UTF-16" : "UTF-8") << ": no allocation was refused";
    }
    // The declaration's stack entry is refused behind its value (12); the pending error beats the
    // end tag.
    std::map<std::string, int> inParser;  // outcomes other than a failure outside the parser
    forEachAllocationFailure([&](const AllocationRun &run) {
        const std::string got = outcome("<a xmlns='u' ></b>");
        if (!run.failed() || got != err(ERR_OUT_OF_MEMORY, 0))
            ++inParser[(run.failed() ? "" : "done ") + got];
    });
    EXPECT_EQ(inParser,
              (std::map<std::string, int>{{"done " + err(ERR_END_TAG, 18), 1},
                                          {err(ERR_ENCODING_DECL, 0), 1},  // the decoded copy
                                          {err(ERR_OUT_OF_MEMORY, 12), 1}}));
}

TEST(Documents, ManyAttributesKeepTheirOrderAndDuplicatesAreFound) {
    Random random(7);
    for (int round = 0; round < 20; ++round) {
        const int count = 1 + static_cast<int>(random.below(2000));
        std::string tag = "<e";
        std::string expected = "#document[e(";
        for (int i = 0; i < count; ++i) {  // names in no sorted order
            const std::string name = "a" + std::to_string((i * 7919) % 10007);
            const std::string value = std::to_string(i);
            tag += " " + name + "='" + value + "'";
            expected += (i == 0 ? "" : " ") + name + "=\"" + value + "\"";
        }
        EXPECT_EQ(outcome(tag + "/>"), expected + ")]");
        const uint32_t repeated = random.below(static_cast<std::size_t>(count));
        const std::string twice = tag + " a" + std::to_string((repeated * 7919) % 10007) + "='x'";
        EXPECT_EQ(outcome(twice + "/>"),
                  err(ERR_DUPLICATE_ATTRIBUTE, static_cast<int32_t>(twice.size())));
    }
}

TEST(Documents, NamespaceLookupsMatchTheNearestDeclaration) {
    // Six prefixes and the default declared and used at random, against a
    // model keeping a stack of scopes.
    Random random(11);
    for (int round = 0; round < 30; ++round) {
        std::string text;
        std::string modelled;  // "{uri}" of each element in document order
        using Scope = std::map<std::string, std::string>;
        std::vector<std::pair<std::string, Scope>> open{{}};  // name, scope; root first
        for (int made = 0; made < 300 && (made == 0 || open.size() > 1);) {
            if (open.size() > 1 && (random.chance(40) || open.size() > 81)) {
                text += "</" + open.back().first + ">";
                open.pop_back();
                continue;
            }
            auto scope = open.back().second;
            std::string declarations;
            for (int d = static_cast<int>(random.below(3)); d > 0; --d) {
                const std::string prefix =
                    random.chance(20) ? "" : "p" + std::to_string(random.below(6));
                const std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
                if (declarations.find(" " + attribute + "=") != std::string::npos) continue;
                scope[prefix] = "u" + std::to_string(made) + "_" + std::to_string(d);
                declarations += " " + attribute + "='" + scope[prefix] + "'";
            }
            std::vector<std::string> usable{""};
            for (const auto &entry : scope)
                if (!entry.first.empty()) usable.push_back(entry.first);
            const std::string prefix = random.pick(usable);
            const std::string name = prefix.empty() ? "e" : prefix + ":e";
            modelled +=
                "{" + (scope.count(prefix) != 0 ? scope[prefix] : std::string("(null)")) + "}";
            text += "<" + name + declarations + ">";
            open.emplace_back(name, scope);
            ++made;
        }
        for (; open.size() > 1; open.pop_back()) text += "</" + open.back().first + ">";
        Parsed parsed = parseUtf8(text);
        std::string actual;  // nesting stays below 82 levels: a recursive walk is safe
        const std::function<void(const vrkNode *)> walk = [&](const vrkNode *node) {
            for (; node != nullptr; node = node->next) {
                actual += "{" + utf8(node->namespaceURI) + "}";
                walk(node->firstChild);
            }
        };
        ASSERT_NE(parsed.document, nullptr) << text;
        walk(parsed.document->firstChild);
        EXPECT_EQ(actual, modelled) << text;
    }
}
