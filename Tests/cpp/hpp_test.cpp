// The C++ layer: parse results and error positions, iteration, the UTF-8
// helpers, serialization and the ownership of Document.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "support/alloc_fault.h"
#include "support/small_stack.h"

namespace {

using namespace std::string_literals;

std::vector<std::u16string> namesOf(vrkxml::NodeRange range) {
    std::vector<std::u16string> names;
    for (vrkNode *node : range) {
        names.emplace_back(vrkxml::name(node));
    }
    return names;
}

std::u16string swapped(std::u16string_view text) {
    std::u16string out;
    for (char16_t unit : text) {
        out.push_back(static_cast<char16_t>(((unit & 0xFFu) << 8) | (unit >> 8)));
    }
    return out;
}

// ---------------------------------------------------------------------------

TEST(CppParse, Utf8DocumentReadsThroughViews) {
    auto result = vrkxml::parse(R"(<p:a xmlns:p="urn:x" k="v">t&amp;u<b/></p:a>)");
    ASSERT_TRUE(result.ok()) << result.error().message;
    const vrkxml::Document &doc = result.value();
    ASSERT_NE(doc.node(), nullptr);
    EXPECT_EQ(doc.node()->type, DOCUMENT_NODE);
    vrkNode *root = doc.root();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(vrkxml::name(root), u"p:a");
    EXPECT_EQ(vrkxml::prefix(root), u"p");
    EXPECT_EQ(vrkxml::localName(root), u"a");
    EXPECT_EQ(vrkxml::namespaceURI(root), u"urn:x");
    EXPECT_EQ(vrkxml::value(root), u"");
    std::u16string text;  // a reference may begin a text node of its own
    for (vrkNode *child : vrkxml::children(root)) {
        if (child->type == TEXT_NODE) {
            text += vrkxml::value(child);
        }
    }
    EXPECT_EQ(text, u"t&u");
    EXPECT_EQ(vrkxml::name(nullptr), u"");
    EXPECT_EQ(vrkxml::localName(nullptr), u"");
}

TEST(CppParse, Utf16InEitherByteOrder) {
    const std::u16string text = u"\uFEFF<r a=\"\u00E9\"><s/></r>";
    for (const std::u16string &input : {text, swapped(text)}) {
        auto result = vrkxml::parse(std::u16string_view(input));
        ASSERT_TRUE(result.ok()) << result.error().message;
        EXPECT_EQ(vrkxml::name(result.value().root()), u"r");
        EXPECT_EQ(vrkxml::value(result.value().root()->attributes.first), u"\u00E9");
    }
}

TEST(CppParse, ErrorCarriesLineAndColumn) {
    const std::string text = "<a>\n  <b>\n  </c>\n</a>";
    auto result = vrkxml::parse(text);
    ASSERT_FALSE(result.ok());
    const vrkxml::Error &error = result.error();
    EXPECT_EQ(error.code, ERR_END_TAG);
    EXPECT_FALSE(error.message.empty());
    // The offset lands on the third line; line and column agree with it.
    ASSERT_GE(error.offset, 12);
    ASSERT_LE(error.offset, 17);
    EXPECT_EQ(error.line, 3);
    EXPECT_EQ(error.column, error.offset - 10 + 1);

    // The same text as UTF-16, and as UTF-8 with multi-byte characters ahead
    // of the failure: the position counts units, not bytes.
    auto wide = vrkxml::parse(std::u16string_view(u"<a>\n  <b>\n  </c>\n</a>"));
    ASSERT_FALSE(wide.ok());
    EXPECT_EQ(wide.error().offset, error.offset);
    EXPECT_EQ(wide.error().line, 3);
    EXPECT_EQ(wide.error().column, error.column);

    auto accented = vrkxml::parse("<a>\n  <\xC3\xA9>\n  </c>\n</a>"s);
    ASSERT_FALSE(accented.ok());
    EXPECT_EQ(accented.error().offset, error.offset);
    EXPECT_EQ(accented.error().line, 3);
    EXPECT_EQ(accented.error().column, error.column);
}

TEST(CppParse, ErrorOnFirstLineAndShortTexts) {
    auto bad = vrkxml::parse("<a b=1/>");
    ASSERT_FALSE(bad.ok());
    EXPECT_EQ(bad.error().code, ERR_OPENING_QUOTE);
    EXPECT_EQ(bad.error().line, 1);
    EXPECT_EQ(bad.error().column, bad.error().offset + 1);

    for (std::string_view text : {"", "<", " ", "x"}) {
        auto result = vrkxml::parse(text);
        ASSERT_FALSE(result.ok()) << '"' << text << '"';
        EXPECT_EQ(result.error().line, 1);
        EXPECT_GE(result.error().column, 1);
    }
    auto empty = vrkxml::parse(std::u16string_view());
    ASSERT_FALSE(empty.ok());
    EXPECT_NE(empty.error().code, 0);
    EXPECT_EQ(empty.error().line, 1);
    EXPECT_EQ(empty.error().column, 1);
}

// ---------------------------------------------------------------------------

TEST(CppIteration, ChildrenAndAttributesInOrder) {
    auto result = vrkxml::parse("<r one='1' two='2' three='3'>x<a/><?pi d?><b/></r>");
    ASSERT_TRUE(result.ok());
    vrkNode *root = result.value().root();
    EXPECT_EQ(namesOf(vrkxml::children(root)),
              (std::vector<std::u16string>{u"#text", u"a", u"pi", u"b"}));
    EXPECT_EQ(namesOf(vrkxml::attributes(root)),
              (std::vector<std::u16string>{u"one", u"two", u"three"}));
    std::u16string values;
    for (vrkNode *attribute : vrkxml::attributes(root)) {
        values += vrkxml::value(attribute);
    }
    EXPECT_EQ(values, u"123");

    EXPECT_TRUE(vrkxml::children(nullptr).empty());
    EXPECT_TRUE(vrkxml::attributes(nullptr).empty());
    EXPECT_TRUE(vrkxml::attributes(root->firstChild).empty());
    EXPECT_EQ(vrkxml::children(root->firstChild).begin(), vrkxml::children(root->firstChild).end());
}

TEST(CppIteration, WalkEntersAndLeavesInDocumentOrderAtAnyDepth) {
    auto result = vrkxml::parse("<r><a>x<b/></a><?p d?><c><d><e/></d></c></r>");
    ASSERT_TRUE(result.ok());
    std::u16string trace;
    const auto mark = [&trace](char16_t sign) {
        return [&trace, sign](const vrkNode *node, int64_t depth) {
            trace += sign;
            trace += vrkxml::name(node);
            trace += static_cast<char16_t>(u'0' + depth);
        };
    };
    vrkxml::walkDescendants(result.value().root(), mark(u'+'), mark(u'-'));
    EXPECT_EQ(trace, u"+a1+#text2-#text2+b2-b2-a1+p1-p1+c1+d2+e3-e3-d2-c1");
    int entered = 0;
    vrkxml::walkDescendants(result.value().node(), [&entered](const vrkNode *, int64_t) { ++entered; });
    EXPECT_EQ(entered, 8);
    vrkxml::walkDescendants(nullptr, mark(u'!'));
    EXPECT_EQ(trace.find(u'!'), std::u16string::npos);

    // 200,000 levels on a small stack: no frame per level.
    std::string deep;
    for (int i = 0; i < 200000; ++i) deep += "<e>";
    for (int i = 0; i < 200000; ++i) deep += "</e>";
    auto tall = vrkxml::parse(deep);
    ASSERT_TRUE(tall.ok());
    int64_t deepest = 0, left = 0;
    vrktest::runOnSmallStack([&] {
        vrkxml::walkDescendants(
            tall.value().node(), [&](const vrkNode *, int64_t depth) { deepest = std::max(deepest, depth); },
            [&](const vrkNode *, int64_t) { ++left; });
    });
    EXPECT_EQ(deepest, 200000);
    EXPECT_EQ(left, 200000);
}

TEST(CppIteration, RemovingTheCurrentChildKeepsTheWalkGoing) {
    auto result = vrkxml::parse("<r><a/><b/><c/><d/></r>");
    ASSERT_TRUE(result.ok());
    vrkNode *root = result.value().root();
    // A removed node keeps its links, so the walk goes on behind it; it is
    // destroyed only once the walk is over.
    std::vector<vrkNode *> removed;
    for (vrkNode *child : vrkxml::children(root)) {
        if (vrkxml::name(child) == u"b" || vrkxml::name(child) == u"d") {
            vrkDOMException exception{};
            ASSERT_EQ(vrkNode_removeChild(root, child, &exception), child);
            removed.push_back(child);
        }
    }
    EXPECT_EQ(removed.size(), 2u);
    for (vrkNode *node : removed) {
        vrkDOM_destroyNode(node, 1);
    }
    EXPECT_EQ(namesOf(vrkxml::children(root)), (std::vector<std::u16string>{u"a", u"c"}));
}

// ---------------------------------------------------------------------------

TEST(CppUtf8, RoundTrip) {
    const std::u16string text = u"plain, caf\u00E9, \u20AC, \uFFFD";
    const std::string utf8 = vrkxml::toUtf8(text);
    EXPECT_EQ(utf8, "plain, caf\xC3\xA9, \xE2\x82\xAC, \xEF\xBF\xBD");
    const auto back = vrkxml::fromUtf8(utf8);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, text);

