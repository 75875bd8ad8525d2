// Namespace-aware construction from a qualified name, and the declarations
// a finished tree answers for a prefix or a namespace name.
#include "dom_test.h"

using namespace domtest;

namespace {

// Attribute `name` cut after `length` units (all: -1) in the first `uri`
// units of "urn:xyz" (null: -1): "prefix|local|name|uri", or the code.
std::string make(std::u16string_view name, int32_t length = -1, int32_t uri = 5) {
    const Units space = units(u"urn:xyz");
    vrkDOMException e{};
    vrkNode *node = vrkDOMReal_createEANodeNS(
        kCaller, 77, ATTRIBUTE_NODE, uri < 0 ? nullptr : space.data(), uri < 0 ? 0 : uri,
        units(name).data(), length < 0 ? len(name) : length, &e);
    if (node == nullptr) return "error " + std::to_string(e.code);
    const std::string out = utf8(node->prefix) + "|" + utf8(node->localName) + "|" +
                            utf8(node->name) + "|" + utf8(node->namespaceURI);
    vrkDOM_destroyNode(node, 1);
    return out;
}

std::string declared(const vrkNode *node, int32_t acceptDefault, std::u16string_view prefix,
                     int32_t length = -1) {
    const int32_t n = length < 0 ? len(prefix) : length;
    return utf8(vrkDOM_getDeclaredNameSpace(node, acceptDefault, units(prefix).data(), n));
}
std::string prefixOf(const vrkNode *node, std::u16string_view uri) {
    return utf8(DOM_getDeclaredNameSpacePrefix(node, units(uri).data()));
}

}  // namespace

TEST(NamespaceCreate, SplitsOrRefusesTheQualifiedName) {
    const std::string refused = "error " + std::to_string(ERR_NAMESPACE);
    EXPECT_EQ(make(u"a:b", -1, -1), refused) << "no namespace name";
    for (auto name : {u"b", u"a:", u":b", u"1a:b"}) EXPECT_EQ(make(name), refused) << "a prefix";
    // What follows the first qualified name, or lies behind the length, is dropped.
    EXPECT_EQ(make(u"a:b:c", 5), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:b!", 4), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:bc", 3), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:bc", 4), "a|bc|a:bc|urn:x");
    EXPECT_EQ(make(u"p:q", -1, 0), "p|q|p:q|") << "an empty namespace name is no null one";
    forEachAllocationFailure([&](const AllocationRun &run) {
        const std::string made = make(u"p:local");
        EXPECT_EQ(made, run.failed() ? "error 1" : "p|local|p:local|urn:x");
    });
}

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
