// UTF-8 encoding of runs whose length is known, for the serializer and the
// exported string conversions: eight units at a time where they are ASCII.
#pragma once

#include <cstdint>

#include "vrkxml.h"

namespace vrk {

// Writes the UTF-8 form of one unit and returns its length; a surrogate is
// written on its own as a three-byte form.  Inline so that the run encoder
// does not make a call for every unit outside ASCII.
inline int32_t encodeUnit(UniChar unit, char *dest) {
    auto *out = reinterpret_cast<unsigned char *>(dest);
    if (unit < 0x80) {
        out[0] = static_cast<unsigned char>(unit);
        return 1;
    }
    if (unit < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0 | (unit >> 6));
        out[1] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
        return 2;
    }
    out[0] = static_cast<unsigned char>(0xE0 | (unit >> 12));
    out[1] = static_cast<unsigned char>(0x80 | ((unit >> 6) & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
    return 3;
}

// UTF-8 bytes of exactly `units` units, none of them zero.
int64_t utf8BytesOfRun(const UniChar *s, int64_t units);

// Writes the UTF-8 of exactly `units` units, none of them zero, and a
// terminating zero byte; dest has room for utf8BytesOfRun + 1 bytes (3 bytes
// per unit and one more always suffice).  Returns the terminator's address.
char *encodeRun(const UniChar *s, int64_t units, char *dest);

}  // namespace vrk
