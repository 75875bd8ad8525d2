// libvrkxml C++ layer: the tree.  Document owns a tree; children(),
// attributes() and walkDescendants() read one.
#ifndef VRKXML_TREE_HPP
#define VRKXML_TREE_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "../vrkxml.h"
#include "result.hpp"

namespace vrkxml {

// ---------------------------------------------------------------------------
// Owning handles
// ---------------------------------------------------------------------------

// Owns a node that is in no tree (a document, or a node not yet placed),
// with everything below it, and destroys them with itself.
class Node {
public:
    Node() noexcept = default;
    // Takes over node (null allowed).
    explicit Node(vrkNode *node) noexcept : node_(node) {}
    ~Node() { vrkDOM_destroyNode(node_, 1); }

    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;
    Node(Node &&other) noexcept : node_(other.release()) {}
    Node &operator=(Node &&other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }

    // The node held, or null for an empty handle.
    vrkNode *get() const noexcept { return node_; }
    explicit operator bool() const noexcept { return node_ != nullptr; }
    // Gives the node up to the caller, who then destroys or places it.
    vrkNode *release() noexcept { return std::exchange(node_, nullptr); }
    // Destroys the node held and takes over node (null allowed).
    void reset(vrkNode *node = nullptr) noexcept { vrkDOM_destroyNode(std::exchange(node_, node), 1); }

private:
    vrkNode *node_ = nullptr;
};

// Owns a document node and its whole tree.
class Document : public Node {
public:
    using Node::Node;

    // A new, empty document.
    static Result<Document> create() noexcept {
        vrkDOMException exception{};
        vrkNode *document = vrkDOM_createDocument(&exception);
        if (document == nullptr) return detail::outOfMemory();
        return Document(document);
    }

    // The document node, or null for an empty handle.
    vrkNode *node() const noexcept { return get(); }
    // The document element, or null.
    vrkNode *root() const noexcept { return get() ? vrkDOM_getDocumentElement(get()) : nullptr; }
};

// ---------------------------------------------------------------------------
// Iteration
// ---------------------------------------------------------------------------

// Walks a chain of nodes through their `next` links.  The next node is read
// when advancing, so the current one may be removed from its list inside
// the loop (a removed node keeps its links) but not destroyed.
class NodeIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = vrkNode *;
    using difference_type = std::ptrdiff_t;
    using pointer = vrkNode *const *;
    using reference = vrkNode *;

    NodeIterator() noexcept = default;
    explicit NodeIterator(vrkNode *node) noexcept : node_(node) {}

    vrkNode *operator*() const noexcept { return node_; }
    NodeIterator &operator++() noexcept {
        node_ = node_->next;
        return *this;
    }
    NodeIterator operator++(int) noexcept {
        NodeIterator before = *this;
        node_ = node_->next;
        return before;
    }
    friend bool operator==(NodeIterator a, NodeIterator b) noexcept { return a.node_ == b.node_; }
    friend bool operator!=(NodeIterator a, NodeIterator b) noexcept { return a.node_ != b.node_; }

private:
    vrkNode *node_ = nullptr;
};

// A chain of nodes from its first one.
class NodeRange {
public:
    explicit NodeRange(vrkNode *first) noexcept : first_(first) {}
    NodeIterator begin() const noexcept { return NodeIterator(first_); }
    NodeIterator end() const noexcept { return NodeIterator(); }
    bool empty() const noexcept { return first_ == nullptr; }

private:
    vrkNode *first_;
};

// The children of node, of every kind, in order; empty for null.
inline NodeRange children(const vrkNode *node) noexcept { return NodeRange(node ? node->firstChild : nullptr); }

// The attributes of element in map order; empty for null.
inline NodeRange attributes(const vrkNode *element) noexcept {
    return NodeRange(element ? element->attributes.first : nullptr);
}

// The node after node in document order within the subtree of root
// (root itself excluded), attributes not visited; null at the end.
inline const vrkNode *nextInDocumentOrder(const vrkNode *node, const vrkNode *root) noexcept {
    if (node->firstChild != nullptr) return node->firstChild;
    while (node != root && node->next == nullptr) node = node->parent;
    return node == root ? nullptr : node->next;
}

// Walks the descendants of root in document order without recursion, so
// that a tree of any depth is safe: enter(node, depth) before a node's
// children, leave(node, depth) after them, with depth 1 for root's
// children.  Attributes are not visited (see attributes()).  Nothing may
// be linked or unlinked during the walk; null walks nothing.
template <class Enter, class Leave>
void walkDescendants(const vrkNode *root, Enter &&enter, Leave &&leave) {
    if (root == nullptr) return;
    const vrkNode *node = root->firstChild;
    std::int64_t depth = 1;
    while (node != nullptr) {
        enter(node, depth);
        if (node->firstChild != nullptr) {
            node = node->firstChild;
            ++depth;
            continue;
        }
        // Leave the node and every ancestor whose last child it is.
        for (;;) {
            leave(node, depth);
            if (node->next != nullptr) {
                node = node->next;
                break;
            }
            node = node->parent;
            --depth;
            if (node == root) return;
        }
    }
}

// The same walk with enter alone.
template <class Enter>
void walkDescendants(const vrkNode *root, Enter &&enter) {
    walkDescendants(root, enter, [](const vrkNode *, std::int64_t) {});
}

}  // namespace vrkxml

#endif  // VRKXML_TREE_HPP
