// Editing through the C++ layer: attributes by name, elements by local name
// and namespace, new nodes in owning handles, moves, and every
// refused allocation as an Error with nothing leaked.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/alloc_fault.h"

namespace {

std::string written(const vrkNode *node) {
    auto bytes = vrkxml::serialize(node, vrkxml::Encoding::utf8);
    return bytes ? bytes.value().substr(39)
                 : "error: " + bytes.error().message;  // behind the header
}

TEST(CppEdit, AttributesByNameInUtf8OrUtf16) {
    auto parsed = vrkxml::parse("<r a='1' p:b='2' xmlns:p='urn:p'/>");
    ASSERT_TRUE(parsed.ok());
    vrkNode *root = parsed.value().root();
    EXPECT_EQ(vrkxml::attribute(root, "p:b"), u"2");
    EXPECT_EQ(vrkxml::attribute(root, u"a"), u"1");
    EXPECT_FALSE(vrkxml::attribute(root, "b").has_value());
    EXPECT_TRUE(vrkxml::setAttribute(root, "a", "\xF0\x9F\x98\x80").ok());
    EXPECT_TRUE(vrkxml::setAttribute(root, u"c\u00E9", u"3").ok());
    EXPECT_TRUE(vrkxml::removeAttribute(root, "p:b"));
    EXPECT_FALSE(vrkxml::removeAttribute(root, u"p:b"));
    EXPECT_EQ(written(root), "<r a=\"\xF0\x9F\x98\x80\" xmlns:p=\"urn:p\" c\xC3\xA9=\"3\"></r>\n");
    EXPECT_EQ(vrkxml::setAttribute(root, "x", "\xC3").error().code, vrkxml::errMalformedText);
    EXPECT_EQ(vrkxml::setAttribute(root->firstChild, "x", "1").error().code,
              ERR_HIERARCHY_REQUEST);
}

TEST(CppEdit, FindsElementsByLocalNameAndNamespace) {
    auto parsed =
        vrkxml::parse("<r xmlns:p='urn:p'><p:item n='1'/><item n='2'><item n='3'/></item></r>");
    ASSERT_TRUE(parsed.ok());
    const vrkNode *root = parsed.value().root();
    EXPECT_EQ(vrkxml::attribute(vrkxml::findChild(root, "item"), "n"), u"2");
    EXPECT_EQ(vrkxml::attribute(vrkxml::findChild(root, u"item", u"urn:p"), u"n"), u"1");
    EXPECT_EQ(vrkxml::findChild(root, "other"), nullptr);
    const vrkNode *inner = vrkxml::findDescendant(vrkxml::findChild(root, "item"), "item");
    EXPECT_EQ(vrkxml::attribute(inner, "n"), u"3");
    EXPECT_EQ(vrkxml::findDescendant(root, "item", "urn:q"), nullptr);
}

TEST(CppEdit, NewNodesAndMovesKeepEveryNodeOwned) {
    auto parsed = vrkxml::parse("<r><a/><b><c/></b></r>");
    ASSERT_TRUE(parsed.ok());
    vrkNode *root = parsed.value().root();
    auto element = vrkxml::makeElementNS("urn:x", "x:e");
    auto text = vrkxml::makeText(u"t");
    ASSERT_TRUE(element.ok());
    ASSERT_TRUE(text.ok());
    EXPECT_TRUE(vrkxml::append(element.value().get(), text.value()).ok());
    EXPECT_FALSE(text.value());  // placed, so no longer the handle's
    EXPECT_TRUE(vrkxml::append(root, element.value()).ok());
    vrkNode *b = vrkxml::findChild(root, "b");
    EXPECT_TRUE(vrkxml::move(root->firstChild, b, b->firstChild).ok());
    EXPECT_EQ(vrkxml::move(root, b).error().code, ERR_HIERARCHY_REQUEST);
    // A document takes no second root: the moved node goes back where it was.
    EXPECT_EQ(vrkxml::move(b->firstChild, parsed.value().node()).error().code,
              ERR_HIERARCHY_REQUEST);
    EXPECT_EQ(written(root), "<r><b><a></a><c></c></b><x:e>t</x:e></r>\n");
    auto refused = vrkxml::makeText("t");
    EXPECT_FALSE(vrkxml::append(parsed.value().node(), refused.value()).ok());
    EXPECT_TRUE(refused.value());  // still the handle's, which destroys it
    EXPECT_EQ(vrkxml::makeElementNS("urn:x", "e").error().code, ERR_NAMESPACE);
    EXPECT_EQ(vrkxml::makeElementNS("urn:x", "").error().code, ERR_NAMESPACE) << "no name";
    // Appended to an empty element, a moved node keeps no sibling of its old place.
    vrkNode *x = vrkxml::findChild(root, "e", "urn:x");
    ASSERT_NE(x, nullptr);
    vrkNode *c = vrkxml::findChild(b, "c");
    ASSERT_TRUE(vrkxml::move(x, c).ok());
    EXPECT_EQ(x->previous, nullptr) << "the old previous sibling stayed";
}

TEST(CppEdit, RefusedAllocationsAreErrorsAndLeakNothing) {
    vrktest::forEachAllocationFailure([](const vrktest::AllocationRun &) {
        vrkxml::ParseOptions options;
        options.strict = true;
        auto parsed =
            vrkxml::parse("<r xmlns:p='urn:p'>\n<p:a k='v'>\xF0\x9F\x98\x80</p:a></r>", options);
        if (!parsed) {
            EXPECT_EQ(parsed.error().code, ERR_OUT_OF_MEMORY) << parsed.error().message;
            return;
        }
        vrkNode *root = parsed.value().root();
        auto element = vrkxml::makeElement("e");
        const vrkxml::Status steps[] = {
            vrkxml::setAttribute(root, "k", "w"), vrkxml::setAttribute(root, "n", "1"),
            element ? vrkxml::append(root, element.value()) : element.error(),
            vrkxml::move(root->firstChild, root), vrkxml::indent(root, 2)};
        for (const vrkxml::Status &step : steps) {
            EXPECT_EQ(step.ok() ? ERR_OUT_OF_MEMORY : step.error().code, ERR_OUT_OF_MEMORY);
        }
        const auto out = vrkxml::serialize(parsed.value().node(), vrkxml::Encoding::utf8);
        EXPECT_EQ(out.ok() ? ERR_OUT_OF_MEMORY : out.error().code, ERR_OUT_OF_MEMORY);
    });
}

}  // namespace
