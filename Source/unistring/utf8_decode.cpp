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

// The two- and three-byte forms, the only ones that carry a unit this
// decoder gives out, are read in line: non-ASCII text comes in runs (a word
// of Greek, a line of Japanese), and a call for each character would cost
// more than its decoding.
//
// Reads the run of sequences at p, up to the next ASCII byte or the
// terminator, handing each unit to take: the end of the run, or null at a
// sequence that vrkUTF8ToUniChar refuses (or decodes to 0xFFFF, which is
// its failure value).  A continuation byte is read only while the bytes
// before it continued the sequence, so no byte past the terminator is read.
template <class Take>
const unsigned char *readSequences(const unsigned char *p, Take take) {
    for (unsigned lead; (lead = p[0]) >= 0x80;) {
        // 0x80 to 0xBF cannot lead; 0xC0 and 0xC1 begin overlong forms.
        if (lead < 0xC2 || (p[1] & 0xC0) != 0x80) return nullptr;
        if (lead < 0xE0) {
            take(static_cast<UniChar>(((lead & 0x1Fu) << 6) | (p[1] & 0x3Fu)));
            p += 2;
            continue;
        }
        if (lead >= 0xF0 || (p[2] & 0xC0) != 0x80) return nullptr;
        const uint32_t value = ((lead & 0x0Fu) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu);
        if (value < 0x800 || (value >= 0xD800 && value <= 0xDFFF) || value == 0xFFFF) return nullptr;
        take(static_cast<UniChar>(value));
        p += 3;
    }
    return p;
}

// Decodes the `bytes` bytes at s, which end at a terminator, into out,
// which has room for them all: the end of the units written, or null when
// the text is malformed.
UniChar *decodeInto(const unsigned char *p, std::size_t bytes, UniChar *out) {
    const unsigned char *const end = p + bytes;
    while (p < end) {
        const std::size_t run = asciiRun(p, static_cast<std::size_t>(end - p));
        widenAscii(p, out, run);
        p += run;
        out += run;
        p = readSequences(p, [&out](UniChar unit) { *out++ = unit; });
        if (p == nullptr) return nullptr;
    }
    return out;
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
        p = readSequences(p, [&units](UniChar) { ++units; });
        if (p == nullptr) return -1;
    }
    return units;
}

UniChar *decodeMeasuredUtf8(const char *s, int64_t units) {
    auto *result = static_cast<UniChar *>(std::malloc(stringBytes(static_cast<std::size_t>(units))));
    if (result == nullptr) return nullptr;
    UniChar *end = decodeInto(reinterpret_cast<const unsigned char *>(s), std::strlen(s), result);
    *end = 0;
    return result;
}

UniChar *decodeUtf8Text(const char *s, int64_t *units) {
    const std::size_t bytes = std::strlen(s);
    if (bytes > static_cast<std::size_t>(kMaxTextUnits)) {
        // As many units as bytes would be too many; fewer may not be.
        *units = utf8UnitCount(s);
        return *units < 0 || *units > kMaxTextUnits ? nullptr : decodeMeasuredUtf8(s, *units);
    }
    // One pass checks and decodes into room for a unit a byte, which the
    // units then fit exactly when the text is ASCII; otherwise the block
    // shrinks to them.
    auto *result = static_cast<UniChar *>(std::malloc(stringBytes(bytes)));
    if (result == nullptr) {
        *units = static_cast<int64_t>(bytes);  // not known; below the limit all the same
        return nullptr;
    }
    UniChar *end = decodeInto(reinterpret_cast<const unsigned char *>(s), bytes, result);
    if (end == nullptr) {
        std::free(result);
        *units = -1;
        return nullptr;
    }
    *end = 0;
    *units = end - result;
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
