// Finding the next unit of interest in a run of text: the inner loop of
// character data, attribute values, comments and CDATA sections.
#pragma once

#include "unistring/unit_access.h"

#include "unistring/simd.h"
#if VRKXML_SSE2
#include <emmintrin.h>
#endif

namespace vrk {

// The first unit in [p, last] equal to one of `wanted`, or last + 1 when
// there is none.  Eight units are compared at a time; no unit behind last
// is read, so the scan is bounded by the text even where the caller's text
// is not followed by its terminator.
template <UniChar... wanted>
inline UniChar *findUnit(UniChar *p, const UniChar *last) {
#if VRKXML_SSE2
    while (last - p >= 7) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        __m128i hits = _mm_setzero_si128();
        ((hits = _mm_or_si128(hits, _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(wanted))))), ...);
        const int mask = _mm_movemask_epi8(hits);
        if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask)) / 2;
        p += 8;
    }
#endif
    for (; p <= last; ++p) {
        const UniChar unit = loadUnit(p);
        if (((unit == wanted) || ...)) return p;
    }
    return p;
}

}  // namespace vrk
