// The C++ layer: views, text helpers, error positions and iteration.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/alloc_fault.h"
#include "support/small_stack.h"

namespace {

using namespace std::string_literals;
using Names = std::vector<std::u16string>;

Names namesOf(vrkxml::NodeRange range) {
    Names names;
    for (vrkNode *node : range) names.emplace_back(vrkxml::name(node));
    return names;
}

TEST(CppText, ViewsSerializationAndUtf8Helpers) {
    auto result = vrkxml::parse(R"(<p:a xmlns:p="urn:x" k="v">t&amp;u<b/></p:a>)");
    ASSERT_TRUE(result.ok()) << result.error().message;
    vrkNode *root = result.value().root();
    for (auto [view, expected] : {std::pair{vrkxml::name(root), u"p:a"},
                                  {vrkxml::prefix(root), u"p"},
                                  {vrkxml::localName(root), u"a"},
                                  {vrkxml::namespaceURI(root), u"urn:x"},
                                  {vrkxml::value(root), u""},
                                  {vrkxml::name(nullptr), u""}}) {
        EXPECT_EQ(view, expected);
    }
    std::u16string text;  // a reference may begin a text node of its own
    for (vrkNode *child : vrkxml::children(root))
        text += child->type == TEXT_NODE ? vrkxml::value(child) : u"";
    auto wide = vrkxml::parse(std::u16string_view(u"\uFEFF<r a=\"\u00E9\"/>"));
    ASSERT_TRUE(wide.ok()) << wide.error().message;
    EXPECT_EQ(text + u'|' + std::u16string(vrkxml::value(wide.value().root()->attributes.first)),
              u"t&u|\u00E9");
    auto written = vrkxml::serialize(wide.value().node(), vrkxml::Encoding::utf8);
    const std::string expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r a=\"\xC3\xA9\"></r>\n";
    EXPECT_EQ(written.ok() ? written.value() : "", expected);
    auto refused = vrkxml::serialize(root, static_cast<vrkxml::Encoding>(99));
    ASSERT_FALSE(refused.ok()) << "an unknown encoding";
    EXPECT_EQ(refused.error().code, ERR_BAD_ENCODING);
    const std::u16string units = u"plain, caf\u00E9, \u20AC, \uFFFF, \U0001F600, \0."s;
    const std::string utf8 =
        "plain, caf\xC3\xA9, \xE2\x82\xAC, \xEF\xBF\xBF, \xF0\x9F\x98\x80, \0."s;
    EXPECT_EQ(vrkxml::toUtf8(units), utf8);
    EXPECT_EQ(vrkxml::fromUtf8(utf8), units);
    EXPECT_EQ(vrkxml::fromUtf8(""), u"");
    EXPECT_EQ(vrkxml::fromUtf8("\xE0\xA4\x85"), u"\u0905") << "a three-byte form led by E0";
    // A lone surrogate is shown as U+FFFD.
    EXPECT_EQ(vrkxml::toUtf8(std::u16string{u'a', char16_t(0xD800), u'b'}),
              "a\xEF\xBF\xBD"
              "b");
    // Cut short, bad continuation, overlong, surrogate, bad lead byte, above U+10FFFF.
    for (std::string_view bad :
         {"\xC3", "ab\xC3(", "\xC0\xAF", "\xED\xA0\x80", "\xFF", "\xF4\x90\x80\x80"}) {
        EXPECT_FALSE(vrkxml::fromUtf8(bad).has_value()) << bad;
    }
}

TEST(CppParse, ErrorsCarryLineAndColumnOfTheCallersText) {
    struct Case {
        vrkxml::Result<vrkxml::Document> result;
        int64_t offset;
        int64_t line;
        int64_t column;
    };
    // The end tag's error lies behind it; "\xC3\xA9" is one character of two bytes.
    for (const Case &c : {Case{vrkxml::parse("<a>\n  <b>\n  </c>\n</a>"), 16, 3, 7},
                          {vrkxml::parse("<a>\r\n<\xC3\xA9>\r\n  </c>\n</a>"), 17, 3, 7},
                          {vrkxml::parse(std::u16string_view(u"<a>\r<\U0001F600/>")), 4, 2, 1},
                          {vrkxml::parse("\xEF\xBB\xBFx"), 3, 1, 1},
                          {vrkxml::parse(""), 0, 1, 1},
                          {vrkxml::parse("<"), 0, 1, 1},
                          {vrkxml::parse(std::u16string_view()), 0, 1, 1}}) {
        ASSERT_FALSE(c.result.ok());
        const vrkxml::Error &error = c.result.error();
        EXPECT_FALSE(error.message.empty()) << error.code;
        EXPECT_EQ(error.offset, c.offset) << error.message;
        EXPECT_EQ(error.line, c.line) << error.message;
        EXPECT_EQ(error.column, c.column) << error.message;
    }
}

TEST(CppIteration, ChildrenAttributesAndWalksAtAnyDepth) {
    auto result =
        vrkxml::parse("<r one='1' two='2' three='3'><a>x<b/></a><?p d?><c><d><e/></d></c></r>");
    ASSERT_TRUE(result.ok());
    vrkNode *root = result.value().root();
    EXPECT_EQ(namesOf(vrkxml::children(root)), (Names{u"a", u"p", u"c"}));
    EXPECT_EQ(namesOf(vrkxml::attributes(root)), (Names{u"one", u"two", u"three"}));
    EXPECT_EQ(vrkxml::value(*++vrkxml::attributes(root).begin()), u"2");
    EXPECT_TRUE(vrkxml::children(nullptr).empty());
    EXPECT_TRUE(vrkxml::attributes(nullptr).empty());
    EXPECT_TRUE(vrkxml::attributes(root->firstChild->next).empty()) << "a PI has no attributes";
    EXPECT_EQ(vrkxml::children(root->firstChild->next).begin(),
              vrkxml::children(root->firstChild->next).end());
    std::u16string trace;
    const auto mark = [&trace](char16_t sign) {
        return [&trace, sign](const vrkNode *node, int64_t depth) {
            trace +=
                sign + std::u16string(vrkxml::name(node)) + static_cast<char16_t>(u'0' + depth);
        };
    };
    vrkxml::walkDescendants(root, mark(u'+'), mark(u'-'));
    vrkxml::walkDescendants(nullptr, mark(u'!'));
    vrkxml::walkDescendants(root->firstChild,
                            mark(u'/'));  // stays below its root, which has siblings
    EXPECT_EQ(trace, u"+a1+#text2-#text2+b2-b2-a1+p1-p1+c1+d2+e3-e3-d2-c1/#text1/b1");
    // A removed node keeps its links, so the loop goes on behind it.
    std::vector<vrkNode *> removed;
    vrkDOMException exception{};
    for (vrkNode *child : vrkxml::children(root)) {
        if (vrkxml::name(child) != u"p")
            removed.push_back(vrkNode_removeChild(root, child, &exception));
    }
    EXPECT_EQ(namesOf(vrkxml::children(root)), (Names{u"p"}));
    for (vrkNode *node : removed) vrkDOM_destroyNode(node, 1);
    std::string deep;  // 200,000 levels on a small stack: no frame per level
    for (int i = 0; i < 400000; ++i) deep += i < 200000 ? "<e>" : "</e>";
    auto tall = vrkxml::parse(deep);
    ASSERT_TRUE(tall.ok());
    int64_t deepest = 0;
    int64_t left = 0;
    vrktest::runOnSmallStack([&] {
        vrkxml::walkDescendants(
            tall.value().node(),
            [&](const vrkNode *, int64_t depth) { deepest = std::max(deepest, depth); },
            [&](const vrkNode *, int64_t) { ++left; });
    });
    EXPECT_EQ(deepest, 200000) << "levels entered";
    EXPECT_EQ(left, 200000) << "levels left";
}

}  // namespace
