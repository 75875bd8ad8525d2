// Making a document, the sticky exception record, the document element, and
// releasing nodes of every kind and any depth.  Nodes are built by hand.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include "dom/node_names.h"
#include "support/small_stack.h"
#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

UniChar *heap(std::u16string_view text) {
    auto *s = static_cast<UniChar *>(std::calloc(text.size() + 1, sizeof(UniChar)));
    std::copy(text.begin(), text.end(), s);
    return s;
}

// A node as its factory leaves it (or a bare record), linked last under
// parent; an attribute goes to the front of parent's map.
vrkNode *node(int32_t type, vrkNode *parent = nullptr, bool bare = false) {
    auto *n = static_cast<vrkNode *>(std::calloc(1, sizeof(vrkNode)));
    n->type = type;
    if (!bare) {
        n->name = type == TEXT_NODE ? vrk::staticName(vrk::kTextNodeName)
                : type == CDATA_SECTION_NODE ? vrk::staticName(vrk::kCDATASectionNodeName)
                : type == DOCUMENT_NODE ? vrk::staticName(vrk::kDocumentNodeName) : heap(u"n");
        if (type != ELEMENT_NODE && type != DOCUMENT_NODE) n->value = heap(u"v");
        if (type == ELEMENT_NODE || type == ATTRIBUTE_NODE)
            n->prefix = heap(u"p"), n->localName = heap(u"l"), n->namespaceURI = heap(u"u");
    }
    if ((n->parent = parent) == nullptr) return n;
    vrkNode *&tail = type == ATTRIBUTE_NODE ? parent->attributes.first : parent->lastChild;
    if (type == ATTRIBUTE_NODE) {
        if ((n->next = tail) != nullptr) tail->previous = n;
        parent->attributes.count += 1;
    } else (tail ? tail->next : parent->firstChild) = n, n->previous = tail;
    return tail = n;
}

auto fields(const vrkNode *n) {
    return std::tuple(n->name, n->value, n->type, n->attributes.count, n->attributes.first, n->parent,
                      n->firstChild, n->lastChild, n->previous, n->next, n->namespaceURI, n->prefix,
                      n->localName);
}

}  // namespace

TEST(Document, CreateMakesOneZeroedRecordOrFillsTheRecordOnce) {
    vrkDOMException ex{};
    vrkNode *first = nullptr, *second = vrkDOMReal_createDocument("t.cpp", 2, &ex);
    EXPECT_EQ(countAllocations([&] { first = vrkDOMReal_createDocument("t.cpp", 1, &ex); }), 1);
    vrkNode blank{};
    blank.type = DOCUMENT_NODE;
    blank.name = vrk::staticName(vrk::kDocumentNodeName);  // static, shared by all documents
    EXPECT_TRUE(fields(first) == fields(&blank) && fields(second) == fields(&blank) && ex.code == 0);
    vrkDOM_destroyNode(first, 1);
    vrkDOM_destroyNode(second, 0);
    EXPECT_EQ(str(vrk::kDocumentNodeName), u"#document");

    for (int32_t pending : {ERR_OUT_OF_MEMORY, ERR_NAMESPACE, -1}) {  // sticky: nothing happens
        ex = {pending, "f", 11, "cf", 12};
        auto *document = reinterpret_cast<vrkNode *>(&ex);
        EXPECT_EQ(countAllocations([&] { document = vrkDOMReal_createDocument("c", 99, &ex); }), 0);
        EXPECT_TRUE(document == nullptr && ex.code == pending && !std::strcmp(ex.file, "f") &&
                    ex.line == 11 && !std::strcmp(ex.callerFile, "cf") && ex.callerLine == 12);
    }
    static const char callerFile[] = "caller.cpp";
    EXPECT_EQ(forEachAllocationFailure([](const AllocationRun &run) {
                  vrkDOMException e{0, "stale", -5, "stale", -5};
                  vrkNode *document = vrkDOMReal_createDocument(callerFile, 4242, &e);
                  vrkDOM_destroyNode(document, 1);
                  if (!run.failed()) {
                      EXPECT_STREQ(e.file, "stale");  // success writes nothing
                      return;
                  }
                  EXPECT_TRUE(document == nullptr && e.code == ERR_OUT_OF_MEMORY && e.line > 0);
                  EXPECT_STREQ(e.file, "Source/dom");
                  EXPECT_TRUE(e.callerFile == callerFile && e.callerLine == 4242);
              }),
              2);
}

