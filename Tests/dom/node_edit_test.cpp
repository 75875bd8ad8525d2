// Rewriting a prefix, merging text nodes and copying one node: the results,
// what each allocates, and what a refused allocation leaves behind.
#include "dom_test.h"

using namespace domtest;

namespace {

// Element prefix:local in namespace "u"; with an empty prefix, local alone, still in "u".
vrkNode *namespaced(std::u16string_view prefix) {
    if (!prefix.empty()) return nsNode(ELEMENT_NODE, u"u", prefix, u"local");
    vrkNode *node = element(u"local");
    if (node != nullptr && (node->localName = vrkunistrdup(units(u"local").data())) != nullptr &&
        (node->namespaceURI = vrkunistrdup(units(u"u").data())) != nullptr) return node;
    return vrkDOM_destroyNode(node, 0), nullptr;
}

int32_t setPrefix(vrkNode *node, const char16_t *prefix, vrkDOMException &e, int32_t line = 0) {
    const std::u16string_view p = prefix ? prefix : u"";
    return vrkNodeReal_setPrefix(kCaller, line, node, prefix ? units(p).data() : nullptr, len(p), &e);
}

// name|prefix of a node, prefix "(null)" when null.
std::string names(const vrkNode *n) { return utf8(n->name) + "|" + utf8(n->prefix); }

}  // namespace

TEST(SetPrefix, RewritesNameAndPrefixOnlyWhenTheNodeHasANamespace) {
    const struct {
        std::u16string_view before;
        const char16_t *argument;
        const char *after;
    } rows[] = {{u"a", u"b", "b:local|b"},       {u"a", u"abc", "abc:local|abc"}, {u"abc", u"a", "a:local|a"},
                {u"abc", nullptr, "local|(null)"}, {u"", u"ab", "ab:local|ab"},   {u"", nullptr, "local|(null)"},
                {u"abc", u"", "local|(null)"},     {u"", u"", "local|(null)"}};
    for (const auto &row : rows) {
        vrkDOMException e{};
        vrkNode *node = namespaced(row.before);
        const UniChar *localName = node->localName, *uri = node->namespaceURI;
        EXPECT_EQ(setPrefix(node, row.argument, e), 1);
        EXPECT_EQ(names(node), row.after);
        EXPECT_TRUE(node->localName == localName && node->namespaceURI == uri && str(localName) == u"local");
        vrkDOM_destroyNode(node, 0);
    }
    // Without a namespace name every rewrite is refused; a pending record comes first.
    vrkNode *plain = element(u"a"), *prefixed = nsNode(ATTRIBUTE_NODE, nullptr, u"p", u"l");
    for (vrkNode *node : {plain, prefixed}) {
        for (const char16_t *argument : {u"q", static_cast<const char16_t *>(nullptr), u"longer"}) {
            vrkDOMException e{};
            EXPECT_EQ(setPrefix(node, argument, e, 12), 0);
            expectRaised(e, ERR_NAMESPACE, 12);
        }
    }
    vrkDOMException e = kPending;
    vrkNode *ns = namespaced(u"ab");
    EXPECT_EQ(setPrefix(ns, u"q", e), 0);
    EXPECT_TRUE(fields(e) == fields(kPending) && names(plain) == "a|(null)" && names(prefixed) == "p:l|p" && names(ns) == "ab:local|ab");
    for (vrkNode *n : {plain, prefixed, ns}) vrkDOM_destroyNode(n, 0);
}

TEST(SetPrefix, RewritesInPlaceUnlessLongerAndARefusalChangesNothing) {
    vrkDOMException e{};
    vrkNode *node = namespaced(u"ab");
    const UniChar *name = node->name, *prefix = node->prefix;
    EXPECT_EQ(countAllocations([&] { setPrefix(node, u"cd", e); }), 0);
    EXPECT_TRUE(node->name == name && node->prefix == prefix && names(node) == "cd:local|cd");
    EXPECT_EQ(countAllocations([&] { setPrefix(node, u"c", e); }), 0) << "a shorter prefix";
    EXPECT_EQ(names(node), "c:local|c");
    EXPECT_EQ(countAllocations([&] { setPrefix(node, nullptr, e); setPrefix(node, nullptr, e); }), 0);
    vrkDOM_destroyNode(node, 0);
    // Growing from a prefix and from none: a refusal leaves the node as it was.
    for (const std::u16string_view before : {u"a", u""}) {
        int refused = 0;
        forEachAllocationFailure([&](const AllocationRun &run) {
            vrkNode *n = namespaced(before);
            if (n == nullptr) return;
            const std::string was = names(n);
            vrkDOMException ex{};
            const int32_t result = setPrefix(n, u"wxyz", ex, 42);
            if (run.failed()) {
                ++refused;
                EXPECT_EQ(result, 0);
                expectRaised(ex, ERR_OUT_OF_MEMORY, 42);
                EXPECT_EQ(names(n), was);
            } else {
                EXPECT_EQ(result, 1);
                EXPECT_EQ(ex.code, 0);
                EXPECT_EQ(names(n), "wxyz:local|wxyz");
            }
            vrkDOM_destroyNode(n, 0);
        });
        EXPECT_GT(refused, 0) << "growing from \"" << utf8(units(before).data()) << "\" allocated nothing";
    }
}

