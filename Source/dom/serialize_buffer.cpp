#include "dom/serialize_buffer.h"

#include <cstdlib>

namespace vrk {

int32_t SerializeBuffer_convertMeasured(SerializeBuffer *buffer, const UniChar *string, int64_t units) {
    const int64_t measured = utf8BytesOfRun(string, units);
    // A piece whose UTF-8 form exceeds the 32-bit range cannot be held: it
    // fails like a growth that memory refused.
    if (measured > INT32_MAX) return -1;
    const auto bytes = static_cast<int32_t>(measured);
    if (buffer->capacity < bytes) {
        auto *grown = static_cast<char *>(std::realloc(buffer->data, static_cast<std::size_t>(bytes) + 1));
        if (grown == nullptr) return -1;
        buffer->data = grown;
        buffer->capacity = bytes;
    }
    encodeRun(string, units, buffer->data);
    return bytes;
}

}  // namespace vrk
