// UTF-8 encoding of runs whose length is known, for the serializer: eight
// units at a time where they are ASCII.
#pragma once

#include <cstdint>

#include "vrkxml.h"

namespace vrk {

// UTF-8 bytes of exactly `units` units, none of them zero.
int64_t utf8BytesOfRun(const UniChar *s, int64_t units);

// Writes the UTF-8 of exactly `units` units, none of them zero, and a
// terminating zero byte; dest has room for utf8BytesOfRun + 1 bytes.
void encodeRun(const UniChar *s, int64_t units, char *dest);

}  // namespace vrk
