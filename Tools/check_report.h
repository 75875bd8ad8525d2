// What `vrkxml check` says about one file: in words for people, or as one
// JSON object a line for editors and CI.
#pragma once

#include <cstdio>
#include <string>

#include "vrkxml.hpp"

namespace vrktool {

// "FILE: accepted by libvrkxml" on out.
void reportAccepted(std::FILE *out, const std::string &file, bool strict);

// "FILE:LINE:COLUMN: error: NAME (code N): message", the hint, and the line
// with a caret under the column, on out; a failure without a place (a file
// that cannot be read) as "vrkxml: message".
void reportError(std::FILE *out, const std::string &file, const vrkxml::Error &error);

// {"file":..., "accepted":..., "line":..., "column":..., "offset":...,
//  "code":..., "name":..., "message":..., "hint":...}; null where there is
// nothing to say (error null for an accepted file).
std::string jsonReport(const std::string &file, const vrkxml::Error *error);

}  // namespace vrktool
