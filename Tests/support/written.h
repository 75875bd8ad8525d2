// A tree as vrkDOM_serialize writes it, collected into a string.
#pragma once

#include <cstdint>
#include <string>

#include "vrkxml.h"

namespace vrktest {

// The whole output as bytes; the serializer's result goes to *result.
std::string written(const vrkNode *node, int32_t encoding, int32_t *result = nullptr);

}  // namespace vrktest
