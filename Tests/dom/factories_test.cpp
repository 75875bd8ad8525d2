// Making and releasing nodes: the fields each factory fills, a refused
// allocation, the sticky exception record, setNodeValue, appendChild,
// the document element, and destroyNode at any depth.
#include <functional>

#include "dom_test.h"
#include "support/small_stack.h"

using namespace domtest;

namespace {

const Units kUri = units(u"urn:u"), kPrefix = units(u"pq"), kLocal = units(u"loc"), kData = units(u"d");

const struct {
    const char *what;
    std::function<vrkNode *(int32_t, vrkDOMException *)> make;
} kFactories[] = {
    {"Document", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createDocument(kCaller, l, e); }},
    {"EANode", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANode(kCaller, l, ELEMENT_NODE, kLocal.data(), 3, e); }},
    {"NSP without uri", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANodeNSP(kCaller, l, ATTRIBUTE_NODE, nullptr, 0, kPrefix.data(), 2, kLocal.data(), 3, e); }},
    {"NSP with uri", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createEANodeNSP(kCaller, l, ELEMENT_NODE, kUri.data(), 5, kPrefix.data(), 2, kLocal.data(), 3, e); }},
    {"Text", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createTextNode(kCaller, l, kData.data(), 1, e); }},
    {"CDATA", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createCDATASection(kCaller, l, kData.data(), 1, e); }},
    {"PI", [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createProcessingInstruction(kCaller, l, kLocal.data(), 3, kData.data(), 1, e); }},
};

}  // namespace

TEST(Factories, FieldsOfEachKind) {
    vrkDOMException e{};
    const Units ab = units(u"ab"), withZero = {'x', 0, 'y', 0};
    vrkNode *nodes[] = {
        vrkDOMReal_createDocument(kCaller, 0, &e),
        vrkDOMReal_createTextNode(kCaller, 1, ab.data(), 2, &e),
        vrkDOMReal_createTextNode(kCaller, 2, ab.data(), 0, &e),
        vrkDOMReal_createCDATASection(kCaller, 3, withZero.data(), 3, &e),
        vrkDOMReal_createProcessingInstruction(kCaller, 5, ab.data(), 2, ab.data(), 0, &e),
        vrkDOMReal_createEANode(kCaller, 6, ATTRIBUTE_NODE, ab.data(), 1, &e),
        vrkDOMReal_createEANodeNSP(kCaller, 7, ELEMENT_NODE, nullptr, 0, kPrefix.data(), 1, ab.data(), 2, &e),
        vrkDOMReal_createEANodeNSP(kCaller, 8, ATTRIBUTE_NODE, kUri.data(), 3, kPrefix.data(), 2, kLocal.data(), 3, &e)};
    ASSERT_EQ(e.code, 0);
    // type name|value|namespaceURI|prefix|localName, "(null)" for null.
    const char *const expected[] = {
        "9 #document|(null)|(null)|(null)|(null)", "3 #text|ab|(null)|(null)|(null)", "3 #text||(null)|(null)|(null)",
        "4 #cdata-section|x|(null)|(null)|(null)", "7 ab||(null)|(null)|(null)", "2 a|(null)|(null)|(null)|(null)",
        "1 p:ab|(null)|(null)|p|ab", "2 pq:loc|(null)|urn|pq|loc"};
    for (int i = 0; i < 8; ++i) {
        const vrkNode *n = nodes[i];
        EXPECT_EQ(std::to_string(n->type) + " " + utf8(n->name) + "|" + utf8(n->value) + "|" + utf8(n->namespaceURI) +
                      "|" + utf8(n->prefix) + "|" + utf8(n->localName),
                  expected[i]);
        EXPECT_TRUE(!n->parent && !n->previous && !n->next && !n->firstChild && !n->lastChild &&
                    !n->attributes.first && n->attributes.count == 0);
    }
    EXPECT_EQ(nodes[1]->name, nodes[2]->name);  // one static name for every text node
    EXPECT_EQ(nodes[3]->value[2], u'y');         // every unit was copied, past a zero
    for (vrkNode *n : nodes) vrkDOM_destroyNode(n, 1);
}

