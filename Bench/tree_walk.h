// Visiting every node of a parsed tree without recursion: the document, its
// descendants in document order, and each element's attributes right after
// the element.
#ifndef VRKXML_BENCH_TREE_WALK_H
#define VRKXML_BENCH_TREE_WALK_H

#include "vrkxml.hpp"

namespace vrkperf {

template <class Visit>
void forEachNode(const vrkNode *root, Visit visit) {
    const auto withAttributes = [&](const vrkNode *node) {
        visit(node);
        for (const vrkNode *attribute : vrkxml::attributes(node)) visit(attribute);
    };
    withAttributes(root);
    vrkxml::walkDescendants(root, [&](const vrkNode *node, int64_t) { withAttributes(node); });
}

}  // namespace vrkperf

#endif
