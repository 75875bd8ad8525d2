// Namespace-aware construction from a qualified name, and the declarations
// a finished tree answers for a prefix or a namespace name.
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

const char kCaller[] = "caller.cpp";

std::string text(const vrkDOMException &e) {
    return e.code == 0 ? "" : std::to_string(e.code) + " " + e.file + " " + e.callerFile + ":" + std::to_string(e.callerLine);
}

// Makes name, which ends after length units (all of them for -1), in the
// first uri units of "urn:xyz" (a null namespace name for -1); the record
// goes to `record` as text, empty when no exception was raised.
vrkNode *make(std::u16string_view name, std::string &record, int32_t length = -1, int32_t uri = 5) {
    const Units qualified = units(name), space = units(u"urn:xyz");
    vrkDOMException exception{};
    vrkNode *node = vrkDOMReal_createEANodeNS(kCaller, 77, ATTRIBUTE_NODE, uri < 0 ? nullptr : space.data(),
                                              uri < 0 ? 0 : uri, qualified.data(),
                                              length < 0 ? static_cast<int32_t>(name.size()) : length, &exception);
    record = text(exception);
    return node;
}

std::u16string declared(const vrkNode *node, int32_t acceptDefault, std::u16string_view prefix, int32_t length = -1) {
    const UniChar *found = vrkDOM_getDeclaredNameSpace(node, acceptDefault, units(prefix).data(),
                                                       length < 0 ? static_cast<int32_t>(prefix.size()) : length);
    return found == nullptr ? u"(null)" : str(found);
}

const UniChar *prefixOf(const vrkNode *node, std::u16string_view uri) {
    return DOM_getDeclaredNameSpacePrefix(node, units(uri).data());
}

}  // namespace

TEST(NamespaceCreate, SplitsOrRefusesTheQualifiedName) {
    std::string record;
    for (const std::u16string_view name : {u"a:b", u"b", u"a:", u":b", u"1a:b"}) {
        EXPECT_EQ(make(name, record, -1, name == u"a:b" ? -1 : 5), nullptr);
        EXPECT_EQ(record, "40 Source/dom caller.cpp:77") << name.size();
    }
    // What follows the first qualified name, or lies behind the length, is dropped.
    for (const auto &[name, length, localName] : {std::tuple{u"a:b:c", 5, u"b"}, std::tuple{u"a:b!", 4, u"b"},
                                                  std::tuple{u"a:bc", 3, u"b"}, std::tuple{u"a:bc", 4, u"bc"}}) {
        vrkNode *node = make(name, record, length);
        ASSERT_NE(node, nullptr) << record;
        EXPECT_EQ(node->type, ATTRIBUTE_NODE);
        EXPECT_EQ(str(node->prefix), u"a");
        EXPECT_EQ(str(node->localName), localName);
        EXPECT_EQ(str(node->name), u"a:" + std::u16string(localName));
        EXPECT_EQ(str(node->namespaceURI), u"urn:x");
        vrkDOM_destroyNode(node, 1);
    }
    vrkNode *node = make(u"p:q", record, -1, 0);
    ASSERT_TRUE(node != nullptr && node->namespaceURI != nullptr);
    EXPECT_EQ(str(node->namespaceURI), u"");
    vrkDOM_destroyNode(node, 1);
}

TEST(NamespaceCreate, RefusedAllocationAndPendingRecord) {
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  std::string record;
                  vrkNode *node = make(u"p:local", record);
                  EXPECT_EQ(node == nullptr, run.failed());
                  EXPECT_EQ(record, run.failed() ? "1 Source/dom caller.cpp:77" : "") << run.failingIndex();
                  vrkDOM_destroyNode(node, 1);
              }),
              6);

    // A pending record is kept, ahead of any look at the arguments.
    const Units name = units(u"a:b");
    vrkDOMException pending{ERR_HIERARCHY_REQUEST, "elsewhere", 5, "first.cpp", 6};
    EXPECT_EQ(countAllocations([&] {
                  EXPECT_EQ(vrkDOMReal_createEANodeNS(kCaller, 1, ELEMENT_NODE, name.data(), 3, name.data(), 3, &pending),
                            nullptr);
                  EXPECT_EQ(vrkDOMReal_createEANodeNS(kCaller, 2, ELEMENT_NODE, nullptr, 0, name.data(), 3, &pending),
                            nullptr);
              }),
              0);
    EXPECT_EQ(text(pending) + " " + std::to_string(pending.line), "29 elsewhere first.cpp:6 5");
}

