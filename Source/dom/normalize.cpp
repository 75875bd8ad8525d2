// Merging runs of adjacent text nodes below a node.
#include <cstring>

#include "dom/dom_exception.h"
#include "dom/node_block.h"
#include "unistring/export.h"

namespace {

bool isText(const vrkNode *node) { return node != nullptr && node->type == TEXT_NODE; }

}  // namespace

// The walk goes in document order through firstChild, next and parent.  A
// run merges into its first node, one resize per merged node (the first one
// moves a value out of the node's block); the length of
// the growing value is carried along, so that each unit is copied once by
// this code however long the run is.
VRK_EXPORT int32_t vrkNodeReal_normalize(const char *callerFile, int32_t callerLine, vrkNode *node,
                                         vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return 0;
    if (node == nullptr) return 1;
    vrkNode *current = node;
    int32_t currentLength = -1;  // length of current->value while current merges, else unknown
    for (;;) {
        if (isText(current) && isText(current->next)) {
            vrkNode *following = current->next;
            if (currentLength < 0) currentLength = vrkunistrlen(current->value);
            const int32_t followingLength = vrkunistrlen(following->value);
            const auto units = static_cast<std::size_t>(currentLength) + static_cast<std::size_t>(followingLength);
            UniChar *merged =
                vrk::resizeNodeString(current, current->value, static_cast<std::size_t>(currentLength), units);
            if (merged == nullptr) {
                VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
                return 0;
            }
            current->value = merged;
            std::memcpy(merged + currentLength, following->value,
                        (static_cast<std::size_t>(followingLength) + 1) * sizeof(UniChar));
            currentLength += followingLength;
            vrkNodeReal_removeChild("Source/dom", __LINE__, following->parent, following, exception);
            vrkDOM_destroyNode(following, 0);
            if (current == node) return 1;
            continue;
        }
        currentLength = -1;
        if (current->firstChild != nullptr) {
            current = current->firstChild;
            continue;
        }
        for (;;) {
            if (current == node) return 1;
            if (current->next != nullptr) {
                current = current->next;
                break;
            }
            current = current->parent;
        }
    }
}
