#include "dom/serialize_buffer.h"

#include <cstdlib>

#include "unistring/export.h"

namespace vrk {

int32_t SerializeBuffer_convert(SerializeBuffer *buffer, const UniChar *string, int32_t count) {
    // A piece whose UTF-8 form exceeds the 32-bit range cannot be held: it
    // fails like a growth that memory refused.
    const int32_t bytes = count >= 0 ? vrkUniCharNToUTF8Len(string, count) : vrkUniCharToUTF8Len(string);
    if (bytes < 0) return -1;
    if (buffer->capacity < bytes) {
        auto *grown = static_cast<char *>(std::realloc(buffer->data, static_cast<std::size_t>(bytes) + 1));
        if (grown == nullptr) return -1;
        buffer->data = grown;
        buffer->capacity = bytes;
    }
    if (count >= 0) {
        vrkUniCharStringNToUTF8(string, count, buffer->data);
    } else {
        vrkUniCharStringToUTF8(string, buffer->data);
    }
    return bytes;
}

}  // namespace vrk
