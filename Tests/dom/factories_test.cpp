// Node factories, setNodeValue and appendChild: the fields each factory
// fills, its allocations and their failure, the sticky exception record,
// the refusals of appendChild and the links it writes.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <utility>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

constexpr const char *kCaller = "factories_test.cpp";
const Units kUri = units(u"urn:u"), kPrefix = units(u"pq"), kLocal = units(u"loc"), kData = units(u"d");

void expectRaised(const vrkDOMException &e, int32_t code, int32_t callerLine) {
    EXPECT_EQ(e.code, code);
    EXPECT_STREQ(e.file, "Source/dom");
    EXPECT_GT(e.line, 0);
    EXPECT_EQ(e.callerFile, kCaller);
    EXPECT_EQ(e.callerLine, callerLine);
}

struct Factory {
    const char *what;
    int64_t allocations;
    std::function<vrkNode *(int32_t, vrkDOMException *)> make;
};
const Factory kFactories[] = {
    {"EANode", 2, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANode(kCaller, l, ELEMENT_NODE, kLocal.data(), 3, e); }},
    {"NSP without uri", 4, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANodeNSP(kCaller, l, ATTRIBUTE_NODE, nullptr, 0, kPrefix.data(), 2, kLocal.data(), 3, e); }},
    {"NSP with uri", 5, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANodeNSP(kCaller, l, ELEMENT_NODE, kUri.data(), 5, kPrefix.data(), 2, kLocal.data(), 3, e); }},
    {"Text", 2, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createTextNode(kCaller, l, kData.data(), 1, e); }},
    {"CDATA", 2, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createCDATASection(kCaller, l, kData.data(), 1, e); }},
    {"PI", 3, [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createProcessingInstruction(kCaller, l, kLocal.data(), 3, kData.data(), 1, e); }},
};

auto fields(const vrkDOMException &e) { return std::make_tuple(e.code, e.file, e.line, e.callerFile, e.callerLine); }
auto links(const vrkNode *n) { return std::make_tuple(n->parent, n->firstChild, n->lastChild, n->previous, n->next); }

// The children of parent, checked link by link.
void expectChildren(const vrkNode *parent, std::initializer_list<vrkNode *> expected) {
    const vrkNode *prev = nullptr, *at = parent->firstChild;
    for (vrkNode *want : expected) {
        ASSERT_EQ(at, want);
        EXPECT_EQ(at->parent, parent);
        EXPECT_EQ(at->previous, prev);
        prev = std::exchange(at, at->next);
    }
    EXPECT_EQ(at, nullptr);
    EXPECT_EQ(parent->lastChild, prev);
}

}  // namespace

TEST(Factories, FieldsOfEachKind) {
    vrkDOMException e{};
    const Units ab = units(u"ab"), withZero = {'x', 0, 'y', 0};
    vrkNode *t1 = vrkDOMReal_createTextNode(kCaller, 1, ab.data(), 2, &e);
    vrkNode *t2 = vrkDOMReal_createTextNode(kCaller, 2, ab.data(), 0, &e);
    vrkNode *c1 = vrkDOMReal_createCDATASection(kCaller, 3, withZero.data(), 3, &e);
    vrkNode *c2 = vrkDOMReal_createCDATASection(kCaller, 4, ab.data(), 1, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 5, ab.data(), 2, ab.data(), 0, &e);
    vrkNode *ea = vrkDOMReal_createEANode(kCaller, 6, ATTRIBUTE_NODE, ab.data(), 1, &e);
    vrkNode *nsp = vrkDOMReal_createEANodeNSP(kCaller, 7, ELEMENT_NODE, nullptr, 0, kPrefix.data(), 1, ab.data(), 2, &e);
    vrkNode *nsu = vrkDOMReal_createEANodeNSP(kCaller, 8, ATTRIBUTE_NODE, kUri.data(), 3, kPrefix.data(), 2, kLocal.data(), 3, &e);
    ASSERT_EQ(e.code, 0);
    for (vrkNode *n : {t1, t2, c1, c2, pi, ea, nsp, nsu})
        EXPECT_TRUE(!n->parent && !n->previous && !n->next && !n->firstChild && !n->lastChild && !n->attributes.first);

    EXPECT_EQ(str(t1->name), u"#text");
    EXPECT_EQ(t1->name, t2->name);  // one static name for every text node
    EXPECT_EQ(str(t1->value), u"ab");
    ASSERT_NE(t2->value, nullptr);
    EXPECT_EQ(str(t2->value), u"");
    EXPECT_EQ(str(c1->name), u"#cdata-section");
    EXPECT_EQ(c1->name, c2->name);
    EXPECT_EQ(str(c1->value), u"x");  // reads up to the first zero unit ...
    EXPECT_EQ(c1->value[2], u'y');    // ... though every unit was copied
    EXPECT_EQ(str(c2->value), u"a");
    EXPECT_EQ(str(pi->name), u"ab");
    ASSERT_NE(pi->value, nullptr);
    EXPECT_EQ(str(pi->value), u"");
    EXPECT_EQ(ea->type, ATTRIBUTE_NODE);
    EXPECT_EQ(str(ea->name), u"a");
    EXPECT_TRUE(!ea->value && !ea->namespaceURI && !ea->prefix && !ea->localName);
    EXPECT_EQ(str(nsp->name), u"p:ab");
    EXPECT_EQ(str(nsp->prefix), u"p");
    EXPECT_EQ(str(nsp->localName), u"ab");
    EXPECT_TRUE(!nsp->namespaceURI && !nsp->value);
    EXPECT_EQ(str(nsu->name), u"pq:loc");
    EXPECT_EQ(str(nsu->namespaceURI), u"urn");
    for (vrkNode *n : {t1, t2, c1, c2, pi, ea, nsp, nsu}) vrkDOM_destroyNode(n, 1);
}

