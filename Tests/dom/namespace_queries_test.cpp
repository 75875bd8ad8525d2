// Namespace-aware construction from a qualified name, and the declarations
// a finished tree answers for a prefix or a namespace name.
#include "dom_test.h"

using namespace domtest;

namespace {

// Attribute `name` cut after `length` units (all: -1) in the first `uri`
// units of "urn:xyz" (null: -1); "error CODE FILE CALLER:LINE" or
// "prefix|local|name|uri" of the node.
std::string make(std::u16string_view name, int32_t length = -1, int32_t uri = 5) {
    const Units space = units(u"urn:xyz");
    vrkDOMException e{};
    vrkNode *node = vrkDOMReal_createEANodeNS(kCaller, 77, ATTRIBUTE_NODE, uri < 0 ? nullptr : space.data(), uri < 0 ? 0 : uri,
                                              units(name).data(), length < 0 ? len(name) : length, &e);
    if (node == nullptr) return "error " + std::to_string(e.code) + " " + e.file + " " + e.callerFile + ":" + std::to_string(e.callerLine);
    const std::string out = utf8(node->prefix) + "|" + utf8(node->localName) + "|" + utf8(node->name) + "|" + utf8(node->namespaceURI);
    EXPECT_TRUE(e.code == 0 && node->type == ATTRIBUTE_NODE);
    vrkDOM_destroyNode(node, 1);
    return out;
}

std::string declared(const vrkNode *node, int32_t acceptDefault, std::u16string_view prefix, int32_t length = -1) {
    return utf8(vrkDOM_getDeclaredNameSpace(node, acceptDefault, units(prefix).data(), length < 0 ? len(prefix) : length));
}
const UniChar *prefixOf(const vrkNode *node, std::u16string_view uri) { return DOM_getDeclaredNameSpacePrefix(node, units(uri).data()); }

}  // namespace

TEST(NamespaceCreate, SplitsOrRefusesTheQualifiedName) {
    const std::string refused = "error 40 Source/dom dom_test:77";
    EXPECT_EQ(make(u"a:b", -1, -1), refused);
    for (auto name : {u"b", u"a:", u":b", u"1a:b"}) EXPECT_EQ(make(name), refused);
    // What follows the first qualified name, or lies behind the length, is dropped.
    EXPECT_EQ(make(u"a:b:c", 5), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:b!", 4), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:bc", 3), "a|b|a:b|urn:x");
    EXPECT_EQ(make(u"a:bc", 4), "a|bc|a:bc|urn:x");
    EXPECT_EQ(make(u"p:q", -1, 0), "p|q|p:q|");  // an empty namespace name is no null one

    forEachAllocationFailure([&](const AllocationRun &run) {
        const std::string made = make(u"p:local");
        EXPECT_EQ(made, run.failed() ? "error 1 Source/dom dom_test:77" : "p|local|p:local|urn:x");
    });
    // A pending record is kept, ahead of any look at the arguments.
    const Units name = units(u"a:b");
    vrkDOMException pending = kPending;
    EXPECT_EQ(countAllocations([&] {
                  EXPECT_EQ(vrkDOMReal_createEANodeNS(kCaller, 1, ELEMENT_NODE, name.data(), 3, name.data(), 3, &pending), nullptr);
                  EXPECT_EQ(vrkDOMReal_createEANodeNS(kCaller, 2, ELEMENT_NODE, nullptr, 0, name.data(), 3, &pending), nullptr);
              }),
              0);
    EXPECT_EQ(fields(pending), fields(kPending));
}

TEST(NamespaceQuery, PrefixedDeclarations) {
    Parsed parsed = parseUtf8(
        "<a xmlns:p='far' xmlns:abc='ABC' xmlns:P='upper' xmlns:q='Q'>"
        "<b q:p='attr' xmlns:p='near' XMLNS:c='folded'><c/></b></a>");
    const vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    const vrkNode *b = a->firstChild, *c = b->firstChild, *nearP = b->attributes.first->next;
    EXPECT_EQ(declared(nullptr, 1, u"p") + declared(parsed.document.get(), 1, u"p"), "(null)(null)");
    // q:p stands first on b, but only a declaration answers; the nearest one.
    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(c, 0, units(u"p").data(), 1), nearP->value);
    EXPECT_EQ(declared(a, 0, u"p"), "far");
    EXPECT_EQ(declared(c, 0, u"P"), "upper");     // the prefix compares exactly
    EXPECT_EQ(declared(c, 0, u"pq", 1), "near");  // over prefixLength units only
    EXPECT_EQ(declared(c, 0, u"ab") + declared(c, 0, u"abcd"), "ABC(null)");
    EXPECT_EQ(declared(c, 0, u"c"), "folded");  // xmlns folds case
    // The answer is the declaration's own prefix field: xmlns as written.
    EXPECT_EQ(prefixOf(c, u"near"), nearP->prefix);
    EXPECT_EQ(utf8(prefixOf(c, u"far")) + utf8(prefixOf(c, u"FOLDED")), "xmlnsXMLNS");
    EXPECT_EQ(prefixOf(c, u"attr"), nullptr);  // q:p declares nothing
    EXPECT_EQ(prefixOf(a, u"near"), nullptr);  // declared below a
    EXPECT_TRUE(!prefixOf(nullptr, u"far") && !prefixOf(parsed.document.get(), u"far"));
}

TEST(NamespaceQuery, DefaultDeclarations) {
    Parsed parsed = parseUtf8(
        "<a xmlns='urn:A' xmlns:p='urn:p'><b xmlns:x='X'><c xmlns:p='P' xmlns='D'>"
        "<d xmlns='E' xmlns:p='dp'/></c><e xmlns:y='Y'/><f XMLNS='F'/></b></a>");
    const vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    const vrkNode *c = a->firstChild->firstChild, *d = c->firstChild, *e = c->next;
    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(e, 1, nullptr, 0), a->attributes.first->value);  // past x and y
    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(e, 0, nullptr, 0), nullptr);
    EXPECT_EQ(utf8(vrkDOM_getDeclaredNameSpace(c, 1, nullptr, 0)) + utf8(vrkDOM_getDeclaredNameSpace(e->next, 1, nullptr, 0)), "DF");
    // A default and a prefixed declaration compete by walk order.
    EXPECT_EQ(declared(e, 0, u"p") + " " + declared(e, 1, u"p") + " " + declared(c, 1, u"p") + " " + declared(d, 1, u"p") +
                  " " + declared(d, 0, u"p"),
              "urn:p urn:A P E dp");
    EXPECT_TRUE(!prefixOf(e, u"urn:A") && !prefixOf(d, u"D"));  // bound only by a default
    EXPECT_EQ(prefixOf(e, u"URN:P"), a->attributes.first->next->prefix);
}
