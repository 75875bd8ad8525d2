// Small scanning loops shared by the productions.
#pragma once

#include "unistring/unit_access.h"
#include "xmlparser/char_class.h"

namespace vrk {

inline bool isWhiteSpace(UniChar unit) {
    return unit == 0x20 || unit == 0x09 || unit == 0x0A || unit == 0x0D;
}

// The first unit at or behind p that is no XML white space; the terminator
// behind the text stops it.
inline UniChar *skipWhiteSpace(UniChar *p) {
    while (isWhiteSpace(loadUnit(p))) ++p;
    return p;
}

// The first unit at or behind p, and at most one past end, that is no NCNameChar.
inline UniChar *scanNCNameChars(UniChar *p, const UniChar *end) {
    while (p <= end && charclass::has(loadUnit(p), charclass::kNameCharBit)) ++p;
    return p;
}

// Whether the text at p goes on with the `length` units of `literal`.  It
// stops at the first difference, so it never reads past the terminator.
inline bool startsWith(const UniChar *p, const UniChar *literal, int32_t length) {
    for (int32_t i = 0; i < length; ++i) {
        if (loadUnit(p + i) != literal[i]) return false;
    }
    return true;
}

}  // namespace vrk
