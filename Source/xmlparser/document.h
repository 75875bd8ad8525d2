// The document production with the text's length already known.
#pragma once

#include "vrkxml.h"

namespace vrk {

// Produce_document for a text of `length` units, which the entry has
// measured already: the production need not walk the text to find its end.
int32_t produceDocument(ProduceContext *context, int32_t length);

}  // namespace vrk