TEST(Normalize, MergesRunsOfTextBelowTheNode) {
    // Each reference is a text node of its own.
    Parsed parsed = parseUtf8("<r>a&amp;b<e>c&amp;d<f>g&amp;h</f><![CDATA[i]]>j&#65;<![CDATA[k]]></e>l&amp;m</r>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *e = r->firstChild->next->next->next, *f = e->firstChild->next->next->next;
    const std::string untouched = describe(r);
    vrkDOMException ex = kPending;
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, nullptr, &ex), 0);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, r, &ex), 0);
    EXPECT_TRUE(fields(ex) == fields(kPending) && describe(r) == untouched);

    ex = vrkDOMException{};
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, nullptr, &ex), 1);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, f->lastChild, &ex), 1);  // "h": no text follows
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, e, &ex), 1);  // below e only; CDATA keeps "j" apart
    EXPECT_EQ(describe(r), "r[\"a\",\"&\",\"b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l\",\"&\",\"m\"]");
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, e->next, &ex), 1);  // a text node takes one more only
    EXPECT_EQ(describe(r), "r[\"a\",\"&\",\"b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l&\",\"m\"]");
    vrkNode *first = r->firstChild;
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, document, &ex), 1);
    expectTree(document, "#document[r[\"a&b\",e[\"c&d\",f[\"g&h\"],C\"i\",\"jA\",C\"k\"],\"l&m\"]]");
    EXPECT_EQ(r->firstChild, first);  // merged into the first node of a run

    // A whole list merges into its first node; an empty value merges too.
    vrkNode *empty = textNode(u"");
    vrkNodeReal_insertBefore(kCaller, 0, f, empty, f->firstChild, &ex);
    vrkNodeReal_appendChild(kCaller, 0, f, textNode(u"z"), &ex);
    EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, f, &ex), 1);
    EXPECT_EQ(describe(f), "f[\"g&hz\"]");
    EXPECT_TRUE(f->firstChild == empty && ex.code == 0);
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
        expectTree(parsed.document.get(), "#document[" + stages[merged] + "]");
        if (!run.failed()) return;
        ++refused;
        EXPECT_EQ(result, 0);
        expectRaised(e, ERR_OUT_OF_MEMORY, 77);
    });
    EXPECT_EQ(refused, 4);
}

TEST(Normalize, LongRunInOneResizePerNode) {
    constexpr int kNodes = 20'000;
    std::string text = "<a>";
    std::u16string expected;
    for (int i = 0; i < kNodes; ++i) text += i % 2 ? "&#66;" : "&amp;", expected += i % 2 ? u'B' : u'&';
    Parsed parsed = parseUtf8(text + "</a>");
    vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    ASSERT_EQ(vrkDOM_getNumberOfChildren(a), kNodes);
    vrkDOMException e{};
    EXPECT_EQ(countAllocations([&] { vrkNodeReal_normalize(kCaller, 0, a, &e); }), kNodes - 1);
    EXPECT_TRUE(vrkDOM_getNumberOfChildren(a) == 1 && str(a->firstChild->value) == expected);
}

TEST(CloneNode, CopiesOneNodeWithoutLinksAndARefusalLeavesNothing) {
    Parsed parsed = parseUtf8("<?t d?><p:e xmlns:p='u' a='1'>x<![CDATA[y]]><c/></p:e>");
    vrkNode *document = parsed.document.get(), *pi = document->firstChild, *el = pi->next;
    const std::string tree = describe(document);
    std::string copied;
    vrkDOMException e{};
    for (vrkNode *source : {document, pi, el, el->firstChild, el->firstChild->next, el->attributes.first}) {
        vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 0, source, 1, &e);
        ASSERT_NE(copy, nullptr);
        const bool staticName = source->type == TEXT_NODE || source->type == CDATA_SECTION_NODE || source->type == DOCUMENT_NODE;
        EXPECT_EQ(copy->name == source->name, staticName);
        EXPECT_TRUE(!copy->attributes.first && !copy->attributes.count && !copy->parent && !copy->firstChild &&
                    !copy->lastChild && !copy->previous && !copy->next);
        copied += utf8(copy->name) + "|" + utf8(copy->value) + "|" + namespaceFields(copy) + " ";
        vrkDOM_destroyNode(copy, 1);  // a string shared with the source would be freed twice
    }
    EXPECT_EQ(copied, "#document|(null)| t|d| p:e|(null)|p|e|u; #text|x| #cdata-section|y| "
                      "xmlns:p|u|xmlns|p|http://www.w3.org/2000/xmlns/; ");
    EXPECT_EQ(describe(document), tree);
    e = kPending;
    EXPECT_EQ(countAllocations([&] { EXPECT_EQ(vrkNodeReal_cloneNode(kCaller, 0, pi, 0, &e), nullptr); }), 0);
    EXPECT_TRUE(fields(e) == fields(kPending));

    vrkNode *a = nsNode(ATTRIBUTE_NODE, u"urn:x", u"p", u"local");  // every string a node can own
    e = vrkDOMException{};
    vrkNodeReal_setNodeValue(kCaller, 0, a, units(u"value").data(), 5, &e);
    forEachAllocationFailure([&](const AllocationRun &run) {
        vrkDOMException ex{};
        vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 55, a, 0, &ex);
        if (run.failed()) expectRaised(ex, ERR_OUT_OF_MEMORY, 55);
        const std::string expected = run.failed() ? "" : namespaceFields(a) + "value";
        EXPECT_EQ(copy == nullptr ? "" : namespaceFields(copy) + utf8(copy->value), expected);
        vrkDOM_destroyNode(copy, 1);
    });
    vrkDOM_destroyNode(a, 0);
}
