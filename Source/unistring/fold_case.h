// The case folding of the string family: the system's case mapping for
// units below 256, every other unit as it is.
#pragma once

#include <cctype>
#include <cstdint>

#include "unistring/unit_access.h"
#include "vrkxml.h"

namespace vrk {

inline int32_t foldCase(UniChar unit) { return unit < 256 ? std::toupper(unit) : unit; }

// Whether the `length` units at s (anywhere, even at an odd address) equal the zero-terminated literal when
// both are folded, as vrkunistrcmp compares them.
inline bool equalsFolded(const UniChar *s, int32_t length, const UniChar *literal) {
    int32_t i = 0;
    for (; i < length; ++i) {
        if (literal[i] == 0 || foldCase(loadUnit(s + i)) != foldCase(literal[i])) return false;
    }
    return literal[i] == 0;
}

}  // namespace vrk
