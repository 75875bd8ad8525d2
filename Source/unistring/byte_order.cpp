// Byte-order helpers offered to callers for UTF-16 text.
#include "unistring/export.h"
#include "unistring/unit_access.h"

VRK_EXPORT int32_t ShouldSwapUTF16(const void *p) {
    const auto *bytes = static_cast<const unsigned char *>(p);
    return bytes[0] == 0xFE && bytes[1] == 0xFF ? 1 : 0;
}

VRK_EXPORT void SwapUTF16(UniChar *s) {
    // A unit is zero in either byte order, so the end is found the same way.
    for (UniChar unit; (unit = vrk::loadUnit(s)) != 0; ++s) {
        vrk::storeUnit(s, static_cast<UniChar>((unit << 8) | (unit >> 8)));
    }
}
