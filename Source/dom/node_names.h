// The three node names that live in static storage, shared by all nodes of
// their kind and never freed.
#pragma once

#include "vrkxml.h"

namespace vrk {

extern const UniChar kTextNodeName[];          // "#text"
extern const UniChar kCDATASectionNodeName[];  // "#cdata-section"
extern const UniChar kDocumentNodeName[];      // "#document"

// Node records point at these through their (non-const) name field; nothing
// in the library writes through a node's name of these kinds.
inline UniChar *staticName(const UniChar *name) { return const_cast<UniChar *>(name); }

}  // namespace vrk
