// Inserting before, replacing and removing children: the links at the head,
// in the middle and at the tail, every refusal in its order, and that a
// refused edit leaves every node as it was.
#include <array>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

const char *const kCaller = "child_list_test";

vrkNode *element(std::u16string_view name) {
    vrkDOMException e{};
    return vrkDOMReal_createEANode(kCaller, 0, ELEMENT_NODE, units(name).data(), static_cast<int32_t>(name.size()), &e);
}

// The tree reads as expected, and the integrity check finds every link sound.
void expectTree(const vrkNode *root, const std::string &expected) {
    EXPECT_EQ(describe(root), expected);
    testing::internal::CaptureStdout();
    DOM_checkIntegrity(root);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << expected;
}

struct Links {
    const vrkNode *parent, *firstChild, *lastChild, *previous, *next;
    bool operator==(const Links &) const = default;
};

std::vector<Links> linksOf(const std::vector<vrkNode *> &nodes) {
    std::vector<Links> out;
    for (const vrkNode *n : nodes) out.push_back({n->parent, n->firstChild, n->lastChild, n->previous, n->next});
    return out;
}

// parent, previous and next of a node.
using Trio = std::array<const vrkNode *, 3>;
Trio ownLinks(const vrkNode *n) { return {n->parent, n->previous, n->next}; }

void collect(vrkNode *node, std::vector<vrkNode *> &out) {
    out.push_back(node);
    for (vrkNode *child = node->firstChild; child != nullptr; child = child->next) collect(child, out);
}

}  // namespace

TEST(ChildList, EditsAtHeadMiddleAndTail) {
    Parsed parsed = parseUtf8("<r><a/><b/><c/></r>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *a = r->firstChild, *b = a->next, *c = b->next;
    vrkNode *x = element(u"x"), *y = element(u"y"), *z = element(u"z"), *p = element(u"p"), *q = element(u"q"),
            *s = element(u"s"), *w = element(u"w");
    vrkDOMException e{};
    const auto insert = [&](vrkNode *add, vrkNode *ref) { EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 1, r, add, ref, &e), add); };
    const auto replace = [&](vrkNode *add, vrkNode *old) { EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 2, r, add, old, &e), old); };
    const auto remove = [&](vrkNode *old) { EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 3, r, old, &e), old); };

    EXPECT_EQ(countAllocations([&] { insert(x, a); insert(y, b); insert(z, c); }), 0);
    expectTree(document, "#document[r[x,a,y,b,z,c]]");
    replace(p, x);
    replace(q, y);
    replace(s, c);
    expectTree(document, "#document[r[p,a,q,b,z,s]]");
    // What leaves a list keeps its links from inside it.
    EXPECT_EQ(ownLinks(x), (Trio{r, nullptr, a}));
    EXPECT_EQ(ownLinks(c), (Trio{r, z, nullptr}));
    remove(p);
    remove(s);
    remove(q);
    expectTree(document, "#document[r[a,b,z]]");
    EXPECT_EQ(ownLinks(q), (Trio{r, a, b}));
    remove(a);
    remove(z);
    replace(w, b);
    expectTree(document, "#document[r[w]]");
    remove(w);
    EXPECT_EQ(r->firstChild, nullptr);
    EXPECT_EQ(r->lastChild, nullptr);
    EXPECT_EQ(e.code, 0);
    for (vrkNode *node : {a, b, c, x, y, z, p, q, s, w}) vrkDOM_destroyNode(node, 1);
}

