// 16-bit units to UTF-8.  Each unit is converted on its own: surrogates are
// written as three-byte forms and never paired.  The string conversions use
// the run encoder of utf8_fast.h, as the serializer does, so that there is
// one encoder; they only have to find where their run ends first (the zero
// unit or the limit, whichever comes first).
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/text_limits.h"
#include "unistring/utf8_fast.h"

namespace {

// A byte count as the 32-bit result of this family: -1 when it does not fit.
int32_t narrowed(int64_t bytes) { return bytes > INT32_MAX ? -1 : static_cast<int32_t>(bytes); }

int32_t byteCount(const UniChar *s, int64_t limit) { return narrowed(vrk::utf8BytesOfRun(s, vrk::unitCount(s, limit))); }

char *convert(const UniChar *s, int64_t limit, char *dest) {
    const int64_t units = vrk::unitCount(s, limit);
    if (dest == nullptr) {
        const int32_t bytes = narrowed(vrk::utf8BytesOfRun(s, units));
        if (bytes < 0) return nullptr;
        dest = static_cast<char *>(std::malloc(static_cast<std::size_t>(bytes) + 1));
        if (dest == nullptr) return nullptr;
    }
    vrk::encodeRun(s, units, dest);
    return dest;
}

}  // namespace

VRK_EXPORT int32_t vrkUniCharToUTF8(UniChar unit, char *dest) { return vrk::encodeUnit(unit, dest); }

VRK_EXPORT int32_t vrkUniCharToUTF8Len(const UniChar *s) { return byteCount(s, INT64_MAX); }

VRK_EXPORT int32_t vrkUniCharNToUTF8Len(const UniChar *s, int32_t n) { return byteCount(s, n); }

VRK_EXPORT char *vrkUniCharStringToUTF8(const UniChar *s, char *dest) {
    return convert(s, INT64_MAX, dest);
}

VRK_EXPORT char *vrkUniCharStringNToUTF8(const UniChar *s, int32_t n, char *dest) {
    return convert(s, n, dest);
}
