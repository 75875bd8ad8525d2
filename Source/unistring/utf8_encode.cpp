// 16-bit units to UTF-8.  Each unit is converted on its own: surrogates are
// written as three-byte forms and never paired.
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/text_limits.h"
#include "unistring/unit_access.h"
#include "unistring/utf8_fast.h"

namespace {

constexpr int32_t encodedLength(UniChar unit) { return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3; }

// A byte count as the 32-bit result of this family: -1 when it does not fit.
int32_t narrowed(int64_t bytes) { return bytes > INT32_MAX ? -1 : static_cast<int32_t>(bytes); }

char *convert(const UniChar *s, int64_t limit, char *dest) {
    if (dest == nullptr) {
        const int32_t bytes = narrowed(vrk::utf8ByteCount(s, limit));
        if (bytes < 0) return nullptr;
        dest = static_cast<char *>(std::malloc(static_cast<std::size_t>(bytes) + 1));
        if (dest == nullptr) return nullptr;
    }
    char *out = dest;
    for (int64_t i = 0; i < limit; ++i) {
        const UniChar unit = vrk::loadUnit(s + i);
        if (unit == 0) break;
        out += vrkUniCharToUTF8(unit, out);
    }
    *out = 0;
    return dest;
}

constexpr int64_t kWholeString = INT64_MAX;

}  // namespace

namespace vrk {

int64_t utf8ByteCount(const UniChar *s, int64_t limit) {
    int64_t bytes = 0;
    for (int64_t i = 0; i < limit; ++i) {
        const UniChar unit = loadUnit(s + i);
        if (unit == 0) break;
        bytes += encodedLength(unit);
    }
    return bytes;
}

}  // namespace vrk

VRK_EXPORT int32_t vrkUniCharToUTF8(UniChar unit, char *dest) { return vrk::encodeUnit(unit, dest); }

VRK_EXPORT int32_t vrkUniCharToUTF8Len(const UniChar *s) { return narrowed(vrk::utf8ByteCount(s, kWholeString)); }

VRK_EXPORT int32_t vrkUniCharNToUTF8Len(const UniChar *s, int32_t n) { return narrowed(vrk::utf8ByteCount(s, n)); }

VRK_EXPORT char *vrkUniCharStringToUTF8(const UniChar *s, char *dest) {
    return convert(s, kWholeString, dest);
}

VRK_EXPORT char *vrkUniCharStringNToUTF8(const UniChar *s, int32_t n, char *dest) {
    return convert(s, n, dest);
}
