// Measuring texts in 64 bits, so that no length can overflow, and the
// longest text the library addresses.
#pragma once

#include <cstdint>

#include "vrkxml.h"

namespace vrk {

// Offsets and lengths are 32-bit: the terminator's offset must fit.
constexpr int64_t kMaxTextUnits = INT32_MAX;

// Units ahead of the first zero unit, at most `limit` of them.
int64_t unitCount(const UniChar *s, int64_t limit = INT64_MAX);

// Units the zero-terminated UTF-8 text decodes to; -1 when it is malformed.
int64_t utf8UnitCount(const char *s);

// Decodes a text that utf8UnitCount measured as `units` long into a new
// string; null when memory runs out.
UniChar *decodeMeasuredUtf8(const char *s, int64_t units);

// The decoded copy of the zero-terminated UTF-8 text that a parse reads,
// its first allocation.  *units becomes the text's length in units, or -1
// when the text is malformed.  Null when there is no copy: the text is
// malformed, longer than kMaxTextUnits units (measured only, nothing
// allocated), or memory ran out.
UniChar *decodeUtf8Text(const char *s, int64_t *units);

}  // namespace vrk
