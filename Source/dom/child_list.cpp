// Editing child lists.
#include "dom/dom_exception.h"
#include "unistring/export.h"

VRK_EXPORT vrkNode *vrkNodeReal_appendChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                            vrkNode *newChild, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    // A document that has its document element takes only further
    // processing instructions; no node takes a document.
    if (newChild->type == DOCUMENT_NODE ||
        (parent->type == DOCUMENT_NODE && newChild->type != PROCESSING_INSTRUCTION_NODE &&
         vrkDOM_getDocumentElement(parent) != nullptr)) {
        VRK_RAISE(exception, ERR_HIERARCHY_REQUEST, callerFile, callerLine);
        return nullptr;
    }
    if (parent->lastChild == nullptr) {
        parent->firstChild = newChild;
    } else {
        newChild->previous = parent->lastChild;
        parent->lastChild->next = newChild;
    }
    newChild->parent = parent;
    parent->lastChild = newChild;
    return newChild;
}
