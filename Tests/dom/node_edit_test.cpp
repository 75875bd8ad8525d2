// Rewriting a prefix, merging text nodes and copying one node: the results,
// what each allocates, and what a refused allocation leaves behind.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

const char *const kCaller = "node_edit_test";
const vrkDOMException kPending{ERR_NOT_FOUND, "f", 1, "g", 2};

void expectRecord(const vrkDOMException &e, int32_t code, int32_t callerLine) {
    EXPECT_EQ(e.code, code);
    EXPECT_STREQ(e.file, "Source/dom");
    EXPECT_GT(e.line, 0);
    EXPECT_EQ(e.callerFile, kCaller);
    EXPECT_EQ(e.callerLine, callerLine);
}

// A record holding kPending byte for byte, so that memcmp tells any write.
vrkDOMException pending() {
    vrkDOMException e;
    std::memcpy(&e, &kPending, sizeof e);
    return e;
}

int32_t length(std::u16string_view s) { return static_cast<int32_t>(s.size()); }

// Element "prefix:local" in namespace "u"; with an empty prefix, "local" with
// no prefix, still in "u".  Null when an allocation was refused.
vrkNode *namespaced(std::u16string_view prefix) {
    vrkDOMException e{};
    const Units uri = units(u"u"), local = units(u"local");
    if (!prefix.empty()) {
        return vrkDOMReal_createEANodeNSP(kCaller, 0, ELEMENT_NODE, uri.data(), 1, units(prefix).data(),
                                          length(prefix), local.data(), 5, &e);
    }
    vrkNode *node = vrkDOMReal_createEANode(kCaller, 0, ELEMENT_NODE, local.data(), 5, &e);
    if (node == nullptr) return nullptr;
    node->localName = vrkunistrdup(local.data());
    node->namespaceURI = vrkunistrdup(uri.data());
    if (node->localName != nullptr && node->namespaceURI != nullptr) return node;
    vrkDOM_destroyNode(node, 0);
    return nullptr;
}

int32_t setPrefix(vrkNode *node, const char16_t *prefix, vrkDOMException &e, int32_t line = 0) {
    if (prefix == nullptr) return vrkNodeReal_setPrefix(kCaller, line, node, nullptr, 0, &e);
    return vrkNodeReal_setPrefix(kCaller, line, node, units(prefix).data(), length(prefix), &e);
}

}  // namespace

TEST(SetPrefix, RewritesNameAndPrefixInPlace) {
    struct Row {
        std::u16string_view before;
        const char16_t *argument;
        std::u16string name, prefix;  // an empty prefix must read as null
    };
    for (const Row &row : {Row{u"a", u"b", u"b:local", u"b"}, Row{u"a", u"abc", u"abc:local", u"abc"},
                           Row{u"abc", u"a", u"a:local", u"a"}, Row{u"abc", nullptr, u"local", u""},
                           Row{u"", u"ab", u"ab:local", u"ab"}, Row{u"", nullptr, u"local", u""},
                           Row{u"abc", u"", u"local", u""}, Row{u"", u"", u"local", u""}}) {
        const std::string label = utf8(units(row.before).data()) + " -> " + utf8(units(row.name).data());
        vrkDOMException e{};
        vrkNode *node = namespaced(row.before);
        const UniChar *localName = node->localName, *uri = node->namespaceURI;
        EXPECT_EQ(setPrefix(node, row.argument, e), 1) << label;
        EXPECT_EQ(str(node->name), row.name) << label;
        EXPECT_EQ(str(node->prefix), row.prefix) << label;
        EXPECT_EQ(node->prefix == nullptr, row.prefix.empty()) << label;
        EXPECT_TRUE(node->localName == localName && str(localName) == u"local") << label;
        EXPECT_TRUE(node->namespaceURI == uri && str(uri) == u"u") << label;
        // Removed and set again, it reads as at first.
        EXPECT_EQ(setPrefix(node, nullptr, e), 1);
        EXPECT_EQ(setPrefix(node, std::u16string(row.before).c_str(), e), 1);
        EXPECT_EQ(str(node->name), row.before.empty() ? u"local" : std::u16string(row.before) + u":local") << label;
        EXPECT_EQ(e.code, 0) << label;
        vrkDOM_destroyNode(node, 0);
    }
}

