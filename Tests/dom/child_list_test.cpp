// insertBefore, replaceChild and removeChild: edits at head, middle and tail,
// refusals in their order that change no link, and the children of a document.
#include <tuple>
#include <vector>

#include "dom_test.h"

using namespace domtest;

namespace {

using Links = std::tuple<const vrkNode *, const vrkNode *, const vrkNode *, const vrkNode *, const vrkNode *>;
void collectLinks(const vrkNode *n, std::vector<Links> &out) {
    out.emplace_back(n->parent, n->firstChild, n->lastChild, n->previous, n->next);
    for (const vrkNode *c = n->firstChild; c != nullptr; c = c->next) collectLinks(c, out);
}

}  // namespace

TEST(ChildList, EditsAtHeadMiddleAndTail) {
    Parsed parsed = parseUtf8("<r><a/><b/><c/></r>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *a = r->firstChild, *b = a->next, *c = b->next;
    vrkNode *x = element(u"x"), *y = element(u"y"), *z = element(u"z"), *p = element(u"p"), *q = element(u"q"), *s = element(u"s"), *w = element(u"w");
    vrkDOMException e{};
    const auto insert = [&](vrkNode *add, vrkNode *ref) { EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 1, r, add, ref, &e), add); };
    const auto replace = [&](vrkNode *add, vrkNode *old) { EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 2, r, add, old, &e), old); };
    const auto remove = [&](vrkNode *old) { EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 3, r, old, &e), old); };
    using Trio = std::tuple<const vrkNode *, const vrkNode *, const vrkNode *>;
    const auto own = [](const vrkNode *n) { return Trio{n->parent, n->previous, n->next}; };

    EXPECT_EQ(countAllocations([&] { insert(x, a); insert(y, b); insert(z, c); }), 0);
    expectTree(document, "#document[r[x,a,y,b,z,c]]");
    replace(p, x), replace(q, y), replace(s, c);
    expectTree(document, "#document[r[p,a,q,b,z,s]]");
    // What leaves a list keeps its links from inside it.
    EXPECT_EQ(own(x), (Trio{r, nullptr, a}));
    EXPECT_EQ(own(c), (Trio{r, z, nullptr}));
    remove(p), remove(s), remove(q);
    expectTree(document, "#document[r[a,b,z]]");
    EXPECT_EQ(own(q), (Trio{r, a, b}));
    remove(a), remove(z), replace(w, b);
    expectTree(document, "#document[r[w]]");
    remove(w);
    EXPECT_TRUE(r->firstChild == nullptr && r->lastChild == nullptr && e.code == 0);
    // A second element may go ahead of the document element (no parent to look at), not behind it.
    EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 4, document, x, r, &e), x);
    expectTree(document, "#document[x,r]");
    EXPECT_EQ(vrkDOM_getDocumentElement(document), x);
    EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 5, document, x, &e), x);
    for (vrkNode *node : {a, b, c, x, y, z, p, q, s, w}) vrkDOM_destroyNode(node, 1);
}

TEST(ChildList, RefusalsComeInOrderAndChangeNothing) {
    Parsed parsed = parseUtf8("<?p d?><r><a><s/></a>t</r><?q e?>");
    vrkNode *document = parsed.document.get(), *r = vrkDOM_getDocumentElement(document);
    vrkNode *p = document->firstChild, *q = document->lastChild, *a = r->firstChild, *s = a->firstChild, *t = a->next;
    vrkDOMException e{};
    // A document without an element, holding a processing instruction.
    const Units y = units(u"y");
    vrkNode *bare = vrkDOMReal_createDocument(kCaller, 0, &e), *other = vrkDOMReal_createDocument(kCaller, 0, &e);
    vrkNode *pi = vrkDOMReal_createProcessingInstruction(kCaller, 0, y.data(), 1, y.data(), 0, &e);
    vrkNode *bareChild = vrkDOMReal_createProcessingInstruction(kCaller, 0, y.data(), 1, y.data(), 0, &e);
    vrkNodeReal_appendChild(kCaller, 0, bare, bareChild, &e);
    vrkNode *detached = element(u"d");
    // The new child has stale links, so that a write into it shows too.
    Parsed donor = parseUtf8("<z><u/><w/><v/></z>");
    vrkNode *z = vrkDOM_getDocumentElement(donor.document.get());
    vrkNode *w = vrkNodeReal_removeChild(kCaller, 0, z, z->firstChild->next, &e);
    ASSERT_EQ(e.code, 0);
    const auto links = [&] {
        std::vector<Links> out;
        for (vrkNode *root : {w, pi, document, bare, other, detached, donor.document.get()}) collectLinks(root, out);
        return out;
    };
    const std::vector<Links> before = links();

    enum Op { Insert, Replace, Remove };
    const int32_t H = ERR_HIERARCHY_REQUEST, N = ERR_NOT_FOUND;
    const struct {
        Op op;
        vrkNode *parent, *newChild, *child;
        int32_t expected;
    } cases[] = {
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
    for (const auto &c : cases) {
        SCOPED_TRACE(++line);
        e = vrkDOMException{};
        const vrkNode *result = c.op == Insert    ? vrkNodeReal_insertBefore(kCaller, line, c.parent, c.newChild, c.child, &e)
                                : c.op == Replace ? vrkNodeReal_replaceChild(kCaller, line, c.parent, c.newChild, c.child, &e)
                                                  : vrkNodeReal_removeChild(kCaller, line, c.parent, c.child, &e);
        EXPECT_EQ(result, nullptr);
        expectRaised(e, c.expected, line);
        EXPECT_TRUE(links() == before);
    }

    // A pending failure: edits that would succeed do nothing, the record stays.
    e = kPending;
    EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 1, r, w, a, &e), nullptr);
    EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 1, r, w, a, &e), nullptr);
    EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 1, r, a, &e), nullptr);
    EXPECT_EQ(fields(e), fields(kPending));
    EXPECT_TRUE(links() == before);
    for (vrkNode *node : {bare, other, detached, w, pi}) vrkDOM_destroyNode(node, 1);
}
