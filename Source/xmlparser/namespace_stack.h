// The record behind each namespace stack entry.
#pragma once

#include "vrkxml.h"

namespace vrk {

// pushNameSpaceStack allocates this larger record, of which the public
// entry is the first member.  Beside the entry it remembers answers that
// hold for the stack as it stands from this entry down, so that lookups do
// not walk the whole stack again for every element (which would make a
// deeply nested document quadratic):
//  - the nearest default declaration at or below the entry;
//  - the nearest declarations of a few prefixes looked up or declared
//    recently.  A new entry inherits its parent's, with its own prefix
//    taking the place of an older declaration of the same prefix; a lookup
//    that had to walk records its answer in the top entry.  Entries above
//    come and go without touching these, so they stay true.
struct StackRecord {
    static constexpr int kRemembered = 4;

    NameSpaceStackEntry entry;
    const NameSpaceStackEntry *nearestDefault;
    const NameSpaceStackEntry *remembered[kRemembered];
    int replaceNext;
};

// Whether entry (which may be null) declares the prefix of prefixLength
// units; a default declaration declares no prefix.
inline bool declaresPrefix(const NameSpaceStackEntry *entry, const UniChar *prefix, int32_t prefixLength) {
    return entry != nullptr && entry->prefix != nullptr && entry->prefixLength == prefixLength &&
           vrkunistrncmp(entry->prefix, prefix, prefixLength) == 0;
}

// The namespace name that prefix (of prefixLength units, anywhere in the
// text; null for the default namespace) stands for at the top of the
// stack, as getNameSpaceURI finds it: true with `out` set, or false.
bool findNamespace(ProduceContext *context, const UniChar *prefix, int32_t prefixLength, Token *out);

inline StackRecord *recordOf(const NameSpaceStackEntry *entry) {
    return reinterpret_cast<StackRecord *>(const_cast<NameSpaceStackEntry *>(entry));
}

}  // namespace vrk
