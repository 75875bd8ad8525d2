// Telling the encoding of a text from its first two bytes.
#include <bit>
#include <cctype>

#include "unistring/export.h"
#include "vrkxml.h"

namespace {

// UTF-16 in a given byte order is "ours" on a machine of that order.
int32_t utf16(bool littleEndianText) {
    const bool littleEndianMachine = std::endian::native == std::endian::little;
    return littleEndianText == littleEndianMachine ? ENCODING_UTF16 : ENCODING_UTF16_SWAPPED;
}

}  // namespace

VRK_EXPORT int32_t IdentifyCharacterEncoding(const void *bytes, int32_t length) {
    if (length < 2) return ENCODING_UNKNOWN;
    const auto *b = static_cast<const unsigned char *>(bytes);
    const unsigned char b0 = b[0];
    const unsigned char b1 = b[1];
    if (b0 == 0xFE && b1 == 0xFF) return utf16(false);
    if (b0 == 0xFF && b1 == 0xFE) return utf16(true);
    if (b0 == 0x00 && b1 == 0x3C) return utf16(false);
    if (b0 == 0x3C && b1 == 0x00) return utf16(true);
    // The system's white-space class, wider than XML's: 0x0B and 0x0C count.
    if (b0 != 0x3C && std::isspace(b0) == 0) return ENCODING_UTF8;
    if (b1 == 0x00) return utf16(true);
    return ENCODING_UTF8;
}
