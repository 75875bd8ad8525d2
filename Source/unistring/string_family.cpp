// The zero-terminated 16-bit string family.
#include <cstdlib>
#include <cstring>

#include "unistring/export.h"
#include "unistring/fold_case.h"
#include "unistring/text_limits.h"
#include "unistring/unit_access.h"

using vrk::loadUnit;
using vrk::storeUnit;

namespace vrk {

int64_t unitCount(const UniChar *s, int64_t limit) {
    // No unit past the zero may be read (the text may end there), so the
    // scan cannot load eight units at once; four a round keeps it cheap.
    int64_t units = 0;
    for (; limit - units >= 4; units += 4) {
        if (loadUnit(s + units) == 0) return units;
        if (loadUnit(s + units + 1) == 0) return units + 1;
        if (loadUnit(s + units + 2) == 0) return units + 2;
        if (loadUnit(s + units + 3) == 0) return units + 3;
    }
    while (units < limit && loadUnit(s + units) != 0) ++units;
    return units;
}

}  // namespace vrk

// A string longer than the 32-bit range is beyond this family: the count
// then wraps (no operation of the library hands such a string in).
VRK_EXPORT int32_t vrkunistrlen(const UniChar *s) { return static_cast<int32_t>(vrk::unitCount(s)); }

VRK_EXPORT UniChar *vrkunistrcpy(UniChar *dest, const UniChar *src) {
    // memmove copies as the forward walk does whenever dest lies at or below src.
    std::memmove(dest, src, vrk::stringBytes(static_cast<std::size_t>(vrkunistrlen(src))));
    return dest;
}

VRK_EXPORT UniChar *vrkunistrcat(UniChar *dest, const UniChar *src) {
    vrkunistrcpy(dest + vrkunistrlen(dest), src);
    return dest;
}

VRK_EXPORT UniChar *vrkunistrncpy(UniChar *dest, const UniChar *src, int32_t n) {
    int32_t stored = 0;
    for (; stored < n; ++stored) {
        UniChar unit = loadUnit(src + stored);
        if (unit == 0) break;
        storeUnit(dest + stored, unit);
    }
    for (; stored < n; ++stored) storeUnit(dest + stored, 0);
    return dest;
}

VRK_EXPORT UniChar *vrkUniCharArrayToString(const UniChar *chars, int32_t n) {
    std::size_t units = static_cast<std::size_t>(n);
    auto *copy = static_cast<UniChar *>(std::malloc(vrk::stringBytes(units)));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, chars, units * sizeof(UniChar));
    copy[units] = 0;
    return copy;
}

VRK_EXPORT UniChar *unistrndup(const UniChar *s, int32_t n) { return vrkUniCharArrayToString(s, n); }

VRK_EXPORT UniChar *vrkunistrdup(const UniChar *s) {
    return vrkUniCharArrayToString(s, vrkunistrlen(s));
}

VRK_EXPORT UniChar *vrkunistrchr(const UniChar *s, int32_t c) {
    const auto wanted = static_cast<UniChar>(c);
    for (UniChar unit; (unit = loadUnit(s)) != 0; ++s) {
        if (unit == wanted) return const_cast<UniChar *>(s);
    }
    return nullptr;
}

VRK_EXPORT int32_t vrkunistrcspn(const UniChar *s, const UniChar *set) {
    int32_t length = 0;
    for (UniChar unit; (unit = loadUnit(s + length)) != 0; ++length) {
        if (vrkunistrchr(set, unit) != nullptr) break;
    }
    return length;
}

VRK_EXPORT int32_t vrkunistrcmp(const UniChar *a, const UniChar *b) {
    for (;; ++a, ++b) {
        int32_t left = vrk::foldCase(loadUnit(a));
        int32_t right = vrk::foldCase(loadUnit(b));
        if (left == 0) return -right;
        if (left != right) return left - right;
    }
}

VRK_EXPORT int32_t vrkunistrncmp(const UniChar *a, const UniChar *b, int32_t n) {
    // The count is looked at only behind the first comparison, so at least
    // one unit is always compared.
    for (;; ++a, ++b) {
        int32_t left = loadUnit(a);
        int32_t right = loadUnit(b);
        --n;
        if (left == 0) return -right;
        if (left != right) return left - right;
        if (n <= 0) return 0;
    }
}
