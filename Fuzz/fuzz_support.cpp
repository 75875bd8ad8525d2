#include "fuzz_support.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "support/document_generator.h"
#include "vrkxml.hpp"

namespace fuzz {

namespace {

bool continuation(const uint8_t *p) { return (*p & 0xC0) == 0x80; }

// Bytes to units, forgivingly: well-formed UTF-8 sequences of up to four
// bytes decode (surrogates and U+FFFF included, so the fuzzer can reach
// them), anything else is taken as one Latin-1 unit.  Stops at a zero unit.
std::vector<UniChar> decodeLeniently(const uint8_t *data, std::size_t size) {
    std::vector<UniChar> units;
    for (std::size_t i = 0; i < size;) {
        const uint8_t b = data[i];
        uint32_t c = b;
        std::size_t length = 1;
        if (b >= 0xC0 && b < 0xE0 && i + 1 < size && continuation(data + i + 1)) {
            c = (b & 0x1Fu) << 6 | (data[i + 1] & 0x3Fu);
            length = 2;
        } else if (b >= 0xE0 && b < 0xF0 && i + 2 < size && continuation(data + i + 1) &&
                   continuation(data + i + 2)) {
            c = (b & 0x0Fu) << 12 | (data[i + 1] & 0x3Fu) << 6 | (data[i + 2] & 0x3Fu);
            length = 3;
        } else if (b >= 0xF0 && b < 0xF5 && i + 3 < size && continuation(data + i + 1) &&
                   continuation(data + i + 2) && continuation(data + i + 3)) {
            c = ((b & 0x07u) << 18 | (data[i + 1] & 0x3Fu) << 12 | (data[i + 2] & 0x3Fu) << 6 |
                 (data[i + 3] & 0x3Fu)) %
                0x110000u;
            length = 4;
        }
        i += length;
        if (c == 0) break;
        if (c >= 0x10000) {
            c -= 0x10000;
            units.push_back(static_cast<UniChar>(0xD800 + (c >> 10)));
            units.push_back(static_cast<UniChar>(0xDC00 + (c & 0x3FF)));
        } else {
            units.push_back(static_cast<UniChar>(c));
        }
    }
    return units;
}

Text allocate(std::size_t size, bool odd) {
    Text text;
    text.block = std::make_unique<unsigned char[]>(size + (odd ? 1 : 0));  // zeroed
    text.start = text.block.get() + (odd ? 1 : 0);
    text.size = size;
    text.odd = odd;
    return text;
}

// The text's length as the parser will count it, decided by the same
// detection the parser makes.
int32_t measure(const unsigned char *start) {
    const int32_t encoding = IdentifyCharacterEncoding(start, start[0] == 0 ? 1 : 2);
    if (encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_SWAPPED) {
        int32_t units = 0;
        while (start[2 * units] != 0 || start[2 * units + 1] != 0) ++units;
        return units;
    }
    const int32_t decoded = vrkUTF8StrLen(reinterpret_cast<const char *>(start));
    return decoded >= 0 ? decoded
                        : static_cast<int32_t>(std::strlen(reinterpret_cast<const char *>(start)));
}

}  // namespace

Text Text::copy() const {
    Text other = allocate(size, odd);
    std::memcpy(other.start, start, size);
    other.units = units;
    return other;
}

Text makeText(uint8_t mode, const uint8_t *data, std::size_t size) {
    mode %= kModeCount;
    Text text;
    if (mode == kUtf8 || mode == kUtf8Odd) {
        const auto *zero = static_cast<const uint8_t *>(std::memchr(data, 0, size));
        const std::size_t n = zero != nullptr ? static_cast<std::size_t>(zero - data) : size;
        const unsigned char head[2] = {n > 0 ? data[0] : uint8_t{0}, n > 1 ? data[1] : uint8_t{0}};
        const int32_t encoding = IdentifyCharacterEncoding(head, n == 0 ? 1 : 2);
        // Bytes the detection takes for UTF-16 need a whole zero unit.
        const bool wide = encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_SWAPPED;
        text = allocate(wide ? n + 2 + (n & 1) : n + 1, mode == kUtf8Odd);
        std::memcpy(text.start, data, n);
    } else {
        std::vector<UniChar> units = decodeLeniently(data, size);
        if (mode == kNativeMark || mode == kSwappedMark || mode == kNativeMarkOdd)
            units.insert(units.begin(), 0xFEFF);
        const bool swap = mode == kSwapped || mode == kSwappedMark || mode == kSwappedOdd;
        text = allocate((units.size() + 1) * sizeof(UniChar),
                        mode == kNativeMarkOdd || mode == kSwappedOdd);
        for (std::size_t i = 0; i < units.size(); ++i) {
            const UniChar unit =
                swap ? static_cast<UniChar>(units[i] << 8 | units[i] >> 8) : units[i];
            std::memcpy(text.start + 2 * i, &unit, sizeof unit);
        }
    }
    text.units = measure(text.start);
    return text;
}

Text fromInput(const uint8_t *data, std::size_t size) {
    if (size > 0 && data[0] < kModeCount) return makeText(data[0], data + 1, size - 1);
    return makeText(kUtf8, data, size);
}

std::optional<Generated> generatedRequest(const uint8_t *data, std::size_t size) {
    if (size < 2 || data[0] != 'G') return std::nullopt;
    Generated request{data[1] == 0 ? 1u : data[1], 0};
    for (std::size_t i = 2; i < size && i < 10; ++i)
        request.seed |= uint64_t{data[i]} << (8 * (i - 2));
    return request;
}

// Swapped UTF-16 without a mark begins with a zero byte, which ends the text.
constexpr uint8_t kGeneratedModes[] = {kUtf8,        kNative,        kNativeMark,
                                       kSwappedMark, kNativeMarkOdd, kUtf8Odd};

uint8_t generatedMode(uint64_t seed) { return kGeneratedModes[seed % std::size(kGeneratedModes)]; }

std::string generatedDocument(uint64_t seed) {
    const uint8_t mode = generatedMode(seed);
    const bool utf16 = mode != kUtf8 && mode != kUtf8Odd;
    const std::u16string text =
        vrktest::DocumentGenerator(seed, utf16 && seed % 4 == 1).document(utf16);
    return (!utf16 && seed % 16 < 5 ? "\xEF\xBB\xBF" : "") + vrkxml::toUtf8(text);
}

Text generatedText(uint64_t seed) {
    const std::string bytes = generatedDocument(seed);
    return makeText(generatedMode(seed), reinterpret_cast<const uint8_t *>(bytes.data()),
                    bytes.size());
}

bool isParseCode(int32_t code) {
    switch (code) {
    case ERR_OUT_OF_MEMORY:
    case ERR_XMLDECL_VERSION:
    case ERR_BAD_ENCODING:
    case ERR_XMLDECL_END:
    case ERR_UNTERMINATED:
    case ERR_COMMENT_HYPHENS:
    case ERR_CLOSING_QUOTE:
    case ERR_ENCODING_DECL:
    case ERR_NO_ROOT_ELEMENT:
    case ERR_END_TAG:
    case ERR_CHAR_REF:
    case ERR_ATTVALUE_END:
    case ERR_NSATT_NAME:
    case ERR_EQ_MISSING:
    case ERR_OPENING_QUOTE:
    case ERR_DECL_VALUE:
    case ERR_TAG_END:
    case ERR_ETAG_NAME:
    case ERR_UNDECLARED_PREFIX:
    case ERR_BAD_PI:
    case ERR_DUPLICATE_ATTRIBUTE:
    case ERR_TEXT_TOO_LONG: return true;
    default: return false;
    }
}

void checkFailure(const vrkParseError &error, const Text &text) {
    if (!isParseCode(error.code)) {
        std::fprintf(stderr, "parse failed with code %d\n", error.code);
        fail("undocumented parse error code");
    }
    if (error.offset < 0 || error.offset > text.units) {
        std::fprintf(stderr, "offset %d, text of %d units\n", error.offset, text.units);
        fail("parse error offset outside the text");
    }
    if (error.file == nullptr) fail("parse error record names no reporting site");
}

void fail(const char *what) {
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

}  // namespace fuzz
