// Counting the blocks of a parsed tree.
#include "tree_stats.h"

#include <malloc.h>

#include "tree_walk.h"

namespace vrkperf {
namespace {

// Text, CDATA section and document nodes share a static name; everything
// else a node points to is its own block.
template <class Visit>
void forEachString(const vrkNode *node, Visit visit) {
    const bool staticName = node->type == TEXT_NODE || node->type == CDATA_SECTION_NODE || node->type == DOCUMENT_NODE;
    if (!staticName && node->name != nullptr) visit(node->name);
    for (const UniChar *s : {node->value, node->namespaceURI, node->prefix, node->localName}) {
        if (s != nullptr) visit(s);
    }
}

void *block(const void *p) { return const_cast<void *>(p); }

}  // namespace

TreeStats measureTree(const vrkNode *document) {
    TreeStats stats;
    forEachNode(document, [&](const vrkNode *node) {
        ++stats.nodes;
        stats.bytes += malloc_usable_size(block(node));
        forEachString(node, [&](const UniChar *s) {
            ++stats.strings;
            stats.bytes += malloc_usable_size(block(s));
        });
    });
    return stats;
}

std::vector<std::size_t> blockSizes(const vrkNode *document) {
    std::vector<std::size_t> sizes;
    forEachNode(document, [&](const vrkNode *node) {
        sizes.push_back(sizeof(vrkNode));
        forEachString(node, [&](const UniChar *s) {
            sizes.push_back(2 * (static_cast<std::size_t>(vrkunistrlen(s)) + 1));
        });
    });
    return sizes;
}

}  // namespace vrkperf
