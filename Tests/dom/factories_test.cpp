// Making and releasing nodes: the fields each factory fills, a refused
// allocation, setNodeValue, and destroyNode at any depth.  Child lists,
// attribute maps and pending records are the edit model's (Fuzz/fuzz_edit).
#include <functional>

#include "dom_test.h"
#include "support/small_stack.h"

using namespace domtest;

namespace {

const Units kUri = units(u"urn:u");
const Units kPrefix = units(u"pq");
const Units kLocal = units(u"loc");
const Units kData = units(u"d");

using Factory = std::function<vrkNode *(int32_t line, vrkDOMException *)>;
const Factory kFactories[] = {
    [](int32_t l, vrkDOMException *e) { return vrkDOMReal_createDocument(kCaller, l, e); },
    [](int32_t l, vrkDOMException *e) {
        return vrkDOMReal_createEANode(kCaller, l, ELEMENT_NODE, kLocal.data(), 3, e);
    },
    [](int32_t l, vrkDOMException *e) {
        return vrkDOMReal_createEANodeNSP(kCaller, l, ATTRIBUTE_NODE, kUri.data(), 5,
                                          kPrefix.data(), 2, kLocal.data(), 3, e);
    },
    [](int32_t l, vrkDOMException *e) {
        return vrkDOMReal_createTextNode(kCaller, l, kData.data(), 1, e);
    },
    [](int32_t l, vrkDOMException *e) {
        return vrkDOMReal_createCDATASection(kCaller, l, kData.data(), 1, e);
    },
    [](int32_t l, vrkDOMException *e) {
        return vrkDOMReal_createProcessingInstruction(kCaller, l, kLocal.data(), 3, kData.data(),
                                                      1, e);
    },
};

// type name|value|namespaceURI|prefix|localName, "(null)" for null.
std::string fieldsOf(const vrkNode *n) {
    return std::to_string(n->type) + " " + utf8(n->name) + "|" + utf8(n->value) + "|" +
           utf8(n->namespaceURI) + "|" + utf8(n->prefix) + "|" + utf8(n->localName);
}

}  // namespace

TEST(Factories, FieldsOfEachKind) {
    vrkDOMException e{};
    const Units ab = units(u"ab");
    const Units withZero = {'x', 0, 'y', 0};
    vrkNode *nodes[] = {
        vrkDOMReal_createTextNode(kCaller, 1, ab.data(), 2, &e),
        vrkDOMReal_createTextNode(kCaller, 2, ab.data(), 0, &e),
        vrkDOMReal_createCDATASection(kCaller, 3, withZero.data(), 3, &e),
        vrkDOMReal_createProcessingInstruction(kCaller, 5, ab.data(), 2, ab.data(), 0, &e),
        vrkDOMReal_createEANode(kCaller, 6, ATTRIBUTE_NODE, ab.data(), 1, &e),
        vrkDOMReal_createEANodeNSP(kCaller, 7, ELEMENT_NODE, nullptr, 0, kPrefix.data(), 1,
                                   ab.data(), 2, &e),
        vrkDOMReal_createEANodeNSP(kCaller, 8, ATTRIBUTE_NODE, kUri.data(), 3, kPrefix.data(), 2,
                                   kLocal.data(), 3, &e),
        vrkDOMReal_createDocument(kCaller, 0, &e),
    };
    const char *const expected[] = {
        "3 #text|ab|(null)|(null)|(null)",
        "3 #text||(null)|(null)|(null)",
        "4 #cdata-section|x|(null)|(null)|(null)",
        "7 ab||(null)|(null)|(null)",
        "2 a|(null)|(null)|(null)|(null)",
        "1 p:ab|(null)|(null)|p|ab",
        "2 pq:loc|(null)|urn|pq|loc",
        "9 #document|(null)|(null)|(null)|(null)",
    };
    EXPECT_EQ(e.code, 0);
    for (std::size_t i = 0; i < std::size(nodes); ++i) {
        EXPECT_EQ(fieldsOf(nodes[i]), expected[i]) << "node " << i;
        EXPECT_EQ(describe(nodes[i]).find('['), std::string::npos)
            << "node " << i << " has children";
    }
    EXPECT_EQ(nodes[0]->name, nodes[1]->name) << "text nodes share one static name";
    EXPECT_EQ(nodes[2]->value[2], u'y') << "every unit is copied, past a zero";
    for (vrkNode *n : nodes) vrkDOM_destroyNode(n, 1);
}

