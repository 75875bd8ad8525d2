// What a parsed tree holds on the heap.
#ifndef VRKXML_BENCH_TREE_STATS_H
#define VRKXML_BENCH_TREE_STATS_H

#include <cstddef>
#include <vector>

#include "vrkxml.h"

namespace vrkperf {

struct TreeStats {
    std::size_t nodes = 0;    // every node, attributes included
    std::size_t strings = 0;  // heap strings the nodes own
    std::size_t bytes = 0;    // malloc_usable_size of all those blocks
};

TreeStats measureTree(const vrkNode *document);

// The request size of every block of the tree, in document order:
// sizeof(vrkNode) for a node, 2 * (length + 1) for each of its strings.
std::vector<std::size_t> blockSizes(const vrkNode *document);

}  // namespace vrkperf

#endif
