// UTF-8 encoding of runs whose length is known, for the serializer: eight
// units at a time where they are ASCII.
#pragma once

#include <cstdint>

#include "vrkxml.h"

namespace vrk {

// UTF-8 bytes of exactly `units` units, none of them zero.
int64_t utf8BytesOfRun(const UniChar *s, int64_t units);

// Writes the UTF-8 of exactly `units` units, none of them zero, and a
// terminating zero byte; dest has room for utf8BytesOfRun + 1 bytes (3 bytes
// per unit and one more always suffice).  Returns the terminator's address.
char *encodeRun(const UniChar *s, int64_t units, char *dest);

// The one- to three-byte form of a unit; surrogates are encoded on their
// own, never paired.  Returns the address behind the last byte.
inline char *encodeUnit(UniChar unit, char *dest) {
    auto *out = reinterpret_cast<unsigned char *>(dest);
    if (unit < 0x80) {
        out[0] = static_cast<unsigned char>(unit);
        return dest + 1;
    }
    if (unit < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0 | (unit >> 6));
        out[1] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
        return dest + 2;
    }
    out[0] = static_cast<unsigned char>(0xE0 | (unit >> 12));
    out[1] = static_cast<unsigned char>(0x80 | ((unit >> 6) & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
    return dest + 3;
}

}  // namespace vrk
