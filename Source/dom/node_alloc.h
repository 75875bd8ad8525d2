// Allocation of a zeroed node record.
#pragma once

#include <cstdlib>

#include "dom/dom_exception.h"
#include "vrkxml.h"

namespace vrk {

// A node record with every field zero (all links null, an empty map), or
// null when memory runs out.  Every block of the library comes from malloc.
inline vrkNode *allocateNode() {
    auto *node = static_cast<vrkNode *>(std::malloc(sizeof(vrkNode)));
    if (node != nullptr) *node = vrkNode{};
    return node;
}

// The first steps of a factory under the Real convention: nothing while an
// exception is pending; otherwise a zeroed record, or ERR_OUT_OF_MEMORY.
inline vrkNode *newNodeRecord(const char *callerFile, int32_t callerLine, vrkDOMException *exception) {
    if (exceptionPending(exception)) return nullptr;
    vrkNode *node = allocateNode();
    if (node == nullptr) VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
    return node;
}

}  // namespace vrk
