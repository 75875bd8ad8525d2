// UTF-8 to 16-bit units.
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/unit_access.h"

namespace {

constexpr UniChar kDecodeFailure = 0xFFFF;

// Sequence shape by lead byte: number of continuation bytes, or -1 for a
// byte that cannot lead (a continuation byte, 0xFE, 0xFF).
constexpr int continuationCount(unsigned char lead) {
    if (lead < 0x80) return 0;
    if (lead < 0xC0) return -1;
    if (lead < 0xE0) return 1;
    if (lead < 0xF0) return 2;
    if (lead < 0xF8) return 3;
    if (lead < 0xFC) return 4;
    if (lead < 0xFE) return 5;
    return -1;
}

// Whether a completely read sequence of `continuations` continuation bytes
// that carries `value` is a unit this decoder gives out.
constexpr bool acceptable(int continuations, uint32_t value) {
    if (continuations == 1) return value >= 0x80;
    if (continuations == 2) return value >= 0x800 && (value < 0xD800 || value > 0xDFFF);
    return false;  // four- to six-byte forms carry nothing below 0x10000 we accept
}

}  // namespace

VRK_EXPORT UniChar vrkUTF8ToUniChar(const char **cursor) {
    const auto *p = reinterpret_cast<const unsigned char *>(*cursor);
    const unsigned char lead = *p;
    const int continuations = continuationCount(lead);
    if (continuations == 0) {
        *cursor += 1;
        return lead;
    }
    if (continuations < 0) return kDecodeFailure;

    // The lead byte keeps 6 - continuations value bits (5 for two bytes).
    uint32_t value = lead & (0x3Fu >> continuations);
    for (int i = 1; i <= continuations; ++i) {
        if ((p[i] & 0xC0) != 0x80) {
            *cursor += i;
            return kDecodeFailure;
        }
        value = (value << 6) | (p[i] & 0x3Fu);
    }
    *cursor += continuations + 1;
    // 0xFFFF passes this test and is then indistinguishable from a failure,
    // which is how every caller takes it.
    return acceptable(continuations, value) ? static_cast<UniChar>(value) : kDecodeFailure;
}

VRK_EXPORT int32_t vrkUTF8StrLen(const char *s) {
    int32_t length = 0;
    while (*s != 0) {
        if (static_cast<unsigned char>(*s) < 0x80) {
            ++s;
        } else if (vrkUTF8ToUniChar(&s) == kDecodeFailure) {
            return -1;
        }
        ++length;
    }
    return length;
}

VRK_EXPORT UniChar *vrkUTF8ToUniCharString(const char *s, UniChar *dest) {
    UniChar *result = dest;
    if (result == nullptr) {
        const int32_t length = vrkUTF8StrLen(s);
        if (length < 0) return nullptr;
        result = static_cast<UniChar *>(std::malloc(vrk::stringBytes(static_cast<std::size_t>(length))));
        if (result == nullptr) return nullptr;
    }
    UniChar *out = result;
    while (*s != 0) {
        const UniChar unit = vrkUTF8ToUniChar(&s);
        vrk::storeUnit(out++, unit);
        // Only the caller's own buffer can meet a failure here: a measured
        // text decodes cleanly.
        if (unit == kDecodeFailure) return nullptr;
    }
    vrk::storeUnit(out, 0);
    return result;
}
