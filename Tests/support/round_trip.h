// The round-trip oracle: a tree written in either encoding and parsed again
// is the same tree, and writing it again gives the same bytes.
#pragma once

#include <string>

#include "vrkxml.h"

namespace vrktest {

// Joins the texts of `document` (a reference is a text node of its own and
// comes back as plain text), writes it as UTF-16 and UTF-8 and parses what
// was written.  Each tree must read as the first (namespace names
// resolved), and writing it must give the bytes read.  A tree holding
// surrogates or U+FFFF cannot come back from UTF-8 (each unit is written on
// its own, which the decoder refuses); one with a processing instruction
// "xml" with data cannot come back at all.  Returns what differed, or "".
std::string roundTripFault(vrkNode *document);

}  // namespace vrktest