TEST(NamespaceQuery, PrefixedDeclarations) {
    Parsed parsed = parseUtf8(
        "<a xmlns:p='far' xmlns:abc='ABC' xmlns:P='upper' xmlns:q='Q'>"
        "<b q:p='attr' xmlns:p='near' XMLNS:c='folded'><c/></b></a>");
    ASSERT_NE(parsed.document, nullptr) << parsed.error.code;
    const vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    const vrkNode *b = a->firstChild, *c = b->firstChild, *nearP = b->attributes.first->next;

    EXPECT_EQ(declared(nullptr, 1, u"p"), u"(null)");
    EXPECT_EQ(declared(parsed.document.get(), 1, u"p"), u"(null)");
    // q:p stands first on b, but only a declaration answers; the nearest one.
    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(c, 0, units(u"p").data(), 1), nearP->value);
    EXPECT_EQ(declared(a, 0, u"p"), u"far");
    EXPECT_EQ(declared(c, 0, u"P"), u"upper");     // the prefix compares exactly
    EXPECT_EQ(declared(c, 0, u"pq", 1), u"near");  // over prefixLength units only
    EXPECT_EQ(declared(c, 0, u"ab"), u"ABC");
    EXPECT_EQ(declared(c, 0, u"abcd"), u"(null)");
    EXPECT_EQ(declared(c, 0, u"c"), u"folded");  // xmlns folds case

    // The answer is the declaration's own prefix field: xmlns as written.
    EXPECT_EQ(prefixOf(c, u"near"), nearP->prefix);
    EXPECT_EQ(str(prefixOf(c, u"far")), u"xmlns");
    EXPECT_EQ(str(prefixOf(c, u"FOLDED")), u"XMLNS");
    EXPECT_EQ(prefixOf(c, u"attr"), nullptr);  // q:p declares nothing
    EXPECT_EQ(prefixOf(a, u"near"), nullptr);  // declared below a
    EXPECT_EQ(prefixOf(nullptr, u"far"), nullptr);
    EXPECT_EQ(prefixOf(parsed.document.get(), u"far"), nullptr);
}

TEST(NamespaceQuery, DefaultDeclarations) {
    Parsed parsed = parseUtf8(
        "<a xmlns='urn:A' xmlns:p='urn:p'><b xmlns:x='X'><c xmlns:p='P' xmlns='D'>"
        "<d xmlns='E' xmlns:p='dp'/></c><e xmlns:y='Y'/><f XMLNS='F'/></b></a>");
    ASSERT_NE(parsed.document, nullptr) << parsed.error.code;
    const vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    const vrkNode *c = a->firstChild->firstChild, *d = c->firstChild, *e = c->next;

    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(e, 1, nullptr, 0), a->attributes.first->value);  // past x and y
    EXPECT_EQ(vrkDOM_getDeclaredNameSpace(e, 0, nullptr, 0), nullptr);
    EXPECT_EQ(str(vrkDOM_getDeclaredNameSpace(c, 1, nullptr, 0)), u"D");
    EXPECT_EQ(str(vrkDOM_getDeclaredNameSpace(e->next, 1, nullptr, 0)), u"F");
    // A default and a prefixed declaration compete by walk order.
    EXPECT_EQ(declared(e, 0, u"p"), u"urn:p");
    EXPECT_EQ(declared(e, 1, u"p"), u"urn:A");
    EXPECT_EQ(declared(c, 1, u"p"), u"P");
    EXPECT_EQ(declared(d, 1, u"p"), u"E");
    EXPECT_EQ(declared(d, 0, u"p"), u"dp");

    EXPECT_EQ(prefixOf(e, u"urn:A"), nullptr);  // bound only by a default
    EXPECT_EQ(prefixOf(d, u"D"), nullptr);
    EXPECT_EQ(prefixOf(e, u"URN:P"), a->attributes.first->next->prefix);
}