TEST(Factories, RefusedAllocationsAndPendingRecord) {
    for (const auto &f : kFactories) {
        SCOPED_TRACE(f.what);
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkDOMException e{0, "stale", -5, "stale", -5};
            vrkNode *made = f.make(31, &e);
            vrkDOM_destroyNode(made, 1);
            if (!run.failed()) {
                EXPECT_STREQ(e.file, "stale") << "success writes nothing";
                return;
            }
            EXPECT_EQ(made, nullptr);
            expectRaised(e, ERR_OUT_OF_MEMORY, 31);
        });
    }
    // A pending record stops every operation before it allocates or links.
    vrkDOMException clear{};
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 1, &clear);
    vrkNode *text = textNode(u"v"), *el = element(u"v"), *a = attr(u"v");
    vrkDOMException e = kPending;
    UniChar *oldValue = text->value;
    EXPECT_EQ(countAllocations([&] {
                  for (const auto &f : kFactories) EXPECT_EQ(f.make(5, &e), nullptr) << f.what;
                  EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 6, text, kData.data(), 0, &e), 0);
                  EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 7, doc, el, &e), nullptr);
                  EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 8, el, doc, &e), nullptr);  // would be refused too
                  EXPECT_EQ(vrkElementReal_setAttributeNode(kCaller, 9, el, a, &e), nullptr);
                  EXPECT_EQ(vrkElementReal_setAttributeNodeNS(kCaller, 10, el, a, &e), nullptr);
                  EXPECT_EQ(vrkElementReal_setAttributeNode(kCaller, 11, text, a, &e), nullptr);
              }),
              0);
    EXPECT_TRUE(text->value == oldValue && !doc->firstChild && !el->parent && !el->attributes.first && !a->parent);
    EXPECT_EQ(fields(e), fields(kPending));
    for (vrkNode *n : {doc, text, el, a}) vrkDOM_destroyNode(n, 1);
}

TEST(SetNodeValue, ReplacesOnlyAttributeTextAndCDATA) {
    vrkDOMException e{};
    const Units old = units(u"old"), nv = units(u"new!"), longer = units(u"longer");
    vrkNode *a = attr(u"a"), *text = textNode(u"t"), *el = element(u"e");
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 6, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 4, old.data(), 3, old.data(), 3, &e);
    vrkNode *cdata = vrkDOMReal_createCDATASection(kCaller, 3, old.data(), 3, &e);
    for (vrkNode *n : {a, text, cdata}) {  // the attribute from a null value
        EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 8, n, nv.data(), 3, &e), 1);
        EXPECT_EQ(str(n->value), u"new");
        // A value of its own units: the shorter tail of the old one.
        EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 8, n, n->value + 1, 2, &e), 1);
        EXPECT_EQ(str(n->value), u"ew");
    }
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkNode *n = textNode(u"old");
        if (n == nullptr) return;
        UniChar *before = n->value;
        vrkDOMException re{};
        const int32_t done = vrkNodeReal_setNodeValue(kCaller, 10, n, longer.data(), 6, &re);
        EXPECT_EQ(done, run.failed() ? 0 : 1);
        if (run.failed()) {
            expectRaised(re, ERR_OUT_OF_MEMORY, 10);
            EXPECT_EQ(n->value, before) << "a refusal keeps the old value";
        }
        EXPECT_EQ(str(n->value), run.failed() ? u"old" : u"longer");
        vrkDOM_destroyNode(n, 1);
    });
    for (vrkNode *n : {pi, el, doc}) {
        UniChar *before = n->value;
        EXPECT_EQ(countAllocations([&] { EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 9, n, nv.data(), 4, &e), 0); }), 0);
        EXPECT_EQ(n->value, before);
    }
    EXPECT_TRUE(e.code == 0 && str(pi->value) == u"old");
    for (vrkNode *n : {a, text, cdata, pi, el, doc}) vrkDOM_destroyNode(n, 1);
}

