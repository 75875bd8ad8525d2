// 16-bit units to UTF-8.  Each unit is converted on its own: surrogates are
// written as three-byte forms and never paired.  The string conversions use
// the run encoder of utf8_fast.h, as the serializer does, so that there is
// one encoder; they only have to find where their run ends first.
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "unistring/utf8_fast.h"

namespace {

// A byte count as the 32-bit result of this family: -1 when it does not fit.
int32_t narrowed(int64_t bytes) { return bytes > INT32_MAX ? -1 : static_cast<int32_t>(bytes); }

// Units ahead of the first zero unit, at most `limit` of them: the run the
// encoder is given, since it neither stops at a zero nor checks a limit.
// No unit past the zero may be read (the text may end there), so unlike the
// encoder this scan cannot load eight units at once; checking four a round
// keeps it cheap next to the encoding that follows.
int64_t runLength(const UniChar *s, int64_t limit) {
    int64_t units = 0;
    for (; limit - units >= 4; units += 4) {
        if (vrk::loadUnit(s + units) == 0) return units;
        if (vrk::loadUnit(s + units + 1) == 0) return units + 1;
        if (vrk::loadUnit(s + units + 2) == 0) return units + 2;
        if (vrk::loadUnit(s + units + 3) == 0) return units + 3;
    }
    while (units < limit && vrk::loadUnit(s + units) != 0) ++units;
    return units;
}

int32_t byteCount(const UniChar *s, int64_t limit) { return narrowed(vrk::utf8BytesOfRun(s, runLength(s, limit))); }

char *convert(const UniChar *s, int64_t limit, char *dest) {
    const int64_t units = runLength(s, limit);
    if (dest == nullptr) {
        const int32_t bytes = narrowed(vrk::utf8BytesOfRun(s, units));
        if (bytes < 0) return nullptr;
        dest = static_cast<char *>(std::malloc(static_cast<std::size_t>(bytes) + 1));
        if (dest == nullptr) return nullptr;
    }
    vrk::encodeRun(s, units, dest);
    return dest;
}

constexpr int64_t kWholeString = INT64_MAX;

}  // namespace

VRK_EXPORT int32_t vrkUniCharToUTF8(UniChar unit, char *dest) { return vrk::encodeUnit(unit, dest); }

VRK_EXPORT int32_t vrkUniCharToUTF8Len(const UniChar *s) { return byteCount(s, kWholeString); }

VRK_EXPORT int32_t vrkUniCharNToUTF8Len(const UniChar *s, int32_t n) { return byteCount(s, n); }

VRK_EXPORT char *vrkUniCharStringToUTF8(const UniChar *s, char *dest) {
    return convert(s, kWholeString, dest);
}

VRK_EXPORT char *vrkUniCharStringNToUTF8(const UniChar *s, int32_t n, char *dest) {
    return convert(s, n, dest);
}
