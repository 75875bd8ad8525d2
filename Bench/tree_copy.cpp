// Deep copy by a walk over the source that clones node by node.
#include "tree_copy.h"

namespace vrkperf {
namespace {

// The node and its attributes, in their order.
vrkNode *cloneWithAttributes(const vrkNode *node, vrkDOMException *exception) {
    vrkNode *copy = vrkNodeReal_cloneNode(__FILE__, __LINE__, node, 0, exception);
    if (copy == nullptr) return nullptr;
    for (const vrkNode *attribute = node->attributes.first; attribute != nullptr; attribute = attribute->next) {
        vrkNode *attributeCopy = vrkNodeReal_cloneNode(__FILE__, __LINE__, attribute, 0, exception);
        if (attributeCopy == nullptr) break;
        if (attribute->namespaceURI != nullptr) {
            vrkElementReal_setAttributeNodeNS(__FILE__, __LINE__, copy, attributeCopy, exception);
        } else {
            vrkElementReal_setAttributeNode(__FILE__, __LINE__, copy, attributeCopy, exception);
        }
    }
    if (exception->code != 0) {
        vrkDOM_destroyNode(copy, 1);
        return nullptr;
    }
    return copy;
}

bool appendCopy(vrkNode *parent, const vrkNode *source, vrkNode *&copy, vrkDOMException *exception) {
    copy = cloneWithAttributes(source, exception);
    if (copy == nullptr) return false;
    if (vrkNodeReal_appendChild(__FILE__, __LINE__, parent, copy, exception) == nullptr) {
        vrkDOM_destroyNode(copy, 1);
        return false;
    }
    return true;
}

}  // namespace

vrkNode *copyTree(const vrkNode *root, vrkDOMException *exception) {
    vrkNode *const rootCopy = cloneWithAttributes(root, exception);
    if (rootCopy == nullptr) return nullptr;
    const vrkNode *source = root;
    vrkNode *copy = rootCopy;
    for (;;) {
        if (source->firstChild != nullptr) {
            source = source->firstChild;
            if (!appendCopy(copy, source, copy, exception)) break;
            continue;
        }
        while (source != root && source->next == nullptr) {
            source = source->parent;
            copy = copy->parent;
        }
        if (source == root) return rootCopy;
        source = source->next;
        if (!appendCopy(copy->parent, source, copy, exception)) break;
    }
    vrkDOM_destroyNode(rootCopy, 1);
    return nullptr;
}

}  // namespace vrkperf
