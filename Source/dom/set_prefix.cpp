// Rewriting the namespace prefix of an element or attribute in place, in
// both `prefix` and the qualified `name`.
#include <cstdlib>
#include <cstring>

#include "dom/dom_exception.h"
#include "unistring/export.h"
#include "unistring/unit_access.h"

namespace {

std::size_t bytesOf(int32_t units) { return static_cast<std::size_t>(units) * sizeof(UniChar); }

// Removing a prefix: the local part and its terminator move to the start of
// the name, whose block keeps its size.
int32_t removePrefix(vrkNode *node, int32_t oldLength) {
    if (node->prefix == nullptr) return 1;
    std::free(node->prefix);
    node->prefix = nullptr;
    vrkunistrcpy(node->name, node->name + oldLength + 1);
    return 1;
}

// Shrinks a block to `units` units; a refusal leaves the larger block,
// whose text is complete already.
void shrink(UniChar *&block, int32_t units) {
    auto *smaller = static_cast<UniChar *>(std::realloc(block, vrk::stringBytes(static_cast<std::size_t>(units))));
    if (smaller != nullptr) block = smaller;
}

}  // namespace

VRK_EXPORT int32_t vrkNodeReal_setPrefix(const char *callerFile, int32_t callerLine, vrkNode *node,
                                         const UniChar *prefix, int32_t prefixLength, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return 0;
    if (node->namespaceURI == nullptr) {
        VRK_RAISE(exception, ERR_NAMESPACE, callerFile, callerLine);
        return 0;
    }
    const int32_t oldLength = node->prefix == nullptr ? 0 : vrkunistrlen(node->prefix);
    // An empty prefix would leave a name that begins with its colon: it
    // removes the prefix, as null does.
    if (prefix == nullptr || prefixLength == 0) return removePrefix(node, oldLength);

    if (prefixLength == oldLength) {
        std::memcpy(node->prefix, prefix, bytesOf(prefixLength));
        std::memcpy(node->name, prefix, bytesOf(prefixLength));
        return 1;
    }

    const int32_t localStart = oldLength == 0 ? 0 : oldLength + 1;
    const int32_t localLength = vrkunistrlen(node->name) - localStart;
    const int32_t nameLength = prefixLength + 1 + localLength;
    if (prefixLength > oldLength) {
        auto *grownPrefix = static_cast<UniChar *>(
            std::realloc(node->prefix, vrk::stringBytes(static_cast<std::size_t>(prefixLength))));
        if (grownPrefix == nullptr) {
            VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
            return 0;
        }
        // A block made for a node without a prefix holds no text yet: until
        // the name has grown too, the node must still read as before.
        const bool madeNow = node->prefix == nullptr;
        node->prefix = grownPrefix;
        auto *grownName = static_cast<UniChar *>(
            std::realloc(node->name, vrk::stringBytes(static_cast<std::size_t>(nameLength))));
        if (grownName == nullptr) {
            if (madeNow) {
                std::free(node->prefix);
                node->prefix = nullptr;
            }
            VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
            return 0;
        }
        node->name = grownName;
    }
    // memmove moves upwards from the terminator and downwards from the first
    // unit, as the overlap needs.
    std::memmove(node->name + prefixLength + 1, node->name + localStart, bytesOf(localLength + 1));
    std::memcpy(node->prefix, prefix, bytesOf(prefixLength));
    node->prefix[prefixLength] = 0;
    std::memcpy(node->name, prefix, bytesOf(prefixLength));
    node->name[prefixLength] = ':';
    if (prefixLength < oldLength) {
        shrink(node->prefix, prefixLength);
        shrink(node->name, nameLength);
    }
    return 1;
}
