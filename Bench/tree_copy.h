// A whole copy of a tree, built from cloneNode, which copies one node by
// itself, and the tree's own linking operations.
#ifndef VRKXML_BENCH_TREE_COPY_H
#define VRKXML_BENCH_TREE_COPY_H

#include "vrkxml.h"

namespace vrkperf {

// The copy (the caller destroys it), or null with the first failure in
// *exception.  No recursion, so any depth is copied.
vrkNode *copyTree(const vrkNode *root, vrkDOMException *exception);

}  // namespace vrkperf

#endif
