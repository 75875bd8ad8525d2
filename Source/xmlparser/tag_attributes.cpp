#include "xmlparser/tag_attributes.h"

#include <cstdlib>
#include <cstring>

#include "unistring/unit_access.h"

namespace vrk {

namespace {

// Exact order of names by their units, shorter first on a common start.
int compareNames(const Token &a, const Token &b) {
    const int32_t aLength = tokenLength(a);
    const int32_t bLength = tokenLength(b);
    const int32_t common = aLength < bLength ? aLength : bLength;
    for (int32_t i = 0; i < common; ++i) {
        const UniChar x = loadUnit(a.start + i);
        const UniChar y = loadUnit(b.start + i);
        if (x != y) return x < y ? -1 : 1;
    }
    return aLength == bLength ? 0 : (aLength < bLength ? -1 : 1);
}

bool sameName(const Token &a, const Token &b) {
    const int32_t length = tokenLength(a);
    return length == tokenLength(b) && std::memcmp(a.start, b.start, static_cast<std::size_t>(length) * 2) == 0;
}

}  // namespace

TagAttributes::~TagAttributes() {
    if (entries_ != inline_) std::free(entries_);
}

int32_t TagAttributes::findByComparingAll(const AttributeText &attribute) const {
    for (int32_t i = 0; i < count_; ++i) {
        if (sameName(entries_[i].text.name, attribute.name)) return i;
    }
    return kNone;
}

bool TagAttributes::grow() {
    const int32_t capacity = capacity_ * 2;
    auto *entries = static_cast<Entry *>(std::malloc(static_cast<std::size_t>(capacity) * sizeof(Entry)));
    if (entries == nullptr) return false;
    std::memcpy(entries, entries_, static_cast<std::size_t>(count_) * sizeof(Entry));
    if (entries_ != inline_) std::free(entries_);
    entries_ = entries;
    capacity_ = capacity;
    return true;
}

TagAttributes::Added TagAttributes::add(const AttributeText &attribute) {
    int32_t same = kNone;
    if (count_ < kCompareAll) {
        same = findByComparingAll(attribute);
    } else {
        if (count_ == capacity_ && !grow()) return Added::NoMemory;
        if (root_ == kNone) {
            // The tree starts with the attributes compared one by one so far.
            for (int32_t i = 0; i < count_; ++i) insertOrFind(i);
        }
        entries_[count_].text = attribute;
        same = insertOrFind(count_);
    }
    if (same != kNone) {
        entries_[same].text = attribute;
        return Added::Repeated;
    }
    entries_[count_].text = attribute;
    ++count_;
    return Added::New;
}

// Top-down splay: brings the entry named `name`, or the last entry met on
// the way to where it would be, to the root.  No recursion, no memory.
int32_t TagAttributes::splay(int32_t t, const Token &name) {
    Entry header{{}, kNone, kNone};
    Entry *leftTail = &header;
    Entry *rightTail = &header;
    for (;;) {
        Entry &node = entries_[t];
        const int c = compareNames(name, node.text.name);
        if (c < 0) {
            if (node.left == kNone) break;
            if (compareNames(name, entries_[node.left].text.name) < 0) {
                const int32_t y = node.left;
                node.left = entries_[y].right;
                entries_[y].right = t;
                t = y;
                if (entries_[t].left == kNone) break;
            }
            rightTail->left = t;
            rightTail = &entries_[t];
            t = entries_[t].left;
        } else if (c > 0) {
            if (node.right == kNone) break;
            if (compareNames(name, entries_[node.right].text.name) > 0) {
                const int32_t y = node.right;
                node.right = entries_[y].left;
                entries_[y].left = t;
                t = y;
                if (entries_[t].right == kNone) break;
            }
            leftTail->right = t;
            leftTail = &entries_[t];
            t = entries_[t].right;
        } else {
            break;
        }
    }
    Entry &top = entries_[t];
    leftTail->right = top.left;
    rightTail->left = top.right;
    top.left = header.right;
    top.right = header.left;
    return t;
}

// Adds entry `index` under its name; returns the entry of the same name
// instead when there is one (the tree then keeps that one).
int32_t TagAttributes::insertOrFind(int32_t index) {
    Entry &entry = entries_[index];
    entry.left = entry.right = kNone;
    if (root_ == kNone) {
        root_ = index;
        return kNone;
    }
    root_ = splay(root_, entry.text.name);
    Entry &root = entries_[root_];
    const int c = compareNames(entry.text.name, root.text.name);
    if (c == 0) return root_;
    if (c < 0) {
        entry.left = root.left;
        entry.right = root_;
        root.left = kNone;
    } else {
        entry.right = root.right;
        entry.left = root_;
        root.right = kNone;
    }
    root_ = index;
    return kNone;
}

}  // namespace vrk
