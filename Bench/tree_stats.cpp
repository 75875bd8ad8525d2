// Counting the blocks of a parsed tree.
#include "tree_stats.h"

#include <malloc.h>

#include "tree_walk.h"

namespace vrkperf {
namespace {

void *block(const void *p) { return const_cast<void *>(p); }

// The strings a node points to that are blocks of their own: not a static
// name (text, CDATA section and document nodes), not inside the node's own
// block, where the library keeps the strings a node is made with.
template <class Visit>
void forEachStringBlock(const vrkNode *node, Visit visit) {
    const bool staticName = node->type == TEXT_NODE || node->type == CDATA_SECTION_NODE || node->type == DOCUMENT_NODE;
    const auto start = reinterpret_cast<uintptr_t>(node);
    const std::size_t size = malloc_usable_size(block(node));
    for (const UniChar *s : {staticName ? nullptr : node->name, node->value, node->namespaceURI, node->prefix,
                             node->localName}) {
        if (s != nullptr && reinterpret_cast<uintptr_t>(s) - start >= size) visit(s);
    }
}

}  // namespace

TreeStats measureTree(const vrkNode *document) {
    TreeStats stats;
    forEachNode(document, [&](const vrkNode *node) {
        ++stats.nodes;
        stats.bytes += malloc_usable_size(block(node));
        forEachStringBlock(node, [&](const UniChar *s) {
            ++stats.strings;
            stats.bytes += malloc_usable_size(block(s));
        });
    });
    return stats;
}

}  // namespace vrkperf
