// The declarations a finished tree answers for a prefix or a namespace
// name, and a refused namespace-aware construction.
#include "dom_test.h"

using namespace domtest;

namespace {

std::string declared(const vrkNode *node, int32_t acceptDefault, std::u16string_view prefix,
                     int32_t length = -1) {
    const int32_t n = length < 0 ? len(prefix) : length;
    return utf8(vrkDOM_getDeclaredNameSpace(node, acceptDefault, units(prefix).data(), n));
}
std::string prefixOf(const vrkNode *node, std::u16string_view uri) {
    return utf8(DOM_getDeclaredNameSpacePrefix(node, units(uri).data()));
}

}  // namespace

TEST(NamespaceQuery, TheNearestDeclarationAnswers) {
    Parsed parsed = parseUtf8(
        "<a xmlns:p='far' xmlns:abc='ABC' xmlns:P='upper' xmlns='urn:A'>"
        "<b q:p='attr' xmlns:p='near' XMLNS:c='folded' xmlns:q='Q'>"
        "<c xmlns='D'/><e xmlns:y='Y'/></b></a>");
    const vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    const vrkNode *b = a->firstChild;
    const vrkNode *c = b->firstChild;
    const vrkNode *e = c->next;
    EXPECT_EQ(declared(nullptr, 1, u"p"), "(null)");
    EXPECT_EQ(utf8(vrkDOM_getDeclaredNameSpace(a, 0, nullptr, 0)), "(null)") << "no prefix";
    EXPECT_EQ(declared(parsed.document.get(), 1, u"p"), "(null)");
    EXPECT_EQ(declared(c, 0, u"p"), "near") << "q:p stands first on b, but declares nothing";
    EXPECT_EQ(declared(a, 0, u"p"), "far");
    EXPECT_EQ(declared(c, 0, u"P"), "upper") << "the prefix compares exactly";
    EXPECT_EQ(declared(c, 0, u"pq", 1), "near") << "over prefixLength units only";
    EXPECT_EQ(declared(c, 0, u"ab"), "ABC") << "abc agrees over the two units asked";
    EXPECT_EQ(declared(c, 0, u"abcd"), "(null)");
    EXPECT_EQ(declared(c, 0, u"c"), "folded") << "xmlns folds case";
    EXPECT_EQ(declared(e, 1, u""), "urn:A") << "the default, past the declarations of b and e";
    EXPECT_EQ(declared(e, 0, u""), "(null)") << "defaults not accepted";
    EXPECT_EQ(declared(c, 1, u""), "D");
    EXPECT_EQ(declared(c, 1, u"p"), "D") << "a default and a prefix compete by walk order";
    // The answer is the declaration's own prefix field: xmlns as written.
    EXPECT_EQ(prefixOf(c, u"near"), "xmlns");
    EXPECT_EQ(prefixOf(c, u"FOLDED"), "XMLNS") << "namespace names fold case";
    EXPECT_EQ(prefixOf(c, u"attr"), "(null)") << "q:p declares nothing";
    EXPECT_EQ(prefixOf(a, u"near"), "(null)") << "declared below a";
    EXPECT_EQ(prefixOf(e, u"urn:A"), "(null)") << "bound only by a default";
    EXPECT_EQ(DOM_getDeclaredNameSpacePrefix(nullptr, units(u"far").data()), nullptr);
    EXPECT_EQ(vrkDOM_getDocumentElement(nullptr), nullptr);
}

TEST(NamespaceCreate, ARefusalNamesTheCaller) {
    const Units uri = units(u"urn:x");
    const Units name = units(u"p:local");
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkDOMException e{};
        vrkNode *node = vrkDOMReal_createEANodeNS(kCaller, 77, ATTRIBUTE_NODE, uri.data(), 5,
                                                  name.data(), 7, &e);
        EXPECT_EQ(node == nullptr, run.failed());
        if (run.failed()) expectRaised(e, ERR_OUT_OF_MEMORY, 77);
        vrkDOM_destroyNode(node, 1);
    });
}