TEST(Factories, AllocationsAndTheirFailure) {
    for (const Factory &f : kFactories) {
        SCOPED_TRACE(f.what);
        const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
            vrkDOMException e{};
            vrkNode *made = nullptr;
            const int64_t asked = countAllocations([&] { made = f.make(31, &e); });
            if (!run.failed()) {
                EXPECT_EQ(asked, f.allocations);
                EXPECT_EQ(e.code, 0);
                vrkDOM_destroyNode(made, 1);
                return;
            }
            EXPECT_EQ(made, nullptr);
            expectRaised(e, ERR_OUT_OF_MEMORY, 31);
            // Past the record every copy is asked for before any is looked at.
            EXPECT_EQ(asked, run.failingIndex() == 1 ? 1 : f.allocations);
        });
        EXPECT_EQ(runs, f.allocations + 1);
    }
}

TEST(Factories, PendingRecordStopsEveryOperation) {
    vrkDOMException clear{};
    const Units v = units(u"v");
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 1, &clear);
    vrkNode *text = vrkDOMReal_createTextNode(kCaller, 2, v.data(), 1, &clear);
    vrkNode *el = vrkDOMReal_createEANode(kCaller, 3, ELEMENT_NODE, v.data(), 1, &clear);
    vrkNode *attr = vrkDOMReal_createEANode(kCaller, 4, ATTRIBUTE_NODE, v.data(), 1, &clear);
    ASSERT_EQ(clear.code, 0);
    const vrkDOMException pending{ERR_NOT_FOUND, "elsewhere", 77, "caller", 88};
    vrkDOMException e = pending;
    UniChar *oldValue = text->value;
    const int64_t asked = countAllocations([&] {
        for (const Factory &f : kFactories) EXPECT_EQ(f.make(5, &e), nullptr) << f.what;
        EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 6, text, v.data(), 0, &e), 0);
        EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 7, doc, el, &e), nullptr);
        EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 8, el, doc, &e), nullptr);  // would be refused too
        EXPECT_EQ(vrkElementReal_setAttributeNode(kCaller, 9, el, attr, &e), nullptr);
        EXPECT_EQ(vrkElementReal_setAttributeNodeNS(kCaller, 10, el, attr, &e), nullptr);
        EXPECT_EQ(vrkElementReal_setAttributeNode(kCaller, 11, text, attr, &e), nullptr);
    });
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(text->value, oldValue);
    EXPECT_TRUE(!doc->firstChild && !el->parent && !el->attributes.first && !attr->parent);
    EXPECT_EQ(fields(e), fields(pending));
    for (vrkNode *n : {doc, text, el, attr}) vrkDOM_destroyNode(n, 1);
}

