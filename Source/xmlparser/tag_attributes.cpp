#include "xmlparser/tag_attributes.h"

#include "dom/attribute_placement.h"
#include "unistring/unit_access.h"

namespace vrk {

namespace {

// The tree's children, in fields that attributes leave unused.
vrkNode *&left(vrkNode *node) { return node->firstChild; }
vrkNode *&right(vrkNode *node) { return node->lastChild; }

// Exact order of names by their units, shorter first on a common start.
int compareNames(const UniChar *a, const UniChar *b) {
    for (;; ++a, ++b) {
        const UniChar x = loadUnit(a);
        const UniChar y = loadUnit(b);
        if (x != y) return x < y ? -1 : 1;
        if (x == 0) return 0;
    }
}

// Top-down splay: brings the node named `name`, or the last node met on the
// way to where it would be, to the root.  No recursion, no memory.
vrkNode *splay(vrkNode *t, const UniChar *name) {
    vrkNode header{};
    vrkNode *leftTail = &header;
    vrkNode *rightTail = &header;
    for (;;) {
        const int c = compareNames(name, t->name);
        if (c < 0) {
            if (left(t) == nullptr) break;
            if (compareNames(name, left(t)->name) < 0) {
                vrkNode *y = left(t);
                left(t) = right(y);
                right(y) = t;
                t = y;
                if (left(t) == nullptr) break;
            }
            left(rightTail) = t;
            rightTail = t;
            t = left(t);
        } else if (c > 0) {
            if (right(t) == nullptr) break;
            if (compareNames(name, right(t)->name) > 0) {
                vrkNode *y = right(t);
                right(t) = left(y);
                left(y) = t;
                t = y;
                if (right(t) == nullptr) break;
            }
            right(leftTail) = t;
            leftTail = t;
            t = right(t);
        } else {
            break;
        }
    }
    right(leftTail) = left(t);
    left(rightTail) = right(t);
    left(t) = right(&header);
    right(t) = left(&header);
    return t;
}

// Adds node under its name; returns the node of the same name instead when
// there is one (the tree then keeps that one).
vrkNode *insertOrFind(TagAttributes &tag, vrkNode *node) {
    left(node) = right(node) = nullptr;
    if (tag.root == nullptr) {
        tag.root = node;
        return nullptr;
    }
    tag.root = splay(tag.root, node->name);
    const int c = compareNames(node->name, tag.root->name);
    if (c == 0) return tag.root;
    if (c < 0) {
        left(node) = left(tag.root);
        right(node) = tag.root;
        left(tag.root) = nullptr;
    } else {
        right(node) = right(tag.root);
        left(node) = tag.root;
        right(tag.root) = nullptr;
    }
    tag.root = node;
    return nullptr;
}

}  // namespace

vrkNode *setTagAttribute(TagAttributes &tag, vrkNode *attribute) {
    vrkNamedNodeMap &map = tag.element->attributes;
    attribute->parent = tag.element;
    // The tree supplies the attribute of the same name (none while it is
    // empty), the tag its last attribute; dom/attribute_placement.h writes
    // the map's links.  A displaced attribute fails the parse, so the tree
    // is not kept up to date past it.
    vrkNode *old = insertOrFind(tag, attribute);
    if (!placeFirstAttribute(&map, attribute)) placeAttribute(&map, attribute, old, tag.last);
    if (old == nullptr || tag.last == old) tag.last = attribute;
    return old;
}

void clearTagAttributes(TagAttributes &tag) {
    for (vrkNode *attribute = tag.element->attributes.first; attribute != nullptr; attribute = attribute->next) {
        forgetTreeLinks(attribute);
    }
    tag.root = nullptr;
}

}  // namespace vrk
