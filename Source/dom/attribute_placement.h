// Placing a new attribute node into an attribute map: the one place where a
// set writes the map's list links.  vrkNamedNodeMap_setNamedItem(NS) (and
// so vrkElementReal_setAttributeNode(NS)) in dom/named_node_map.cpp and the
// parser's start tag in xmlparser/start_tag.cpp both come here; they differ
// only in how they know the attribute of the same name (a walk of the list,
// or none: the start tag has refused repeated names before it makes nodes)
// and the map's last attribute (a walk, or the one the start tag made
// last).  Neither routine touches parent.
#pragma once

#include "vrkxml.h"

namespace vrk {

// The set into an empty map: attribute becomes its only member without a
// lookup, and none of its links are written.  False, with nothing changed,
// when the map is not empty; placeAttribute is then the next step.
inline bool placeFirstAttribute(vrkNamedNodeMap *map, vrkNode *attribute) {
    if (map->count > 0) return false;
    map->count = 1;
    map->first = attribute;
    return true;
}

// The set into a map that is not empty.  With old (the map's attribute of
// the same name), attribute takes old's place: old's neighbours become its
// own, it becomes first when old was, the count stays, old's own links stay
// as they were, and old is returned (now the caller's).  Without old,
// attribute goes after last, which must then be the map's last attribute
// (it is not read otherwise), the count grows by one, and the result is null.
inline vrkNode *placeAttribute(vrkNamedNodeMap *map, vrkNode *attribute, vrkNode *old, vrkNode *last) {
    if (old != nullptr) {
        if (map->first == old) map->first = attribute;
        attribute->previous = old->previous;
        attribute->next = old->next;
        if (old->previous != nullptr) old->previous->next = attribute;
        if (old->next != nullptr) old->next->previous = attribute;
        return old;
    }
    attribute->next = last->next;
    last->next = attribute;
    attribute->previous = last;
    map->count += 1;
    return nullptr;
}

}  // namespace vrk
