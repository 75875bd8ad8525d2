#include "dom/serialize_buffer.h"

#include <cstdlib>

#include "unistring/export.h"
#include "unistring/text_limits.h"
#include "unistring/utf8_fast.h"

namespace vrk {

int32_t SerializeBuffer_convert(SerializeBuffer *buffer, const UniChar *string, int32_t count) {
    // The serializer asks for whole strings, or for runs that it has measured
    // within a string: the units asked for are all there and none is zero.
    const int64_t units = count >= 0 ? count : unitCount(string);
    // At most three bytes a unit: a piece that surely fits is encoded
    // without measuring it first.
    if (units <= buffer->capacity / 3) {
        return static_cast<int32_t>(encodeRun(string, units, buffer->data) - buffer->data);
    }
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