TEST(AppendChild, RefusalsLinksAndTheDocumentElement) {
    vrkDOMException e{};
    vrkNode *doc = vrkDOMReal_createDocument(kCaller, 1, &e), *other = vrkDOMReal_createDocument(kCaller, 2, &e);
    vrkNode *text = textNode(u"t"), *root = element(u"r"), *second = element(u"s"), *text2 = textNode(u"u");
    vrkNode *cdata = vrkDOMReal_createCDATASection(kCaller, 7, kData.data(), 1, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 8, kData.data(), 1, kData.data(), 1, &e);
    EXPECT_EQ(vrkDOM_getDocumentElement(nullptr), nullptr);
    // Without a document element a document takes text, then an element.
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 9, doc, text, &e), text);
    EXPECT_EQ(vrkDOM_getDocumentElement(doc), nullptr);
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 10, doc, root, &e), root);
    EXPECT_TRUE(vrkDOM_getDocumentElement(doc) == root && vrkDOM_getDocumentElement(root) == nullptr);
    ASSERT_EQ(e.code, 0);
    // No parent takes a document; a document with its element takes only PIs.
    const std::pair<vrkNode *, vrkNode *> refused[] = {{root, other}, {text, other}, {doc, other},
                                                        {doc, second}, {doc, text2}, {doc, cdata}};
    for (const auto &[parent, child] : refused) {
        vrkDOMException re{};
        EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 42, parent, child, &re), nullptr);
        expectRaised(re, ERR_HIERARCHY_REQUEST, 42);
    }
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 11, doc, pi, &e), pi);
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 12, text, text2, &e), text2);  // a text node is not refused a child
    vrkNodeReal_appendChild(kCaller, 13, root, second, &e);
    vrkElementReal_setAttributeNode(kCaller, 14, root, attr(u"a"), &e);
    expectTree(doc, "#document[\"t\",r(a=\"(null)\")[s],?d\"d\"]");
    EXPECT_TRUE(text->firstChild == text2 && text2->parent == text && !other->firstChild && !cdata->parent && !e.code);
    EXPECT_EQ(vrkDOM_getNumberOfChildren(doc) * 10 + vrkDOM_getNumberOfChildren(root), 31);  // attributes are no children
    vrkDOM_destroyNode(doc, 1);  // leaves what hangs below the text node
    for (vrkNode *x : {other, text2, cdata}) vrkDOM_destroyNode(x, 1);
}

TEST(DestroyNode, ReleasesWhatEachKindOwnsAtAnyDepth) {
    vrkDOM_destroyNode(nullptr, 1);
    const int64_t baseline = liveAllocations();
    vrkDOMException e{};
    // Only elements and documents read deep: a stray child of a leaf stays.
    for (vrkNode *leaf : {textNode(u"t"), attr(u"a"), vrkDOMReal_createCDATASection(kCaller, 0, kData.data(), 1, &e),
                          vrkDOMReal_createProcessingInstruction(kCaller, 0, kData.data(), 1, kData.data(), 1, &e)}) {
        vrkNode *stray = leaf->firstChild = textNode(u"s");
        vrkDOM_destroyNode(leaf, 1), vrkDOM_destroyNode(stray, 1);
    }
    // An unknown kind: the node goes, a value in a block of its own stays.
    vrkNode *unknown = textNode(u"v");
    ASSERT_EQ(vrkNodeReal_setNodeValue(kCaller, 0, unknown, units(u"longer").data(), 6, &e), 1);
    UniChar *kept = unknown->value;
    unknown->type = 8;
    vrkDOM_destroyNode(unknown, 1);
    EXPECT_EQ(str(kept), u"longer");
    std::free(kept);
    EXPECT_EQ(liveAllocations(), baseline);
    // deep 0: the attributes go, the children stay.
    vrkNode *el = element(u"e"), *child = element(u"c");
    vrkElementReal_setAttributeNode(kCaller, 0, el, attr(u"a"), &e), vrkNodeReal_appendChild(kCaller, 0, el, child, &e);
    vrkDOM_destroyNode(el, 0);
    EXPECT_EQ(str(child->name), u"c");
    child->parent = nullptr;
    vrkDOM_destroyNode(child, 1);

    // A million levels, some with attributes and text, on a small stack.
    vrkNode *top = vrkDOMReal_createDocument(kCaller, 0, &e), *last = top;
    for (int i = 0; i < 1'000'000; ++i) {
        last = vrkNodeReal_appendChild(kCaller, 0, last, element(u"n"), &e);
        if (i % 100'000 == 0) vrkElementReal_setAttributeNode(kCaller, 0, last, attr(u"a"), &e), vrkNodeReal_appendChild(kCaller, 0, last, textNode(u"t"), &e);
    }
    ASSERT_EQ(e.code, 0);
    runOnSmallStack([top] { vrkDOM_destroyNode(top, 1); });
    EXPECT_EQ(liveAllocations(), baseline);
}

// The test programs' free() stops on a pointer inside a live block: a node
// string freed other than through the library's own release.
TEST(NodeBlockDeathTest, AStringFreedInsideItsNodeIsCaught) {
    vrkNode *text = textNode(u"inside");
    EXPECT_DEATH(std::free(text->value), "inside the live block");
    vrkDOM_destroyNode(text, 1);
}
