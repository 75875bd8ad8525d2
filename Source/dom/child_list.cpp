// Editing child lists.
#include "dom/child_append.h"
#include "dom/dom_exception.h"
#include "unistring/export.h"

VRK_EXPORT vrkNode *vrkNodeReal_appendChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                            vrkNode *newChild, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    if (vrk::refusesChild(parent, newChild)) {
        VRK_RAISE(exception, ERR_HIERARCHY_REQUEST, callerFile, callerLine);
        return nullptr;
    }
    vrk::linkLastChild(parent, newChild);
    return newChild;
}

VRK_EXPORT vrkNode *vrkNodeReal_insertBefore(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                             vrkNode *newChild, vrkNode *refChild, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    // The look one level up makes no exception for processing instructions,
    // and a document as parent has no parent to look at.
    const bool refused = newChild->type == DOCUMENT_NODE ||
                         (parent->type != ELEMENT_NODE && parent->parent != nullptr &&
                          parent->parent->type == DOCUMENT_NODE && vrkDOM_getDocumentElement(parent->parent) != nullptr);
    if (refused) {
        VRK_RAISE(exception, ERR_HIERARCHY_REQUEST, callerFile, callerLine);
        return nullptr;
    }
    if (refChild->parent != parent) {
        VRK_RAISE(exception, ERR_NOT_FOUND, callerFile, callerLine);
        return nullptr;
    }
    newChild->previous = refChild->previous;
    if (newChild->previous != nullptr) newChild->previous->next = newChild;
    refChild->previous = newChild;
    newChild->next = refChild;
    newChild->parent = parent;
    if (parent->firstChild == refChild) parent->firstChild = newChild;
    return newChild;
}

VRK_EXPORT vrkNode *vrkNodeReal_replaceChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                             vrkNode *newChild, vrkNode *oldChild, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    // Children of a document cannot be replaced, its element included.
    if (parent->type != ELEMENT_NODE) {
        VRK_RAISE(exception, ERR_HIERARCHY_REQUEST, callerFile, callerLine);
        return nullptr;
    }
    if (oldChild->parent != parent) {
        VRK_RAISE(exception, ERR_NOT_FOUND, callerFile, callerLine);
        return nullptr;
    }
    newChild->previous = oldChild->previous;
    newChild->next = oldChild->next;
    if (oldChild->previous != nullptr) oldChild->previous->next = newChild;
    if (oldChild->next != nullptr) oldChild->next->previous = newChild;
    if (parent->firstChild == oldChild) parent->firstChild = newChild;
    if (parent->lastChild == oldChild) parent->lastChild = newChild;
    newChild->parent = parent;
    return oldChild;
}

VRK_EXPORT vrkNode *vrkNodeReal_removeChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                            vrkNode *oldChild, vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    if (oldChild->parent != parent) {
        VRK_RAISE(exception, ERR_NOT_FOUND, callerFile, callerLine);
        return nullptr;
    }
    // The removed node keeps its own links; it is the caller's now.
    if (oldChild->previous != nullptr) oldChild->previous->next = oldChild->next;
    if (oldChild->next != nullptr) oldChild->next->previous = oldChild->previous;
    if (parent->firstChild == oldChild) parent->firstChild = oldChild->next;
    if (parent->lastChild == oldChild) parent->lastChild = oldChild->previous;
    return oldChild;
}
