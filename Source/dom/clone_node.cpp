// Copying a single node.
#include <cstdlib>

#include "dom/dom_exception.h"
#include "dom/node_alloc.h"
#include "unistring/export.h"

namespace {

// Static names are shared: text and CDATA sections, and documents too, so
// that destroying a copied document (which never frees its name) is sound.
bool hasStaticName(int32_t type) {
    return type == TEXT_NODE || type == CDATA_SECTION_NODE || type == DOCUMENT_NODE;
}

UniChar *duplicate(const UniChar *s, bool &failed) {
    if (s == nullptr) return nullptr;
    UniChar *copy = vrkunistrdup(s);
    if (copy == nullptr) failed = true;
    return copy;
}

}  // namespace

VRK_EXPORT vrkNode *vrkNodeReal_cloneNode(const char *callerFile, int32_t callerLine, const vrkNode *node,
                                          int32_t /*deep: the copy never takes children*/,
                                          vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    vrkNode *copy = vrk::allocateNode();
    if (copy == nullptr) {
        VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
        return nullptr;
    }
    copy->type = node->type;
    bool failed = false;
    const bool sharedName = hasStaticName(node->type);
    copy->name = sharedName ? node->name : duplicate(node->name, failed);
    copy->value = duplicate(node->value, failed);
    copy->namespaceURI = duplicate(node->namespaceURI, failed);
    copy->prefix = duplicate(node->prefix, failed);
    copy->localName = duplicate(node->localName, failed);
    if (!failed) return copy;
    if (!sharedName) std::free(copy->name);
    std::free(copy->value);
    std::free(copy->namespaceURI);
    std::free(copy->prefix);
    std::free(copy->localName);
    std::free(copy);
    VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
    return nullptr;
}
