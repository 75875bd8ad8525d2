// One block per node: the record, the size of the room behind it, then the
// strings the node was made with, each zero-terminated.
//
// A node string may also live in a block of its own: one that outgrew its
// room, or one a caller stored in the record.  Every operation that
// releases, replaces or grows a node string goes through the rule here,
// which tells the two apart by address: a string lies in the node's room or
// it does not.  The static names of text, CDATA section and document nodes
// are neither; callers never hand them to the rule.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vrkxml.h"

namespace vrk {

// Where the room's size (in units) is kept, and where the room begins.
constexpr std::size_t kRoomSizeOffset = sizeof(vrkNode);
constexpr std::size_t kRoomOffset = kRoomSizeOffset + sizeof(std::size_t);

inline UniChar *roomOf(const vrkNode *node) {
    return reinterpret_cast<UniChar *>(reinterpret_cast<uintptr_t>(node) + kRoomOffset);
}

inline std::size_t roomUnits(const vrkNode *node) {
    std::size_t units;
    std::memcpy(&units, reinterpret_cast<const char *>(node) + kRoomSizeOffset, sizeof units);
    return units;
}

// Whether s (which may be null) lies in the room of node's block.
inline bool livesInBlock(const vrkNode *node, const UniChar *s) {
    const auto at = reinterpret_cast<uintptr_t>(s);
    const auto room = reinterpret_cast<uintptr_t>(roomOf(node));
    return at >= room && at - room < roomUnits(node) * sizeof(UniChar);
}

// A zeroed record of `type` with room for `units` units behind it (the
// strings' terminators included), or null when memory runs out.
vrkNode *allocateNodeBlock(int32_t type, std::size_t units);

// The first steps of a factory under the Real convention: nothing while an
// exception is pending; otherwise allocateNodeBlock, or ERR_OUT_OF_MEMORY.
vrkNode *newNodeBlock(const char *callerFile, int32_t callerLine, int32_t type, std::size_t units,
                      vrkDOMException *exception);

// Copies `count` units from `units` and a terminator to `room`, moves
// `room` behind them and returns where the string begins.  Most names and
// values are short: up to 16 units are copied in line, by two fixed-size
// copies that may overlap, none reading outside the units.
inline UniChar *placeString(UniChar *&room, const UniChar *units, std::size_t count) {
    UniChar *string = room;
    auto *to = reinterpret_cast<char *>(string);
    const auto *from = reinterpret_cast<const char *>(units);
    const std::size_t bytes = count * sizeof(UniChar);
    if (bytes >= 16 && bytes <= 32) {
        std::memcpy(to, from, 16);
        std::memcpy(to + bytes - 16, from + bytes - 16, 16);
    } else if (bytes >= 8 && bytes < 16) {
        std::memcpy(to, from, 8);
        std::memcpy(to + bytes - 8, from + bytes - 8, 8);
    } else if (bytes >= 4 && bytes < 8) {
        std::memcpy(to, from, 4);
        std::memcpy(to + bytes - 4, from + bytes - 4, 4);
    } else if (bytes == 2) {
        std::memcpy(to, from, 2);
    } else if (bytes != 0) {
        std::memcpy(to, from, bytes);
    }
    string[count] = 0;
    room += count + 1;
    return string;
}

// Units of room that `count` units and their terminator take.  A negative
// count, which no string can have, asks for more room than memory holds.
inline std::size_t roomFor(int32_t count) {
    return count < 0 ? SIZE_MAX / 4 : static_cast<std::size_t>(count) + 1;
}

// Frees s unless it is null or lives in node's block.
inline void releaseNodeString(const vrkNode *node, UniChar *s) {
    if (s != nullptr && !livesInBlock(node, s)) std::free(s);
}

// A block of its own with room for `units` units and a terminator, holding
// the first `keep` units of s (null when keep is 0): s itself, resized, when
// it already has a block of its own, otherwise a new block (s stays where
// it is).  Null when memory runs out; s is then unchanged.
UniChar *resizeNodeString(const vrkNode *node, UniChar *s, std::size_t keep, std::size_t units);

// Makes node->*field the `count` units at `units`: in place when the old
// string lives in the block and is at least as long, otherwise in a block
// of its own, the old string released.  `units` may point into the old
// string.  False, with nothing changed, when memory runs out.
bool replaceNodeString(vrkNode *node, UniChar *vrkNode::*field, const UniChar *units, int32_t count);

}  // namespace vrk
