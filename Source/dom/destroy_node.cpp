// Releasing a node and what it owns.
#include <cstdlib>

#include "dom/node_block.h"
#include "unistring/export.h"
#include "vrkxml.h"

namespace {

bool releasesChildren(const vrkNode *node) {
    return node->type == ELEMENT_NODE || node->type == DOCUMENT_NODE;
}

// The strings a node owns by its kind, but those in its own block; the
// three static names stay.
void releaseStrings(vrkNode *node) {
    switch (node->type) {
    case ATTRIBUTE_NODE:
        vrk::releaseNodeString(node, node->value);
        [[fallthrough]];
    case ELEMENT_NODE:
        vrk::releaseNodeString(node, node->name);
        vrk::releaseNodeString(node, node->prefix);
        vrk::releaseNodeString(node, node->localName);
        vrk::releaseNodeString(node, node->namespaceURI);
        break;
    case TEXT_NODE:
    case CDATA_SECTION_NODE:
        vrk::releaseNodeString(node, node->value);
        break;
    case PROCESSING_INSTRUCTION_NODE:
        vrk::releaseNodeString(node, node->name);
        vrk::releaseNodeString(node, node->value);
        break;
    default:
        break;
    }
}

// An element's attributes go first, whatever `deep` is: each is taken from
// the front of the map and destroyed on its own.
void releaseAttributes(vrkNode *node) {
    if (node->type != ELEMENT_NODE) return;
    vrkNamedNodeMap &map = node->attributes;
    while (map.first != nullptr) {
        vrkNode *attribute = map.first;
        map.first = attribute->next;
        map.count -= 1;
        vrkDOM_destroyNode(attribute, 0);
    }
}

}  // namespace

// The subtree is released without recursion, so that no depth of tree can
// exhaust the stack: each node's children are unhooked from the front of its
// list, and a child's parent field (the child is about to go anyway) is set
// to the node to return to.
VRK_EXPORT void vrkDOM_destroyNode(vrkNode *node, int32_t deep) {
    if (node == nullptr) return;
    vrkNode *const root = node;
    releaseAttributes(node);
    for (;;) {
        const bool takeChildren = node == root ? deep != 0 : true;
        if (takeChildren && releasesChildren(node) && node->firstChild != nullptr) {
            vrkNode *child = node->firstChild;
            node->firstChild = child->next;
            child->parent = node;
            node = child;
            releaseAttributes(node);
            continue;
        }
        vrkNode *up = node == root ? nullptr : node->parent;
        releaseStrings(node);
        std::free(node);
        if (up == nullptr) return;
        node = up;
    }
}
