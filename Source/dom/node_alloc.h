// Allocation of a zeroed node record.
#pragma once

#include <cstdlib>

#include "vrkxml.h"

namespace vrk {

// A node record with every field zero (all links null, an empty map), or
// null when memory runs out.  Every block of the library comes from malloc.
inline vrkNode *allocateNode() {
    auto *node = static_cast<vrkNode *>(std::malloc(sizeof(vrkNode)));
    if (node != nullptr) *node = vrkNode{};
    return node;
}

}  // namespace vrk