TEST(SetPrefix, RefusesANodeWithoutNamespaceName) {
    vrkDOMException e{};
    vrkNode *plain = vrkDOMReal_createEANode(kCaller, 0, ELEMENT_NODE, units(u"a").data(), 1, &e);
    vrkNode *prefixed = vrkDOMReal_createEANodeNSP(kCaller, 0, ATTRIBUTE_NODE, nullptr, 0, units(u"p").data(), 1,
                                                   units(u"l").data(), 1, &e);
    const UniChar *name = prefixed->name, *prefix = prefixed->prefix;
    int32_t line = 10;
    for (vrkNode *node : {plain, prefixed}) {
        for (const char16_t *argument : {u"q", static_cast<const char16_t *>(nullptr), u"longer"}) {
            e = vrkDOMException{};
            EXPECT_EQ(setPrefix(node, argument, e, ++line), 0);
            expectRecord(e, ERR_NAMESPACE, line);
        }
    }
    EXPECT_TRUE(str(plain->name) == u"a" && plain->prefix == nullptr);
    EXPECT_TRUE(prefixed->name == name && str(name) == u"p:l" && prefixed->prefix == prefix && str(prefix) == u"p");
    // A pending failure comes first.
    e = pending();
    EXPECT_EQ(setPrefix(plain, u"q", e), 0);
    EXPECT_EQ(std::memcmp(&e, &kPending, sizeof e), 0);
    vrkDOM_destroyNode(plain, 0);
    vrkDOM_destroyNode(prefixed, 0);
}

TEST(SetPrefix, AllocatesOnlyToGrow) {
    vrkDOMException e{};
    vrkNode *node = namespaced(u"ab");
    const UniChar *name = node->name, *prefix = node->prefix;
    EXPECT_EQ(countAllocations([&] { setPrefix(node, u"cd", e); }), 0);
    EXPECT_TRUE(node->name == name && str(name) == u"cd:local" && node->prefix == prefix && str(prefix) == u"cd");
    EXPECT_EQ(countAllocations([&] { setPrefix(node, nullptr, e); setPrefix(node, nullptr, e); }), 0);
    EXPECT_EQ(str(node->name), u"local");
    vrkDOM_destroyNode(node, 0);

    // Growing from a prefix and from none: any refusal leaves the node as it was.
    for (const std::u16string_view before : {u"a", u""}) {
        int refused = 0;
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkNode *n = namespaced(before);
            if (n == nullptr) return;
            const std::u16string nameBefore = str(n->name);
            vrkDOMException ex{};
            const int32_t result = setPrefix(n, u"wxyz", ex, 42);
            if (run.failed()) {
                ++refused;
                EXPECT_EQ(result, 0);
                expectRecord(ex, ERR_OUT_OF_MEMORY, 42);
                EXPECT_EQ(str(n->name), nameBefore);
                EXPECT_EQ(str(n->prefix), before);
                EXPECT_EQ(n->prefix == nullptr, before.empty());
            } else {
                EXPECT_TRUE(result == 1 && str(n->name) == u"wxyz:local" && str(n->prefix) == u"wxyz");
            }
            vrkDOM_destroyNode(n, 0);
        });
        EXPECT_EQ(refused, 2);  // the prefix block, then the name block
    }
    // Shrinking: a refused shrink keeps the larger block, its text complete.
    int refused = 0;
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkNode *n = namespaced(u"abcdef");
        if (n == nullptr) return;
        vrkDOMException ex{};
        EXPECT_EQ(setPrefix(n, u"x", ex), 1);
        EXPECT_TRUE(ex.code == 0 && str(n->name) == u"x:local" && str(n->prefix) == u"x");
        refused += run.failed() ? 1 : 0;
        vrkDOM_destroyNode(n, 0);
    });
    EXPECT_EQ(refused, 2);
}

