// What a parsed tree holds on the heap.
#ifndef VRKXML_BENCH_TREE_STATS_H
#define VRKXML_BENCH_TREE_STATS_H

#include <cstddef>

#include "vrkxml.h"

namespace vrkperf {

struct TreeStats {
    std::size_t nodes = 0;    // every node, attributes included
    std::size_t strings = 0;  // strings in blocks of their own (not in their node's)
    std::size_t bytes = 0;    // malloc_usable_size of all those blocks
};

TreeStats measureTree(const vrkNode *document);

}  // namespace vrkperf

#endif
