// The attribute map: an ordered list in insertion order, searched from the
// front, keyed by qualified name or by namespace name and local name.  The
// links a set writes are written in dom/attribute_placement.h, which the
// parser's start tag shares.
#include "dom/attribute_placement.h"
#include "unistring/export.h"

namespace {

bool sameName(const vrkNode *attribute, const UniChar *name, int32_t nameLength) {
    return vrkunistrlen(attribute->name) == nameLength && vrkunistrncmp(name, attribute->name, nameLength) == 0;
}

bool sameNameNS(const vrkNode *attribute, const UniChar *namespaceURI, int32_t uriLength,
                const UniChar *localName, int32_t localNameLength) {
    // Attributes without a namespace name or local name never match.
    return attribute->namespaceURI != nullptr && attribute->localName != nullptr &&
           vrkunistrlen(attribute->namespaceURI) == uriLength &&
           vrkunistrlen(attribute->localName) == localNameLength &&
           vrkunistrncmp(localName, attribute->localName, localNameLength) == 0 &&
           vrkunistrncmp(namespaceURI, attribute->namespaceURI, uriLength) == 0;
}

// Unlinks an attribute that is in the map; its own links stay as they were.
vrkNode *unlink(vrkNamedNodeMap *map, vrkNode *attribute) {
    if (attribute == nullptr) return nullptr;
    if (map->first == attribute) map->first = attribute->next;
    if (attribute->previous != nullptr) attribute->previous->next = attribute->next;
    if (attribute->next != nullptr) attribute->next->previous = attribute->previous;
    map->count -= 1;
    return attribute;
}

// Puts node in the place of old, or at the end when there is no old; the
// walk to the last attribute is made only for the append.
vrkNode *place(vrkNamedNodeMap *map, vrkNode *node, vrkNode *old) {
    vrkNode *last = old != nullptr ? nullptr : vrkNamedNodeMap_item(map, map->count - 1);
    return vrk::placeAttribute(map, node, old, last);
}

}  // namespace

VRK_EXPORT int32_t vrkNamedNodeMap_getLength(const vrkNamedNodeMap *map) { return map->count; }

VRK_EXPORT vrkNode *vrkNamedNodeMap_item(const vrkNamedNodeMap *map, int32_t index) {
    if (index < 0) return nullptr;
    vrkNode *attribute = map->first;
    for (int32_t i = 0; i < index && attribute != nullptr; ++i) attribute = attribute->next;
    return attribute;
}

VRK_EXPORT vrkNode *vrkNamedNodeMap_getNamedItem(const vrkNamedNodeMap *map, const UniChar *name,
                                                 int32_t nameLength) {
    for (vrkNode *attribute = map->first; attribute != nullptr; attribute = attribute->next) {
        if (sameName(attribute, name, nameLength)) return attribute;
    }
    return nullptr;
}

VRK_EXPORT vrkNode *vrkNamedNodeMap_getNamedItemNS(const vrkNamedNodeMap *map, const UniChar *namespaceURI,
                                                   int32_t uriLength, const UniChar *localName,
                                                   int32_t localNameLength) {
    for (vrkNode *attribute = map->first; attribute != nullptr; attribute = attribute->next) {
        if (sameNameNS(attribute, namespaceURI, uriLength, localName, localNameLength)) return attribute;
    }
    return nullptr;
}

VRK_EXPORT vrkNode *vrkNamedNodeMap_removeNamedItem(vrkNamedNodeMap *map, const UniChar *name,
                                                    int32_t nameLength) {
    return unlink(map, vrkNamedNodeMap_getNamedItem(map, name, nameLength));
}

VRK_EXPORT vrkNode *NamedNodeMap_removeNamedItemNS(vrkNamedNodeMap *map, const UniChar *namespaceURI,
                                                   int32_t uriLength, const UniChar *localName,
                                                   int32_t localNameLength) {
    return unlink(map, vrkNamedNodeMap_getNamedItemNS(map, namespaceURI, uriLength, localName, localNameLength));
}

VRK_EXPORT vrkNode *vrkNamedNodeMap_setNamedItem(vrkNamedNodeMap *map, vrkNode *node) {
    if (vrk::placeFirstAttribute(map, node)) return nullptr;
    return place(map, node, vrkNamedNodeMap_getNamedItem(map, node->name, vrkunistrlen(node->name)));
}

VRK_EXPORT vrkNode *vrkNamedNodeMap_setNamedItemNS(vrkNamedNodeMap *map, vrkNode *node) {
    if (vrk::placeFirstAttribute(map, node)) return nullptr;
    vrkNode *old = nullptr;
    if (node->namespaceURI != nullptr && node->localName != nullptr) {
        old = vrkNamedNodeMap_getNamedItemNS(map, node->namespaceURI, vrkunistrlen(node->namespaceURI),
                                             node->localName, vrkunistrlen(node->localName));
    }
    return place(map, node, old);
}