TEST(Normalize, MergesRunsOfTextBelowTheNode) {
    // Each reference is a text node of its own.
    Parsed parsed = parseUtf8("<r>a&amp;b<e>c&amp;d<f>g&amp;h</f><![CDATA[i]]>j&#65;<![CDATA[k]]></e>l&amp;m</r>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *e = r->firstChild->next->next->next, *f = e->firstChild->next->next->next;
    const std::string untouched = describe(r);
    vrkDOMException ex = pending();
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, nullptr, &ex), 0);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, r, &ex), 0);
    EXPECT_EQ(std::memcmp(&ex, &kPending, sizeof ex), 0);
    EXPECT_EQ(describe(r), untouched);

    ex = vrkDOMException{};
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, nullptr, &ex), 1);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, f->lastChild, &ex), 1);  // "h": no text follows
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, e, &ex), 1);  // below e only; CDATA keeps "j" apart
    EXPECT_EQ(describe(r), "r[\"a\",\"&\",\"b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l\",\"&\",\"m\"]");
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, e->next, &ex), 1);  // a text node takes one more only
    EXPECT_EQ(describe(r), "r[\"a\",\"&\",\"b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l&\",\"m\"]");
    vrkNode *first = r->firstChild;
    EXPECT_EQ(countAllocations([&] { vrkNodeReal_normalize(kCaller, 0, document, &ex); }), 3);
    EXPECT_EQ(describe(r), "r[\"a&b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l&m\"]");
    EXPECT_TRUE(r->firstChild == first && first->previous == nullptr && first->next == e);

    // A whole list merges into its first node; an empty value merges too.
    vrkNode *empty = vrkDOMReal_createTextNode(kCaller, 0, units(u"").data(), 0, &ex);
    vrkNodeReal_insertBefore(kCaller, 0, f, empty, f->firstChild, &ex);
    vrkNodeReal_appendChild(kCaller, 0, f, vrkDOMReal_createTextNode(kCaller, 0, units(u"z").data(), 1, &ex), &ex);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, f, &ex), 1);
    EXPECT_EQ(describe(f), "f[\"g&hz\"]");
    EXPECT_TRUE(f->firstChild == empty && f->lastChild == empty && empty->next == nullptr);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, f, &ex), 1);  // nothing left to do
    EXPECT_EQ(ex.code, 0);
}

TEST(Normalize, RefusedGrowthKeepsTheMergesBeforeIt) {
    const std::string stages[] = {
        "r[\"a\",\"&\",\"b\",e[\"c\",\"&\",\"d\"]]", "r[\"a&\",\"b\",e[\"c\",\"&\",\"d\"]]",
        "r[\"a&b\",e[\"c\",\"&\",\"d\"]]", "r[\"a&b\",e[\"c&\",\"d\"]]", "r[\"a&b\",e[\"c&d\"]]"};
    int refused = 0;
    forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed;
        const int64_t parsing = countAllocations([&] { parsed = parseUtf8("<r>a&amp;b<e>c&amp;d</e></r>"); });
        if (parsed.document == nullptr || run.failed()) return;
        vrkDOMException e{};
        const int32_t result = vrkNodeReal_normalize(kCaller, 77, parsed.document.get(), &e);
        const int64_t merged = run.failed() ? run.failingIndex() - parsing - 1 : 4;
        ASSERT_TRUE(merged >= 0 && merged <= 4);
        EXPECT_EQ(describe(vrkDOM_getDocumentElement(parsed.document.get())), stages[merged]);
        if (!run.failed()) return;
        ++refused;
        EXPECT_EQ(result, 0);
        expectRecord(e, ERR_OUT_OF_MEMORY, 77);
        testing::internal::CaptureStdout();
        DOM_checkIntegrity(parsed.document.get());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    });
    EXPECT_EQ(refused, 4);
}

TEST(Normalize, LongRunInOneResizePerNode) {
#if defined(__SANITIZE_ADDRESS__)
    // The sanitizer's realloc always moves the block, so every merge copies
    // the whole value; fewer nodes keep that to a second or two.
    constexpr int kNodes = 20'000;
#else
    constexpr int kNodes = 100'000;
#endif
    std::string text = "<a>";
    std::u16string expected;
    for (int i = 0; i < kNodes; ++i) {
        text += i % 2 == 0 ? "&amp;" : "&#66;";
        expected += i % 2 == 0 ? u'&' : u'B';
    }
    Parsed parsed = parseUtf8(text + "</a>");
    vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    ASSERT_EQ(vrkDOM_getNumberOfChildren(a), kNodes);
    vrkDOMException e{};
    EXPECT_EQ(countAllocations([&] { vrkNodeReal_normalize(kCaller, 0, a, &e); }), kNodes - 1);
    EXPECT_EQ(vrkDOM_getNumberOfChildren(a), 1);
    EXPECT_EQ(str(a->firstChild->value), expected);
}