TEST(Document, DocumentElementAndChildCount) {
    vrkNode *document = node(DOCUMENT_NODE);
    EXPECT_EQ(vrkDOM_getDocumentElement(nullptr), nullptr);
    node(PROCESSING_INSTRUCTION_NODE, document), node(TEXT_NODE, document);
    EXPECT_EQ(vrkDOM_getDocumentElement(document), nullptr);
    vrkNode *root = node(ELEMENT_NODE, document);
    node(ELEMENT_NODE, document), node(ELEMENT_NODE, root);
    node(ATTRIBUTE_NODE, root), node(ATTRIBUTE_NODE, root);
    EXPECT_TRUE(vrkDOM_getDocumentElement(document) == root && vrkDOM_getDocumentElement(root) == nullptr);
    EXPECT_EQ(vrkDOM_getNumberOfChildren(document), 4);
    EXPECT_EQ(vrkDOM_getNumberOfChildren(root), 1);  // attributes are no children
    const int64_t live = liveAllocations();
    vrkDOM_destroyNode(document, 1);
    EXPECT_EQ(live - liveAllocations(), 1 + 3 + 2 + 3 * 5 + 2 * 6);  // by kind, strings included
}

TEST(DestroyNode, ReleasesWhatEachKindOwnsAndNothingElse) {
    vrkDOM_destroyNode(nullptr, 1);
    const int64_t baseline = liveAllocations();
    // Only elements and documents read deep: a stray child of a leaf stays.
    for (int32_t type : {TEXT_NODE, CDATA_SECTION_NODE, PROCESSING_INSTRUCTION_NODE, ATTRIBUTE_NODE}) {
        vrkNode *leaf = node(type), *stray = leaf->firstChild = node(TEXT_NODE);
        vrkDOM_destroyNode(leaf, 1);
        vrkDOM_destroyNode(stray, 1);
    }
    vrkNode *unknown = node(8);  // an unknown kind: the record alone goes
    UniChar *kept[] = {unknown->name, unknown->value};
    vrkDOM_destroyNode(unknown, 1);
    EXPECT_EQ(str(kept[0]) + str(kept[1]), u"nv");
    std::free(kept[0]), std::free(kept[1]);
    EXPECT_EQ(liveAllocations(), baseline);

    // deep 0: the attributes go, the children stay.  Then deep 1 on a child
    // leaves its parent and siblings alone.
    vrkNode *document = node(DOCUMENT_NODE), *e = node(ELEMENT_NODE, document);
    node(ATTRIBUTE_NODE, e), node(ATTRIBUTE_NODE, e);
    vrkNode *c1 = node(ELEMENT_NODE, e), *c2 = node(CDATA_SECTION_NODE, e);
    node(TEXT_NODE, c1);
    vrkDOM_destroyNode(e, 0);
    EXPECT_EQ(liveAllocations(), baseline + 1 + 5 + 2 + 2);
    document->firstChild = c1, document->lastChild = c2, c1->parent = c2->parent = document;
    vrkDOM_destroyNode(c1, 1);
    EXPECT_TRUE(c2->previous == c1 && c2->parent == document && str(c2->value) == u"v");
    document->firstChild = c2, c2->previous = nullptr;
    vrkDOM_destroyNode(document, 1);
    EXPECT_EQ(liveAllocations(), baseline);
    EXPECT_EQ(str(vrk::kTextNodeName) + str(vrk::kCDATASectionNodeName), u"#text#cdata-section");
}

TEST(DestroyNode, MillionDeepTreeOnASmallStack) {
    const int64_t baseline = liveAllocations();
    vrkNode *root = node(DOCUMENT_NODE), *last = root;
    for (int i = 0; i < 1'000'000; ++i) {
        last = node(ELEMENT_NODE, last, true);
        if (i % 100'000 == 0) node(ATTRIBUTE_NODE, last), node(TEXT_NODE, last->parent);
    }
    runOnSmallStack([root] { vrkDOM_destroyNode(root, 1); });
    EXPECT_EQ(liveAllocations(), baseline);
}
