// The attributes of one start tag, as read from its text, before any node
// is made: kept in the order of the text, with the check for a repeated
// name.  A tag with many attributes costs O(n log n), not the O(n^2) of
// comparing each new name with all before it.
#pragma once

#include "xmlparser/attribute_text.h"

namespace vrk {

class TagAttributes {
public:
    TagAttributes() = default;
    TagAttributes(const TagAttributes &) = delete;
    TagAttributes &operator=(const TagAttributes &) = delete;
    ~TagAttributes();

    int32_t count() const { return count_; }
    AttributeText &operator[](int32_t i) { return entries_[i].text; }

    // What add() found.
    enum class Added { New, Repeated, NoMemory };

    // Adds the next attribute of the tag.  When an earlier one has the same
    // qualified name, `attribute` takes its place (as a set into the map
    // would do) and the result is Repeated; NoMemory leaves the list as it
    // was.
    Added add(const AttributeText &attribute);

private:
    // Below this many attributes the names are compared one by one; from
    // there on they are also kept in a splay tree.
    static constexpr int32_t kCompareAll = 16;
    static constexpr int32_t kNone = -1;

    struct Entry {
        AttributeText text;
        int32_t left;   // splay tree links, indices into entries_
        int32_t right;
    };

    int32_t findByComparingAll(const AttributeText &attribute) const;
    int32_t insertOrFind(int32_t index);
    int32_t splay(int32_t root, const Token &name);
    bool grow();

    Entry inline_[kCompareAll];
    Entry *entries_ = inline_;
    int32_t capacity_ = kCompareAll;
    int32_t count_ = 0;
    int32_t root_ = kNone;
};

}  // namespace vrk
