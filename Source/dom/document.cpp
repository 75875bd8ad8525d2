// Making a document, and the two questions every caller asks of a tree.
#include "dom/dom_exception.h"
#include "dom/node_block.h"
#include "dom/node_names.h"
#include "unistring/export.h"

VRK_EXPORT vrkNode *vrkDOMReal_createDocument(const char *callerFile, int32_t callerLine,
                                              vrkDOMException *exception) {
    vrkNode *document = vrk::newNodeBlock(callerFile, callerLine, DOCUMENT_NODE, 0, exception);
    if (document == nullptr) return nullptr;
    document->name = vrk::staticName(vrk::kDocumentNodeName);
    return document;
}

VRK_EXPORT vrkNode *vrkDOM_getDocumentElement(vrkNode *document) {
    if (document == nullptr || document->type != DOCUMENT_NODE) return nullptr;
    for (vrkNode *child = document->firstChild; child != nullptr; child = child->next) {
        if (child->type == ELEMENT_NODE) return child;
    }
    return nullptr;
}

VRK_EXPORT int32_t vrkDOM_getNumberOfChildren(const vrkNode *node) {
    int32_t count = 0;
    for (const vrkNode *child = node->firstChild; child != nullptr; child = child->next) ++count;
    return count;
}