TEST(CloneNode, CopiesOneNodeWithoutLinks) {
    Parsed parsed = parseUtf8("<?t d?><p:e xmlns:p='u' a='1'>x<![CDATA[y]]><c/></p:e>");
    vrkNode *document = parsed.document.get(), *pi = document->firstChild, *element = pi->next;
    vrkNode *sources[] = {document, pi, element, element->firstChild, element->firstChild->next,
                          element->attributes.first};
    std::vector<vrkNode *> copies;
    vrkDOMException e{};
    for (vrkNode *source : sources) {
        unsigned char before[sizeof(vrkNode)];
        std::memcpy(before, source, sizeof before);
        for (const int32_t deep : {0, 1}) {
            vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 0, source, deep, &e);
            ASSERT_NE(copy, nullptr);
            const std::string label = utf8(source->name) + " deep " + std::to_string(deep);
            const bool staticName = source->type == TEXT_NODE || source->type == CDATA_SECTION_NODE ||
                                    source->type == DOCUMENT_NODE;
            EXPECT_TRUE(copy->type == source->type && (copy->name == source->name) == staticName) << label;
            const UniChar *pairs[][2] = {{copy->name, source->name}, {copy->value, source->value},
                                         {copy->namespaceURI, source->namespaceURI}, {copy->prefix, source->prefix},
                                         {copy->localName, source->localName}};
            for (std::size_t i = 0; i < 5; ++i) {
                EXPECT_EQ(str(pairs[i][0]), str(pairs[i][1])) << label << " field " << i;
                EXPECT_EQ(pairs[i][0] == nullptr, pairs[i][1] == nullptr) << label << " field " << i;
                // Every string but a static name is a block of the copy's own.
                EXPECT_TRUE(i == 0 || pairs[i][1] == nullptr || pairs[i][0] != pairs[i][1]) << label << " field " << i;
            }
            const vrkNode *links[] = {copy->attributes.first, copy->parent, copy->firstChild, copy->lastChild,
                                      copy->previous, copy->next};
            EXPECT_EQ(copy->attributes.count, 0) << label;
            for (const vrkNode *link : links) EXPECT_EQ(link, nullptr) << label;
            copies.push_back(copy);
        }
        EXPECT_EQ(std::memcmp(before, source, sizeof before), 0);
    }
    e = pending();
    EXPECT_EQ(countAllocations([&] { EXPECT_EQ(vrkNodeReal_cloneNode(kCaller, 0, pi, 0, &e), nullptr); }), 0);
    EXPECT_EQ(std::memcmp(&e, &kPending, sizeof e), 0);

    // Destroying a copy leaves the source, and the other way round; a copy
    // of a document shares the static name, which is never freed.
    const std::string tree = describe(document);
    vrkDOM_destroyNode(copies[0], 1);
    vrkDOM_destroyNode(copies[4], 1);
    EXPECT_EQ(describe(document), tree);
    parsed.document.reset();
    EXPECT_EQ(describe(copies[1]) + describe(copies[2]) + describe(copies[5]) + describe(copies[7]) +
                  describe(copies[9]) + utf8(copies[11]->name) + utf8(copies[11]->value),
              "#document?t\"d\"{u}p:e\"x\"C\"y\"xmlns:pu");
    for (std::size_t i = 1; i < copies.size(); ++i) {
        if (i != 4) vrkDOM_destroyNode(copies[i], 1);
    }
}

TEST(CloneNode, RefusedAllocationLeavesNothing) {
    vrkDOMException e{};
    // An attribute has every string a node can own.
    vrkNode *attribute = vrkDOMReal_createEANodeNSP(kCaller, 0, ATTRIBUTE_NODE, units(u"urn:x").data(), 5,
                                                    units(u"p").data(), 1, units(u"local").data(), 5, &e);
    vrkNodeReal_setNodeValue(kCaller, 0, attribute, units(u"value").data(), 5, &e);
    vrkNode *text = vrkDOMReal_createTextNode(kCaller, 0, units(u"text").data(), 4, &e);
    ASSERT_EQ(e.code, 0);
    for (vrkNode *source : {attribute, text}) {
        const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
            vrkDOMException ex{};
            vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 55, source, 1, &ex);
            if (run.failed()) {
                EXPECT_EQ(copy, nullptr);
                expectRecord(ex, ERR_OUT_OF_MEMORY, 55);
            } else {
                EXPECT_TRUE(str(copy->name) == str(source->name) && str(copy->value) == str(source->value));
                vrkDOM_destroyNode(copy, 1);
            }
        });
        EXPECT_EQ(runs, source == attribute ? 7 : 3);  // the record and each string, then success
        vrkDOM_destroyNode(source, 0);
    }
}