TEST(ChildList, RefusalsComeInOrderAndChangeNothing) {
    Parsed parsed = parseUtf8("<?p d?><r><a><s/></a>t</r><?q e?>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *p = document->firstChild, *q = document->lastChild, *a = r->firstChild, *s = a->firstChild,
            *t = a->next;
    vrkDOMException e{};
    // A document without an element, holding a processing instruction.
    vrkNode *bare = vrkDOMReal_createDocument(kCaller, 0, &e), *other = vrkDOMReal_createDocument(kCaller, 0, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 0, units(u"x").data(), 1, units(u"").data(), 0, &e);
    vrkNode *bareChild = vrkDOMReal_createProcessingInstruction(kCaller, 0, units(u"y").data(), 1, units(u"").data(), 0, &e);
    vrkNodeReal_appendChild(kCaller, 0, bare, bareChild, &e);
    vrkNode *detached = element(u"d");
    // The new child has stale links, so that a write into it shows too.
    Parsed donor = parseUtf8("<z><u/><w/><v/></z>");
    vrkNode *z = vrkDOM_getDocumentElement(donor.document.get());
    vrkNode *w = vrkNodeReal_removeChild(kCaller, 0, z, z->firstChild->next, &e);
    ASSERT_EQ(e.code, 0);
    std::vector<vrkNode *> all{w, pi};
    for (vrkNode *root : {document, bare, other, detached, donor.document.get()}) collect(root, all);
    const std::vector<Links> before = linksOf(all);

    enum Op { Insert, Replace, Remove };
    struct Case {
        Op op;
        vrkNode *parent, *newChild, *child;
        int32_t expected;
    };
    const int32_t H = ERR_HIERARCHY_REQUEST, N = ERR_NOT_FOUND;
    const Case cases[] = {
        {Insert, r, w, detached, N},  {Insert, r, w, s, N},  {Insert, r, other, a, H},
        {Insert, r, other, s, H},     // a document is refused ahead of a foreign refChild
        {Insert, p, w, detached, H},  {Insert, q, pi, detached, H},  // under a PI of a document with element
        {Insert, bareChild, w, detached, N}, {Insert, t, w, s, N},   // these parents pass: only refChild is wrong
        {Replace, r, w, detached, N}, {Replace, r, w, s, N},   {Replace, document, w, s, H}, {Replace, t, w, s, H},
        {Replace, document, w, p, H}, {Replace, document, w, r, H}, {Replace, document, w, q, H},
        {Replace, bare, w, bareChild, H},
        {Remove, r, nullptr, detached, N}, {Remove, r, nullptr, s, N}, {Remove, bare, nullptr, r, N},
    };
    int32_t line = 100;
    for (const Case &c : cases) {
        e = vrkDOMException{};
        ++line;
        const vrkNode *result = c.op == Insert    ? vrkNodeReal_insertBefore(kCaller, line, c.parent, c.newChild, c.child, &e)
                                : c.op == Replace ? vrkNodeReal_replaceChild(kCaller, line, c.parent, c.newChild, c.child, &e)
                                                  : vrkNodeReal_removeChild(kCaller, line, c.parent, c.child, &e);
        EXPECT_EQ(result, nullptr) << "case " << line - 100;
        EXPECT_EQ(e.code, c.expected) << "case " << line - 100;
        EXPECT_STREQ(e.file, "Source/dom");
        EXPECT_GT(e.line, 0);
        EXPECT_EQ(e.callerFile, kCaller);
        EXPECT_EQ(e.callerLine, line);
        EXPECT_TRUE(linksOf(all) == before) << "case " << line - 100;
    }

    // A pending failure: edits that would succeed do nothing, the record stays.
    const vrkDOMException pending{ERR_NAMESPACE, "f", 7, "g", 8};
    e = pending;
    EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 1, r, w, a, &e), nullptr);
    EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 1, r, w, a, &e), nullptr);
    EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 1, r, a, &e), nullptr);
    EXPECT_EQ(std::tie(e.code, e.file, e.line, e.callerFile, e.callerLine),
              std::tie(pending.code, pending.file, pending.line, pending.callerFile, pending.callerLine));
    EXPECT_TRUE(linksOf(all) == before);
    for (vrkNode *node : {bare, other, detached, w, pi}) vrkDOM_destroyNode(node, 1);
}

TEST(ChildList, ChildrenOfADocument) {
    Parsed parsed = parseUtf8("<?p d?><r/><?q e?>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *second = element(u"second"), *spare = element(u"spare");
    vrkDOMException e{};
    // Appending a second element is refused; inserting it ahead of the first
    // is not, since a document has no parent to look at.
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 0, document, second, &e), nullptr);
    EXPECT_EQ(e.code, ERR_HIERARCHY_REQUEST);
    e = vrkDOMException{};
    EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 0, document, second, r, &e), second);
    expectTree(document, "#document[?p\"d\",second,r,?q\"e\"]");
    EXPECT_EQ(vrkDOM_getDocumentElement(document), second);
    // No child of a document can be replaced; each can be removed, and then
    // a new element is appended.
    for (vrkNode *child = document->firstChild; child != nullptr; child = child->next) {
        e = vrkDOMException{};
        EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 0, document, spare, child, &e), nullptr);
        EXPECT_EQ(e.code, ERR_HIERARCHY_REQUEST);
    }
    EXPECT_EQ(spare->parent, nullptr);
    e = vrkDOMException{};
    for (vrkNode *child : {second, r}) {
        EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 0, document, child, &e), child);
        vrkDOM_destroyNode(child, 1);
    }
    EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 0, document, spare, &e), spare);
    expectTree(document, "#document[?p\"d\",?q\"e\",spare]");
    EXPECT_EQ(e.code, 0);
}