TEST(Factories, ARefusedAllocationIsRecordedAndASuccessWritesNothing) {
    for (const Factory &make : kFactories) {
        SCOPED_TRACE("factory " + std::to_string(&make - kFactories));
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkDOMException e{0, "stale", -5, "stale", -5};
            vrkNode *made = make(31, &e);
            vrkDOM_destroyNode(made, 1);
            if (!run.failed()) {
                EXPECT_STREQ(e.file, "stale") << "a success wrote the record";
                return;
            }
            EXPECT_EQ(made, nullptr);
            expectRaised(e, ERR_OUT_OF_MEMORY, 31);
        });
    }
}

TEST(SetNodeValue, TakesItsOwnUnitsAndARefusalKeepsTheOldValue) {
    vrkNode *text = textNode(u"old value");
    vrkDOMException e{};
    EXPECT_EQ(vrkNodeReal_setNodeValue(kCaller, 8, text, text->value + 4, 5, &e), 1);
    EXPECT_EQ(str(text->value), u"value") << "a tail of the old value";
    vrkDOM_destroyNode(text, 1);
    const Units longer = units(u"longer");
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkNode *n = textNode(u"old");
        if (n == nullptr) return;
        vrkDOMException re{};
        const int32_t done = vrkNodeReal_setNodeValue(kCaller, 10, n, longer.data(), 6, &re);
        EXPECT_EQ(done, run.failed() ? 0 : 1);
        EXPECT_EQ(str(n->value), run.failed() ? u"old" : u"longer");
        if (run.failed()) expectRaised(re, ERR_OUT_OF_MEMORY, 10);
        vrkDOM_destroyNode(n, 1);
    });
}

TEST(DestroyNode, ReleasesWhatEachKindOwnsAtAnyDepth) {
    vrkDOM_destroyNode(nullptr, 1);
    const int64_t baseline = liveAllocations();
    vrkDOMException e{};
    // Only elements and documents release children: a stray child of a leaf stays.
    vrkNode *leaf = vrkDOMReal_createCDATASection(kCaller, 0, kData.data(), 1, &e);
    vrkNode *stray = textNode(u"s");
    leaf->firstChild = stray;
    vrkDOM_destroyNode(leaf, 1);
    EXPECT_EQ(liveAllocations(), baseline + 1) << "the stray child was released";
    vrkDOM_destroyNode(stray, 1);
    // An unknown kind: the node goes, a value in a block of its own stays.
    vrkNode *unknown = textNode(u"v");
    ASSERT_EQ(vrkNodeReal_setNodeValue(kCaller, 0, unknown, units(u"longer").data(), 6, &e), 1);
    UniChar *kept = unknown->value;
    unknown->type = 8;
    vrkDOM_destroyNode(unknown, 1);
    EXPECT_EQ(str(kept), u"longer");
    std::free(kept);
    // deep 0: the attributes go, the children stay.
    vrkNode *el = element(u"e");
    vrkNode *child = element(u"c");
    vrkElementReal_setAttributeNode(kCaller, 0, el, attr(u"a"), &e);
    vrkNodeReal_appendChild(kCaller, 0, el, child, &e);
    vrkDOM_destroyNode(el, 0);
    EXPECT_EQ(liveAllocations(), baseline + 1) << "deep 0 released more than the element";
    vrkDOM_destroyNode(child, 1);
    // A million levels, some with attributes and text, on a small stack.
    vrkNode *top = vrkDOMReal_createDocument(kCaller, 0, &e);
    vrkNode *last = top;
    for (int i = 0; i < 1'000'000; ++i) {
        last = vrkNodeReal_appendChild(kCaller, 0, last, element(u"n"), &e);
        if (i % 100'000 != 0) continue;
        vrkElementReal_setAttributeNode(kCaller, 0, last, attr(u"a"), &e);
        vrkNodeReal_appendChild(kCaller, 0, last, textNode(u"t"), &e);
    }
    ASSERT_EQ(e.code, 0);
    runOnSmallStack([top] { vrkDOM_destroyNode(top, 1); });
    EXPECT_EQ(liveAllocations(), baseline) << "blocks left by the deep release";
}

// The test programs' free() stops on a pointer inside a live block: a node
// string freed other than through the library's own release.
TEST(NodeBlockDeathTest, AStringFreedInsideItsNodeIsCaught) {
    vrkNode *text = textNode(u"inside");
    EXPECT_DEATH(std::free(text->value), "inside the live block");
    vrkDOM_destroyNode(text, 1);
}
