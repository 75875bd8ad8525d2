#include "dom/node_block.h"

#include <cstdlib>

#include "dom/dom_exception.h"
#include "unistring/text_limits.h"
#include "unistring/unit_access.h"

namespace vrk {

vrkNode *allocateNodeBlock(int32_t type, std::size_t units) {
    // No node holds more than a few strings of at most INT32_MAX units.
    if (units > SIZE_MAX / 4) return nullptr;
    auto *node = static_cast<vrkNode *>(std::malloc(kRoomOffset + units * sizeof(UniChar)));
    if (node == nullptr) return nullptr;
    // Field by field: the compiler stores these in line, where a whole-record
    // assignment becomes a string instruction that costs more to start.
    node->name = node->value = nullptr;
    node->type = type;
    node->attributes.count = 0;
    node->attributes.first = nullptr;
    node->parent = node->firstChild = node->lastChild = node->previous = node->next = nullptr;
    node->namespaceURI = node->prefix = node->localName = nullptr;
    std::memcpy(reinterpret_cast<char *>(node) + kRoomSizeOffset, &units, sizeof units);
    return node;
}

vrkNode *newNodeBlock(const char *callerFile, int32_t callerLine, int32_t type, std::size_t units,
                      vrkDOMException *exception) {
    if (exceptionPending(exception)) return nullptr;
    vrkNode *node = allocateNodeBlock(type, units);
    if (node == nullptr) VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
    return node;
}

UniChar *resizeNodeString(const vrkNode *node, UniChar *s, std::size_t keep, std::size_t units) {
    if (s != nullptr && !livesInBlock(node, s)) {
        return static_cast<UniChar *>(std::realloc(s, stringBytes(units)));
    }
    auto *own = static_cast<UniChar *>(std::malloc(stringBytes(units)));
    if (own != nullptr && keep != 0) std::memcpy(own, s, keep * sizeof(UniChar));
    return own;
}

bool replaceNodeString(vrkNode *node, UniChar *vrkNode::*field, const UniChar *units, int32_t count) {
    UniChar *old = node->*field;
    if (count >= 0 && livesInBlock(node, old) && count <= unitCount(old, count)) {
        std::memmove(old, units, static_cast<std::size_t>(count) * sizeof(UniChar));
        old[count] = 0;
        return true;
    }
    UniChar *copy = vrkUniCharArrayToString(units, count);
    if (copy == nullptr) return false;
    releaseNodeString(node, old);
    node->*field = copy;
    return true;
}

}  // namespace vrk
