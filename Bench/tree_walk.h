// Visiting every node of a parsed tree without recursion: the document, its
// descendants in document order, and each element's attributes right after
// the element.
#ifndef VRKXML_BENCH_TREE_WALK_H
#define VRKXML_BENCH_TREE_WALK_H

#include "vrkxml.h"

namespace vrkperf {

template <class Visit>
void forEachNode(const vrkNode *root, Visit visit) {
    const vrkNode *node = root;
    while (node != nullptr) {
        visit(node);
        for (const vrkNode *attribute = node->attributes.first; attribute != nullptr; attribute = attribute->next) {
            visit(attribute);
        }
        if (node->firstChild != nullptr) {
            node = node->firstChild;
            continue;
        }
        while (node != root && node->next == nullptr) node = node->parent;
        node = node == root ? nullptr : node->next;
    }
}

}  // namespace vrkperf

#endif
