// The suite's canonical form of a parsed document, as UTF-8: the root and
// the processing instructions around it; attributes sorted by name; text
// and attribute values with & < > " tab, line feed and carriage return
// written as references; a processing instruction as "<?target data?>"
// with the blank always there.
#pragma once

#include <string>

#include "vrkxml.h"

namespace conformance {

std::string canonicalForm(const vrkNode *document);

}  // namespace conformance
