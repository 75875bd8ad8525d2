// The scratch buffer into which UTF-8 pieces are converted.
#pragma once

#include <cstdint>

#include "unistring/text_limits.h"
#include "unistring/utf8_fast.h"
#include "vrkxml.h"

namespace vrk {

constexpr int32_t kSerializeBufferInitialCapacity = 64;

// The slow path of SerializeBuffer_convert: measures the piece, grows the
// block when it is too small, then encodes.
int32_t SerializeBuffer_convertMeasured(SerializeBuffer *buffer, const UniChar *string, int64_t units);

// Converts the first `count` units of string, which must all be there and
// none zero, or the whole string for a negative count, into the buffer with a
// terminating zero byte.  Grows the block to exactly the needed size when
// it is too small (never shrinks).  Returns the byte count, or -1 when the
// block cannot grow, the buffer then keeping its old block and capacity.
// Inline: the serializer calls it for every piece, most of a few units.
inline int32_t SerializeBuffer_convert(SerializeBuffer *buffer, const UniChar *string, int32_t count) {
    const int64_t units = count >= 0 ? count : unitCount(string);
    // At most three bytes a unit: a piece that surely fits is encoded
    // without measuring it first.
    if (units * 3 <= buffer->capacity) {
        return static_cast<int32_t>(encodeRun(string, units, buffer->data) - buffer->data);
    }
    return SerializeBuffer_convertMeasured(buffer, string, units);
}

}  // namespace vrk
