// What a start tag keeps about the attributes it has read, so that a tag
// with many attributes costs O(n log n) instead of the O(n^2) of looking
// each new name up in the map from its front.
#pragma once

#include "vrkxml.h"

namespace vrk {

// The map itself stays the ordered list it always is.  Beside it, the tag
// keeps its last attribute (appends need no walk) and a splay tree over the
// attributes' names, threaded through their firstChild and lastChild
// fields: attributes never have children, and the fields are cleared again
// before the tag ends, whichever way it ends.
struct TagAttributes {
    vrkNode *element = nullptr;
    vrkNode *last = nullptr;
    vrkNode *root = nullptr;
};

// Sets attribute on the tag's element exactly as vrkElementReal_setAttributeNode
// would (same links, same replacement in place: both go through
// dom/attribute_placement.h), and returns the attribute it displaced, or null.
vrkNode *setTagAttribute(TagAttributes &tag, vrkNode *attribute);

// Clears the tree links of one attribute.
inline void forgetTreeLinks(vrkNode *attribute) { attribute->firstChild = attribute->lastChild = nullptr; }

// Clears the tree links of every attribute in the element's map.
void clearTagAttributes(TagAttributes &tag);

// Produce_Attribute, with the tag's set for the duplicate check when tag is
// not null (the start tag's own loop), or the map's own operations when it
// is (a caller's context).
int32_t produceAttribute(ProduceContext *context, TagAttributes *tag);

}  // namespace vrk
