// Copying a single node: one block with copies of all its strings.
#include <iterator>

#include "dom/dom_exception.h"
#include "dom/node_block.h"
#include "unistring/export.h"

namespace {

// Static names are shared: text and CDATA sections, and documents too, so
// that destroying a copied document (which never frees its name) is sound.
bool hasStaticName(int32_t type) {
    return type == TEXT_NODE || type == CDATA_SECTION_NODE || type == DOCUMENT_NODE;
}

// The strings a copy makes of its own, in the order they are placed.
constexpr UniChar *vrkNode::*kCopiedStrings[] = {&vrkNode::name, &vrkNode::value, &vrkNode::namespaceURI,
                                                  &vrkNode::prefix, &vrkNode::localName};

}  // namespace

VRK_EXPORT vrkNode *vrkNodeReal_cloneNode(const char *callerFile, int32_t callerLine, const vrkNode *node,
                                          int32_t /*deep: the copy never takes children*/,
                                          vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    const bool sharedName = hasStaticName(node->type);
    int32_t lengths[std::size(kCopiedStrings)];
    std::size_t units = 0;
    for (std::size_t i = 0; i < std::size(kCopiedStrings); ++i) {
        const UniChar *s = node->*kCopiedStrings[i];
        const bool copied = s != nullptr && !(i == 0 && sharedName);
        lengths[i] = copied ? vrkunistrlen(s) : -1;
        if (copied) units += vrk::roomFor(lengths[i]);
    }
    vrkNode *copy = vrk::newNodeBlock(callerFile, callerLine, node->type, units, exception);
    if (copy == nullptr) return nullptr;
    if (sharedName) copy->name = node->name;
    UniChar *room = vrk::roomOf(copy);
    for (std::size_t i = 0; i < std::size(kCopiedStrings); ++i) {
        if (lengths[i] >= 0) {
            copy->*kCopiedStrings[i] =
                vrk::placeString(room, node->*kCopiedStrings[i], static_cast<std::size_t>(lengths[i]));
        }
    }
    return copy;
}