TEST(SetNodeValue, ReplacesOnlyAttributeTextAndCDATA) {
    vrkDOMException e{};
    const Units old = units(u"old"), nv = units(u"new!");
    vrkNode *attr = vrkDOMReal_createEANode(kCaller, 1, ATTRIBUTE_NODE, old.data(), 3, &e);
    vrkNode *text = vrkDOMReal_createTextNode(kCaller, 2, old.data(), 3, &e);
    vrkNode *cdata = vrkDOMReal_createCDATASection(kCaller, 3, old.data(), 3, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 4, old.data(), 3, old.data(), 3, &e);
    vrkNode *el = vrkDOMReal_createEANode(kCaller, 5, ELEMENT_NODE, old.data(), 3, &e);
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 6, &e);
    EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 7, attr, old.data(), 3, &e), 1);  // from a null value
    for (vrkNode *n : {attr, text, cdata}) {
        const int64_t live = liveAllocations();
        EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 8, n, nv.data(), 3, &e), 1);
        EXPECT_EQ(str(n->value), u"new");
        EXPECT_EQ(liveAllocations(), live);  // the old block is gone
    }
    for (vrkNode *n : {pi, el, doc}) {
        UniChar *before = n->value;
        EXPECT_EQ(countAllocations([&] { EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 9, n, nv.data(), 4, &e), 0); }), 0);
        EXPECT_EQ(n->value, before);
    }
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(str(pi->value), u"old");
    for (vrkNode *n : {attr, text, cdata}) {
        UniChar *before = n->value;
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkDOMException re{};
            const int32_t done = vrkNodeReal_setNodeValue(kCaller, 10, n, old.data(), 3, &re);
            EXPECT_EQ(done, run.failed() ? 0 : 1);
            if (!run.failed()) return;
            expectRaised(re, ERR_OUT_OF_MEMORY, 10);
            EXPECT_EQ(n->value, before);
        });
        EXPECT_EQ(str(n->value), u"old");
    }
    for (vrkNode *n : {attr, text, cdata, pi, el, doc}) vrkDOM_destroyNode(n, 1);
}

TEST(AppendChild, RefusalsAndLinks) {
    vrkDOMException e{};
    const Units n = units(u"n");
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 1, &e);
    vrkNode *other = vrkDOMReal_createDocument(kCaller, 2, &e);
    vrkNode *text = vrkDOMReal_createTextNode(kCaller, 3, n.data(), 1, &e);
    vrkNode *root = vrkDOMReal_createEANode(kCaller, 4, ELEMENT_NODE, n.data(), 1, &e);
    vrkNode *second = vrkDOMReal_createEANode(kCaller, 5, ELEMENT_NODE, n.data(), 1, &e);
    vrkNode *text2 = vrkDOMReal_createTextNode(kCaller, 6, n.data(), 1, &e);
    vrkNode *cdata = vrkDOMReal_createCDATASection(kCaller, 7, n.data(), 1, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 8, n.data(), 1, n.data(), 1, &e);

    // Without a document element a document takes text, then an element.
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 9, doc, text, &e), text);
    expectChildren(doc, {text});
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 10, doc, root, &e), root);
    EXPECT_EQ(vrkDOM_getDocumentElement(doc), root);
    ASSERT_EQ(e.code, 0);

    // No parent takes a document; a document with its element takes only PIs.
    struct Pair { vrkNode *parent, *child; };
    for (const Pair &r : {Pair{root, other}, Pair{text, other}, Pair{doc, other}, Pair{doc, second},
                          Pair{doc, text2}, Pair{doc, cdata}}) {
        const auto parentBefore = links(r.parent), childBefore = links(r.child);
        vrkDOMException re{};
        EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 42, r.parent, r.child, &re), nullptr);
        expectRaised(re, ERR_HIERARCHY_REQUEST, 42);
        EXPECT_EQ(links(r.parent), parentBefore);
        EXPECT_EQ(links(r.child), childBefore);
    }
    expectChildren(doc, {text, root});
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 11, doc, pi, &e), pi);
    expectChildren(doc, {text, root, pi});

    // A text node is not refused a child.
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 12, text, text2, &e), text2);
    expectChildren(text, {text2});
    EXPECT_EQ(e.code, 0);
    vrkDOM_destroyNode(doc, 1);  // leaves what hangs below the text node
    for (vrkNode *x : {other, second, text2, cdata}) vrkDOM_destroyNode(x, 1);
}
