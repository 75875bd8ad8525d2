// UTF-8 to 16-bit units.
#include <cstdlib>
#include <cstring>

#include "unistring/export.h"
#include "unistring/text_limits.h"
#include "unistring/unit_access.h"

#include "unistring/simd.h"
#if VRKXML_SSE2
#include <emmintrin.h>
#endif

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

// Length of the run of ASCII bytes at p, among the `available` bytes there.
// Texts are mostly ASCII, so this is the decoder's fast path.
std::size_t asciiRun(const unsigned char *p, std::size_t available) {
    std::size_t n = 0;
#if VRKXML_SSE2
    while (n + 16 <= available) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + n));
        const int high = _mm_movemask_epi8(bytes);
        if (high != 0) return n + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(high)));
        n += 16;
    }
#endif
    while (n < available && p[n] < 0x80) ++n;
    return n;
}

// Widens `count` ASCII bytes to units.
void widenAscii(const unsigned char *in, UniChar *out, std::size_t count) {
    std::size_t i = 0;
#if VRKXML_SSE2
    const __m128i zero = _mm_setzero_si128();
    for (; i + 16 <= count; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i + 8), _mm_unpackhi_epi8(bytes, zero));
    }
#endif
    for (; i < count; ++i) vrk::storeUnit(out + i, in[i]);
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

namespace vrk {

// The byte length is taken first (strlen reads the text safely in large
// steps), so that the scans below know how far they may read.
int64_t utf8UnitCount(const char *s) {
    const auto *p = reinterpret_cast<const unsigned char *>(s);
    const auto *end = p + std::strlen(s);
    int64_t units = 0;
    while (p < end) {
        const std::size_t run = asciiRun(p, static_cast<std::size_t>(end - p));
        p += run;
        units += static_cast<int64_t>(run);
        if (p == end) break;
        const char *cursor = reinterpret_cast<const char *>(p);
        if (vrkUTF8ToUniChar(&cursor) == kDecodeFailure) return -1;
        p = reinterpret_cast<const unsigned char *>(cursor);
        ++units;
    }
    return units;
}

UniChar *decodeMeasuredUtf8(const char *s, int64_t units) {
    auto *result = static_cast<UniChar *>(std::malloc(stringBytes(static_cast<std::size_t>(units))));
    if (result == nullptr) return nullptr;
    const auto *p = reinterpret_cast<const unsigned char *>(s);
    UniChar *out = result;
    UniChar *const end = result + units;
    while (out < end) {
        const std::size_t run = asciiRun(p, static_cast<std::size_t>(end - out));
        widenAscii(p, out, run);
        p += run;
        out += run;
        if (out == end) break;
        const char *cursor = reinterpret_cast<const char *>(p);
        *out++ = vrkUTF8ToUniChar(&cursor);
        p = reinterpret_cast<const unsigned char *>(cursor);
    }
    *out = 0;
    return result;
}

}  // namespace vrk

VRK_EXPORT int32_t vrkUTF8StrLen(const char *s) {
    const int64_t units = vrk::utf8UnitCount(s);
    return units > vrk::kMaxTextUnits ? -1 : static_cast<int32_t>(units);
}

VRK_EXPORT UniChar *vrkUTF8ToUniCharString(const char *s, UniChar *dest) {
    if (dest == nullptr) {
        const int32_t length = vrkUTF8StrLen(s);
        if (length < 0) return nullptr;
        return vrk::decodeMeasuredUtf8(s, length);
    }
    UniChar *out = dest;
    while (*s != 0) {
        const UniChar unit = vrkUTF8ToUniChar(&s);
        vrk::storeUnit(out++, unit);
        if (unit == kDecodeFailure) return nullptr;
    }
    vrk::storeUnit(out, 0);
    return dest;
}
