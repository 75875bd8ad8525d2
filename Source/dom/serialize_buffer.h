// The scratch buffer into which UTF-8 pieces are converted.
#pragma once

#include "vrkxml.h"

namespace vrk {

constexpr int32_t kSerializeBufferInitialCapacity = 64;

// Converts the first `count` units of string, which must all be there and
// none zero, or the whole string for a negative count, into the buffer with a
// terminating zero byte.  Grows the block to exactly the needed size when
// it is too small (never shrinks).  Returns the byte count, or -1 when the
// block cannot grow, the buffer then keeping its old block and capacity.
int32_t SerializeBuffer_convert(SerializeBuffer *buffer, const UniChar *string, int32_t count);

}  // namespace vrk
