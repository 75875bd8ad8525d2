// Setting a value, rewriting a prefix, merging text nodes and copying one
// node: what each allocates and what a refused allocation leaves behind.
// Their results on any tree are the edit model's (Fuzz/fuzz_edit).
#include "dom_test.h"

using namespace domtest;

namespace {

// Element prefix:local in namespace "u"; with an empty prefix, local alone, still in "u".
vrkNode *namespaced(std::u16string_view prefix) {
    if (!prefix.empty()) return nsNode(ELEMENT_NODE, u"u", prefix, u"local");
    vrkNode *node = element(u"local");
    if (node == nullptr) return nullptr;
    node->localName = vrkunistrdup(units(u"local").data());
    node->namespaceURI = vrkunistrdup(units(u"u").data());
    if (node->localName != nullptr && node->namespaceURI != nullptr) return node;
    vrkDOM_destroyNode(node, 0);
    return nullptr;
}

int32_t setPrefix(vrkNode *node, std::u16string_view prefix, vrkDOMException &e,
                  int32_t line = 0) {
    return vrkNodeReal_setPrefix(kCaller, line, node, units(prefix).data(), len(prefix), &e);
}

// name|prefix of a node.
std::string names(const vrkNode *n) { return utf8(n->name) + "|" + utf8(n->prefix); }

}  // namespace

TEST(SetPrefix, RewritesInPlaceUnlessLongerAndARefusalChangesNothing) {
    vrkDOMException e{};
    vrkNode *node = namespaced(u"ab");
    const UniChar *name = node->name;
    EXPECT_EQ(countAllocations([&] { setPrefix(node, u"cd", e); }), 0) << "as long";
    EXPECT_EQ(countAllocations([&] { setPrefix(node, u"c", e); }), 0) << "shorter";
    EXPECT_EQ(node->name, name) << "the name moved";
    EXPECT_EQ(names(node), "c:local|c");
    vrkDOM_destroyNode(node, 0);
    vrkNode *plain = element(u"a");
    EXPECT_EQ(setPrefix(plain, u"q", e, 12), 0);
    expectRaised(e, ERR_NAMESPACE, 12);
    vrkDOM_destroyNode(plain, 0);
    // Growing from a prefix and from none: a refusal leaves the node as it was.
    for (const std::u16string_view before : {u"a", u""}) {
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkNode *n = namespaced(before);
            if (n == nullptr) return;
            const std::string was = names(n);
            vrkDOMException ex{};
            const int32_t result = setPrefix(n, u"wxyz", ex, 42);
            EXPECT_EQ(result, run.failed() ? 0 : 1);
            EXPECT_EQ(names(n), run.failed() ? was : "wxyz:local|wxyz");
            if (run.failed()) expectRaised(ex, ERR_OUT_OF_MEMORY, 42);
            vrkDOM_destroyNode(n, 0);
        });
    }
}

TEST(Normalize, ARefusedGrowthKeepsTheMergesBeforeIt) {
    const char *const stages[] = {R"(r["a","&","b",e["c","&","d"]])",
                                  R"(r["a&","b",e["c","&","d"]])", R"(r["a&b",e["c","&","d"]])",
                                  R"(r["a&b",e["c&","d"]])", R"(r["a&b",e["c&d"]])"};
    forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed;
        const int64_t parsing =
            countAllocations([&] { parsed = parseUtf8("<r>a&amp;b<e>c&amp;d</e></r>"); });
        if (parsed.document == nullptr) return;
        vrkDOMException e{};
        const int32_t result = vrkNodeReal_normalize(kCaller, 77, parsed.document.get(), &e);
        const int64_t merged = run.failed() ? run.failingIndex() - parsing - 1 : 4;
        EXPECT_EQ(result, run.failed() ? 0 : 1);
        EXPECT_EQ(describe(parsed.document->firstChild), stages[merged]);
        if (run.failed()) expectRaised(e, ERR_OUT_OF_MEMORY, 77);
    });
}

TEST(CloneNode, ARefusalLeavesNothing) {
    vrkNode *a = nsNode(ATTRIBUTE_NODE, u"urn:x", u"p", u"local");  // every string a node can own
    vrkDOMException e{};
    vrkNodeReal_setNodeValue(kCaller, 0, a, units(u"value").data(), 5, &e);
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkDOMException ex{};
        vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 55, a, 0, &ex);
        EXPECT_EQ(copy == nullptr, run.failed());
        if (run.failed()) expectRaised(ex, ERR_OUT_OF_MEMORY, 55);
        vrkDOM_destroyNode(copy, 1);
    });
    vrkDOM_destroyNode(a, 0);
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
