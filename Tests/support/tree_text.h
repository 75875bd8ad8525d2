// A compact text form of a tree, so that a test can state a whole expected
// tree in one line:
//   element    {namespaceURI}name(attributes)[children]   (parts only when present)
//   attribute  {namespaceURI}name="value"                 (space-separated)
//   text       "value"      CDATA section  C"value"      PI  ?target"data"
//   document   #document[children]
// Children are comma-separated; text is UTF-8 with " and \ escaped.
#pragma once

#include <string>

#include "vrkxml.h"

namespace vrktest {

std::string describe(const vrkNode *node);

// prefix|localName|namespaceURI; of every element and attribute of the
// subtree in document order (describe() shows only namespaceURI).
std::string namespaceFields(const vrkNode *node);

// UTF-8 of a library string, for messages; "(null)" for null.
std::string utf8(const UniChar *s);

}  // namespace vrktest
