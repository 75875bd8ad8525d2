// Rewriting the namespace prefix of an element or attribute in place, in
// both `prefix` and the qualified `name`.
#include <cstdlib>
#include <cstring>

#include "dom/dom_exception.h"
#include "dom/node_block.h"
#include "unistring/export.h"

namespace {

std::size_t bytesOf(int32_t units) { return static_cast<std::size_t>(units) * sizeof(UniChar); }
std::size_t unitsOf(int32_t units) { return static_cast<std::size_t>(units); }

// Removing a prefix: the local part and its terminator move to the start of
// the name, which keeps its room.
int32_t removePrefix(vrkNode *node, int32_t oldLength) {
    if (node->prefix == nullptr) return 1;
    vrk::releaseNodeString(node, node->prefix);
    node->prefix = nullptr;
    vrkunistrcpy(node->name, node->name + oldLength + 1);
    return 1;
}

// Gives prefix and name room for a longer prefix, the name keeping its
// text: false, with ERR_OUT_OF_MEMORY, when memory runs out.  The prefix
// grows first; when the name then cannot, a prefix that had a block of its
// own keeps the larger block (its text is whole), a new one is given up.
bool growPrefixAndName(vrkNode *node, int32_t prefixLength, int32_t nameLength, const char *callerFile,
                       int32_t callerLine, vrkDOMException *exception) {
    const bool prefixWasOwn = node->prefix != nullptr && !vrk::livesInBlock(node, node->prefix);
    UniChar *prefix = vrk::resizeNodeString(node, node->prefix, 0, unitsOf(prefixLength));
    if (prefix != nullptr && prefixWasOwn) node->prefix = prefix;
    const std::size_t nameUnits = unitsOf(vrkunistrlen(node->name)) + 1;
    UniChar *name =
        prefix == nullptr ? nullptr : vrk::resizeNodeString(node, node->name, nameUnits, unitsOf(nameLength));
    if (name == nullptr) {
        if (!prefixWasOwn) std::free(prefix);
        VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
        return false;
    }
    node->prefix = prefix;
    node->name = name;
    return true;
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
    if (prefixLength > oldLength &&
        !growPrefixAndName(node, prefixLength, nameLength, callerFile, callerLine, exception)) {
        return 0;
    }
    // A shorter prefix is written in place; the blocks keep their room.
    // memmove moves upwards from the terminator and downwards from the first
    // unit, as the overlap needs.
    std::memmove(node->name + prefixLength + 1, node->name + localStart, bytesOf(localLength + 1));
    std::memcpy(node->prefix, prefix, bytesOf(prefixLength));
    node->prefix[prefixLength] = 0;
    std::memcpy(node->name, prefix, bytesOf(prefixLength));
    node->name[prefixLength] = ':';
    return 1;
}
