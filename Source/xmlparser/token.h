// Tokens: stretches of the text being parsed, and their copies into a
// node's block.
#pragma once

#include "dom/node_block.h"
#include "vrkxml.h"

namespace vrk {

// Length in units of a token that stands for something.
inline int32_t tokenLength(const Token &token) { return static_cast<int32_t>(token.end - token.start + 1); }

// Room that a copy of the token takes in a node's block.
inline std::size_t tokenRoom(const Token &token) { return roomFor(tokenLength(token)); }

// Copies the token behind `room` (see placeString).
inline UniChar *placeToken(UniChar *&room, const Token &token) {
    return placeString(room, token.start, static_cast<std::size_t>(tokenLength(token)));
}

}  // namespace vrk