    EXPECT_EQ(vrkxml::toUtf8(u""), "");
    ASSERT_TRUE(vrkxml::fromUtf8("").has_value());
    EXPECT_TRUE(vrkxml::fromUtf8("")->empty());
    const auto withZero = vrkxml::fromUtf8("a\0b"s);
    ASSERT_TRUE(withZero.has_value());
    EXPECT_EQ(*withZero, u"a\0b"s);
    EXPECT_EQ(vrkxml::toUtf8(u"a\0b"s), "a\0b"s);
}

TEST(CppUtf8, MalformedInputGivesNothing) {
    EXPECT_FALSE(vrkxml::fromUtf8("\xC3").has_value());          // cut short
    EXPECT_FALSE(vrkxml::fromUtf8("ab\xC3(").has_value());       // bad continuation
    EXPECT_FALSE(vrkxml::fromUtf8("\xC0\xAF").has_value());      // overlong
    EXPECT_FALSE(vrkxml::fromUtf8("\xED\xA0\x80").has_value());  // surrogate
    EXPECT_FALSE(vrkxml::fromUtf8("\xFF").has_value());          // bad lead byte
    EXPECT_FALSE(vrkxml::fromUtf8("\xF0\x9F\x98\x80").has_value());  // above U+FFFF
}

// ---------------------------------------------------------------------------

