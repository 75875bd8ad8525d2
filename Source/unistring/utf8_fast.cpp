#include "unistring/utf8_fast.h"

#include "unistring/unit_access.h"

#include "unistring/simd.h"
#if VRKXML_SSE2
#include <emmintrin.h>
#endif

namespace vrk {

int64_t utf8BytesOfRun(const UniChar *s, int64_t units) {
    int64_t bytes = units;
    int64_t i = 0;
#if VRKXML_SSE2
    // A unit adds a byte above 0x7F and another above 0x7FF.  The extra
    // bytes are summed in the vector (the baseline instruction set has no
    // popcount, which would be a library call for every eight units).
    const __m128i below80 = _mm_set1_epi16(0x7F);
    const __m128i below800 = _mm_set1_epi16(0x7FF);
    const __m128i two = _mm_set1_epi16(2);
    const __m128i zero = _mm_setzero_si128();
    __m128i extra = zero;  // two 64-bit sums
    for (; i + 8 <= units; i += 8) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i));
        const __m128i ascii = _mm_cmpeq_epi16(_mm_subs_epu16(x, below80), zero);
        if (_mm_movemask_epi8(ascii) == 0xFFFF) continue;
        const __m128i atMost7FF = _mm_cmpeq_epi16(_mm_subs_epu16(x, below800), zero);
        // 2 less one for each threshold the unit is at or below: 0, 1 or 2.
        const __m128i added = _mm_add_epi16(two, _mm_add_epi16(ascii, atMost7FF));
        extra = _mm_add_epi64(extra, _mm_sad_epu8(added, zero));
    }
    int64_t sums[2];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(sums), extra);
    bytes += sums[0] + sums[1];
#endif
    for (; i < units; ++i) {
        const UniChar unit = loadUnit(s + i);
        bytes += (unit >= 0x80) + (unit >= 0x800);
    }
    return bytes;
}

char *encodeRun(const UniChar *s, int64_t units, char *dest) {
    int64_t i = 0;
#if VRKXML_SSE2
    // Blocks of eight ASCII units are narrowed at once; a block that holds
    // any other unit is encoded unit by unit, and the next block is tried
    // again, so that one accented letter does not slow the rest.  Short
    // pieces, the serializer's usual ones, go straight to the tail loop.
    const __m128i below80 = _mm_set1_epi16(0x7F);
    const __m128i zero = _mm_setzero_si128();
    while (i + 8 <= units) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_subs_epu16(x, below80), zero)) == 0xFFFF) {
            _mm_storel_epi64(reinterpret_cast<__m128i *>(dest), _mm_packus_epi16(x, x));
            dest += 8;
            i += 8;
            continue;
        }
        for (const int64_t stop = i + 8; i < stop; ++i) dest += encodeUnit(loadUnit(s + i), dest);
    }
#endif
    for (; i < units; ++i) dest += encodeUnit(loadUnit(s + i), dest);
    *dest = 0;
    return dest;
}

}  // namespace vrk
