// Appending to a child list: the check and the links of
// vrkNodeReal_appendChild, which the parser's start tag also uses for the
// element it makes (it may append while an error is pending, where the
// Real operation would do nothing).
#pragma once

#include "vrkxml.h"

namespace vrk {

// A document that has its document element takes only further processing
// instructions; no node takes a document.
inline bool refusesChild(vrkNode *parent, const vrkNode *child) {
    return child->type == DOCUMENT_NODE ||
           (parent->type == DOCUMENT_NODE && child->type != PROCESSING_INSTRUCTION_NODE &&
            vrkDOM_getDocumentElement(parent) != nullptr);
}

// Links child, which is in no list, behind the last child of parent.
inline void linkLastChild(vrkNode *parent, vrkNode *child) {
    if (parent->lastChild == nullptr) {
        parent->firstChild = child;
    } else {
        child->previous = parent->lastChild;
        parent->lastChild->next = child;
    }
    child->parent = parent;
    parent->lastChild = child;
}

}  // namespace vrk
