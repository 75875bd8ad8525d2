// libvrkxml C++ layer: editing.  Owning handles for new nodes, attributes
// by name, elements by local name and namespace, and a move that takes a
// node out of its list before placing it elsewhere.  Names and values may
// be given as UTF-16 (std::u16string_view) or UTF-8 (std::string_view);
// malformed UTF-8 fails with ERR_MALFORMED_TEXT.  Every failure, exhausted
// memory included, is an Error; nothing throws.
#ifndef VRKXML_EDIT_HPP
#define VRKXML_EDIT_HPP

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "messages.hpp"
#include "result.hpp"
#include "text.hpp"
#include "tree.hpp"

namespace vrkxml {

namespace detail {

inline Error fromException(const vrkDOMException &exception) {
    return failure(exception.code, describe(exception.code));
}

inline Error malformedUtf8() { return failure(errMalformedText, "a name or value is not well-formed UTF-8"); }

// The units of a text given as UTF-16 (itself) or UTF-8 (decoded into
// store); nothing for malformed UTF-8.
inline std::optional<std::u16string_view> unitsIn(std::u16string_view text, std::u16string &) { return text; }
inline std::optional<std::u16string_view> unitsIn(std::string_view text, std::u16string &store) {
    std::optional<std::u16string> units = fromUtf8(text);
    if (!units) return std::nullopt;
    store = std::move(*units);
    return std::u16string_view(store);
}

// A node from a factory that reports through an exception record.
template <class Make>
Result<Node> made(Make &&make) {
    vrkDOMException exception{};
    vrkNode *node = make(exception);
    if (node == nullptr) return fromException(exception);
    return Node(node);
}

template <class Text>
Result<Node> makeNamed(int32_t type, Text name) noexcept {
    return guarded([&]() -> Result<Node> {
        std::u16string store;
        const std::optional<std::u16string_view> units = unitsIn(name, store);
        if (!units) return malformedUtf8();
        return made([&](vrkDOMException &exception) {
            return vrkDOM_createEANode(type, unitsOf(*units), unitCount(*units), &exception);
        });
    });
}

template <class Text>
Result<Node> makeText(Text text) noexcept {
    return guarded([&]() -> Result<Node> {
        std::u16string store;
        const std::optional<std::u16string_view> units = unitsIn(text, store);
        if (!units) return malformedUtf8();
        return made([&](vrkDOMException &exception) {
            return vrkDOM_createTextNode(unitsOf(*units), unitCount(*units), &exception);
        });
    });
}

template <class Text>
Result<Node> makeElementNS(Text namespaceName, Text qualifiedName) noexcept {
    return guarded([&]() -> Result<Node> {
        std::u16string storeName;
        std::u16string storeQualified;
        const std::optional<std::u16string_view> name = unitsIn(namespaceName, storeName);
        const std::optional<std::u16string_view> qualified = unitsIn(qualifiedName, storeQualified);
        if (!name || !qualified) return malformedUtf8();
        if (qualified->empty()) return failure(ERR_NAMESPACE, describe(ERR_NAMESPACE));
        const std::u16string terminated(*qualified);  // the factory reads a zero-terminated name
        return made([&](vrkDOMException &exception) {
            return vrkDOM_createEANodeNS(ELEMENT_NODE, unitsOf(*name), unitCount(*name), unitsOf(terminated),
                                         unitCount(terminated), &exception);
        });
    });
}

template <class Text>
Result<Node> makeAttribute(Text name, Text value) noexcept {
    return guarded([&]() -> Result<Node> {
        std::u16string store;
        const std::optional<std::u16string_view> units = unitsIn(value, store);
        if (!units) return malformedUtf8();
        Result<Node> attribute = makeNamed(ATTRIBUTE_NODE, name);
        if (!attribute) return attribute;
        vrkDOMException exception{};
        vrkNode_setNodeValue(attribute.value().get(), unitsOf(*units), unitCount(*units), &exception);
        if (exception.code != 0) return fromException(exception);
        return attribute;
    });
}

template <class Text>
const vrkNode *findAttribute(const vrkNode *element, Text name) noexcept {
    for (const vrkNode *attribute : attributes(element)) {
        if (sameText(vrkxml::name(attribute), name)) return attribute;
    }
    return nullptr;
}

template <class Text>
Status setAttribute(vrkNode *element, Text name, Text value) noexcept {
    return guarded([&]() -> Status {
        if (element == nullptr || element->type != ELEMENT_NODE) {
            return failure(ERR_HIERARCHY_REQUEST, describe(ERR_HIERARCHY_REQUEST));
        }
        std::u16string store;
        const std::optional<std::u16string_view> units = unitsIn(value, store);
        if (!units) return malformedUtf8();
        vrkDOMException exception{};
        auto *existing = const_cast<vrkNode *>(findAttribute(element, name));
        if (existing != nullptr) {
            vrkNode_setNodeValue(existing, unitsOf(*units), unitCount(*units), &exception);
            return exception.code == 0 ? Status() : Status(fromException(exception));
        }
        Result<Node> attribute = makeAttribute(name, value);
        if (!attribute) return attribute.error();
        vrkElement_setAttributeNode(element, attribute.value().get(), &exception);
        if (exception.code != 0) return fromException(exception);
        attribute.value().release();
        return {};
    });
}

template <class Text>
bool removeAttribute(vrkNode *element, Text name) noexcept {
    const vrkNode *attribute = findAttribute(element, name);
    if (attribute == nullptr) return false;
    vrkDOM_destroyNode(
        vrkNamedNodeMap_removeNamedItem(&element->attributes, attribute->name, vrkunistrlen(attribute->name)), 1);
    return true;
}

template <class Text>
bool isElement(const vrkNode *node, Text localName, Text namespaceName) noexcept {
    return node->type == ELEMENT_NODE && sameText(localPart(node), localName) &&
           sameText(namespaceURI(node), namespaceName);
}

template <class Text>
vrkNode *findChild(const vrkNode *parent, Text localName, Text namespaceName) noexcept {
    for (vrkNode *child : children(parent)) {
        if (isElement(child, localName, namespaceName)) return child;
    }
    return nullptr;
}

template <class Text>
vrkNode *findDescendant(const vrkNode *root, Text localName, Text namespaceName) noexcept {
    if (root == nullptr) return nullptr;
    for (const vrkNode *node = nextInDocumentOrder(root, root); node; node = nextInDocumentOrder(node, root)) {
        if (isElement(node, localName, namespaceName)) return const_cast<vrkNode *>(node);
    }
    return nullptr;
}

}  // namespace detail

// New detached nodes, owned by the handle until placed.
inline Result<Node> makeElement(std::u16string_view name) noexcept { return detail::makeNamed(ELEMENT_NODE, name); }
inline Result<Node> makeElement(std::string_view name) noexcept { return detail::makeNamed(ELEMENT_NODE, name); }
// An element in a namespace, from a prefixed qualified name (the library
// makes namespace-aware nodes from prefixed names only: ERR_NAMESPACE).
inline Result<Node> makeElementNS(std::u16string_view namespaceName, std::u16string_view qualifiedName) noexcept {
    return detail::makeElementNS(namespaceName, qualifiedName);
}
inline Result<Node> makeElementNS(std::string_view namespaceName, std::string_view qualifiedName) noexcept {
    return detail::makeElementNS(namespaceName, qualifiedName);
}
inline Result<Node> makeText(std::u16string_view text) noexcept { return detail::makeText(text); }
inline Result<Node> makeText(std::string_view text) noexcept { return detail::makeText(text); }
// An attribute named name (no namespace fields) with value.
inline Result<Node> makeAttribute(std::u16string_view name, std::u16string_view value) noexcept {
    return detail::makeAttribute(name, value);
}
inline Result<Node> makeAttribute(std::string_view name, std::string_view value) noexcept {
    return detail::makeAttribute(name, value);
}

// The value of element's attribute named exactly name (the qualified name
// as written), or nothing.
inline std::optional<std::u16string_view> attribute(const vrkNode *element, std::u16string_view name) noexcept {
    const vrkNode *found = detail::findAttribute(element, name);
    return found ? std::optional<std::u16string_view>(value(found)) : std::nullopt;
}
inline std::optional<std::u16string_view> attribute(const vrkNode *element, std::string_view name) noexcept {
    const vrkNode *found = detail::findAttribute(element, name);
    return found ? std::optional<std::u16string_view>(value(found)) : std::nullopt;
}

// Sets the value of element's attribute named name, keeping its place, or
// adds one at the end.
inline Status setAttribute(vrkNode *element, std::u16string_view name, std::u16string_view value) noexcept {
    return detail::setAttribute(element, name, value);
}
inline Status setAttribute(vrkNode *element, std::string_view name, std::string_view value) noexcept {
    return detail::setAttribute(element, name, value);
}

// Removes and destroys element's attribute named name: whether there was one.
inline bool removeAttribute(vrkNode *element, std::u16string_view name) noexcept {
    return detail::removeAttribute(element, name);
}
inline bool removeAttribute(vrkNode *element, std::string_view name) noexcept {
    return detail::removeAttribute(element, name);
}

// The first child element, or descendant element in document order, with
// this local name and namespace name.  An element of no namespace has an
// empty namespace name and matches by its name.
inline vrkNode *findChild(const vrkNode *parent, std::u16string_view localName,
                          std::u16string_view namespaceName = {}) noexcept {
    return detail::findChild(parent, localName, namespaceName);
}
inline vrkNode *findChild(const vrkNode *parent, std::string_view localName,
                          std::string_view namespaceName = {}) noexcept {
    return detail::findChild(parent, localName, namespaceName);
}
inline vrkNode *findDescendant(const vrkNode *root, std::u16string_view localName,
                               std::u16string_view namespaceName = {}) noexcept {
    return detail::findDescendant(root, localName, namespaceName);
}
inline vrkNode *findDescendant(const vrkNode *root, std::string_view localName,
                               std::string_view namespaceName = {}) noexcept {
    return detail::findDescendant(root, localName, namespaceName);
}

// Places child as the last child of parent; the handle then lets go of it.
// A refusal leaves it with the handle.
inline Status append(vrkNode *parent, Node &child) noexcept {
    return detail::guarded([&]() -> Status {
        vrkDOMException exception{};
        if (vrkNode_appendChild(parent, child.get(), &exception) == nullptr) return detail::fromException(exception);
        child.release();
        return {};
    });
}

// Moves node, a child in a tree, to newParent: ahead of before (a child of
// newParent), or last without one.  The node is taken out of its list
// first, as the library requires, and put back where it was when newParent
// refuses it.  Refused: a node in no list (ERR_NOT_FOUND), a newParent
// inside node's own subtree (ERR_HIERARCHY_REQUEST).
inline Status move(vrkNode *node, vrkNode *newParent, vrkNode *before = nullptr) noexcept {
    return detail::guarded([&]() -> Status {
        for (const vrkNode *above = newParent; above != nullptr; above = above->parent) {
            if (above == node) return detail::failure(ERR_HIERARCHY_REQUEST, "a node cannot move into its own subtree");
        }
        vrkNode *oldParent = node->parent;
        vrkNode *oldNext = node->next;
        vrkDOMException exception{};
        if (oldParent == nullptr || vrkNode_removeChild(oldParent, node, &exception) == nullptr) {
            return detail::failure(ERR_NOT_FOUND, "the node is in no child list");
        }
        // A removed node keeps its old links, which appending would keep too.
        node->parent = nullptr;
        node->previous = nullptr;
        node->next = nullptr;
        const vrkNode *placed = before ? vrkNode_insertBefore(newParent, node, before, &exception)
                                       : vrkNode_appendChild(newParent, node, &exception);
        if (placed != nullptr) return {};
        Error error = detail::fromException(exception);
        vrkDOMException again{};
        if (oldNext != nullptr) {
            vrkNode_insertBefore(oldParent, node, oldNext, &again);
        } else {
            vrkNode_appendChild(oldParent, node, &again);
        }
        return error;
    });
}

}  // namespace vrkxml

#endif  // VRKXML_EDIT_HPP