TEST(CppSerialize, BothEncodingsCarryTheSameText) {
    auto result = vrkxml::parse("<r a=\"x&amp;y\">caf\xC3\xA9 &lt;<e/></r>");
    ASSERT_TRUE(result.ok());
    const vrkNode *doc = result.value().node();

    auto utf8 = vrkxml::serialize(doc, vrkxml::Encoding::utf8);
    ASSERT_TRUE(utf8.ok()) << utf8.error().message;
    EXPECT_NE(utf8.value().find("<r a=\"x&amp;y\">caf\xC3\xA9 &lt;<e></e></r>"), std::string::npos)
        << utf8.value();
    EXPECT_EQ(utf8.value().back(), '\n');

    auto utf16 = vrkxml::serialize(doc, vrkxml::Encoding::utf16);
    ASSERT_TRUE(utf16.ok()) << utf16.error().message;
    ASSERT_EQ(utf16.value().size() % 2, 0u);
    std::u16string units(utf16.value().size() / 2, u'\0');
    std::memcpy(units.data(), utf16.value().data(), utf16.value().size());
    // The same text but for the encoding named in the header.
    const std::string wide = vrkxml::toUtf8(units);
    EXPECT_NE(wide.find("encoding=\"UTF-16\""), std::string::npos) << wide;
    EXPECT_EQ(wide.substr(wide.find('\n')), utf8.value().substr(utf8.value().find('\n')));

    // What was written parses back to the same tree.
    auto again = vrkxml::parse(std::u16string_view(units));
    ASSERT_TRUE(again.ok()) << again.error().message;
    EXPECT_EQ(vrkxml::name(again.value().root()), u"r");
}

TEST(CppSerialize, RejectedEncodingIsAnError) {
    auto result = vrkxml::parse("<r/>");
    ASSERT_TRUE(result.ok());
    auto out = vrkxml::serialize(result.value().node(), static_cast<vrkxml::Encoding>(99));
    ASSERT_FALSE(out.ok());
    EXPECT_NE(out.error().code, 0);
}

// ---------------------------------------------------------------------------

TEST(CppDocument, MovesTransferOwnershipAndLeakNothing) {
    const int64_t before = vrktest::liveAllocations();
    {
        auto first = vrkxml::parse("<one><x/></one>");
        auto second = vrkxml::parse("<two>text</two>");
        ASSERT_TRUE(first.ok());
        ASSERT_TRUE(second.ok());

        vrkxml::Document a = std::move(first).value();
        vrkNode *node = a.node();
        vrkxml::Document b(std::move(a));
        EXPECT_FALSE(a);  // NOLINT(bugprone-use-after-move): moved-from is empty
        EXPECT_EQ(b.node(), node);
        EXPECT_EQ(vrkxml::name(b.root()), u"one");

        b = std::move(second.value());  // releases the tree of <one>
        EXPECT_EQ(vrkxml::name(b.root()), u"two");
        vrkxml::Document &alias = b;
        b = std::move(alias);  // self-move keeps the tree
        EXPECT_EQ(vrkxml::name(b.root()), u"two");

        auto created = vrkxml::Document::create();
        ASSERT_TRUE(created.ok());
        EXPECT_EQ(created.value().root(), nullptr);
        vrkNode *raw = created.value().release();
        EXPECT_FALSE(created.value());
        vrkxml::Document adopted;
        adopted.reset(raw);
        EXPECT_EQ(adopted.node(), raw);
        EXPECT_GT(vrktest::liveAllocations(), before);
    }
    EXPECT_EQ(vrktest::liveAllocations(), before);
}

TEST(CppDocument, FailedParsesLeakNothing) {
    const int64_t before = vrktest::liveAllocations();
    {
        auto result = vrkxml::parse("<a><b></a>");
        ASSERT_FALSE(result.ok());
        auto wide = vrkxml::parse(std::u16string_view(u"<a x='1' x='2'/>"));
        ASSERT_FALSE(wide.ok());
        EXPECT_EQ(wide.error().code, ERR_DUPLICATE_ATTRIBUTE);
    }
    EXPECT_EQ(vrktest::liveAllocations(), before);
}

}  // namespace
