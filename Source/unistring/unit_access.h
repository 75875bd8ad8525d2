// Reading and writing single 16-bit units at any address.
#pragma once

#include <cstring>

#include "vrkxml.h"

namespace vrk {

// UTF-16 text is parsed in the caller's buffer, which may start at an odd
// address, so no unit is ever read or written through a plain dereference.
// memcpy of two bytes compiles to one unaligned load or store.
inline UniChar loadUnit(const UniChar *p) {
    UniChar unit;
    std::memcpy(&unit, p, sizeof unit);
    return unit;
}

inline void storeUnit(UniChar *p, UniChar unit) { std::memcpy(p, &unit, sizeof unit); }

// Bytes that a string of `units` units and its terminator occupy.
inline std::size_t stringBytes(std::size_t units) { return (units + 1) * sizeof(UniChar); }

}  // namespace vrk
