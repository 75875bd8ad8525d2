// The names of the library's error codes, for messages.
#pragma once

#include <cstdint>

namespace vrktool {

// "ERR_END_TAG" for 14; "UNKNOWN_ERROR" for a number the library never records.
const char *errorName(int32_t code);

}  // namespace vrktool
