// The one text form of a tree, for tests to state a whole expected tree in
// one line and for the round-trip oracle to compare two trees:
//   element    {namespaceURI}name(attributes)[children]   (parts only when present)
//   attribute  {namespaceURI}name="value"                 (space-separated)
//   text       "value"      CDATA section  C"value"      PI  ?target"data"
//   document   #document[children]
// Children are comma-separated; text is UTF-8 with " and \ escaped.  A
// document, text or CDATA node named other than #document, #text or
// #cdata-section shows the name behind a !, as in !(null)"value".
#pragma once

#include <string>

#include "vrkxml.h"

namespace vrktest {

// A namespace name as the tree holds it (the raw text of its declaration),
// or with its references resolved: the writer escapes a declaration's
// value, so the same name may come back spelled otherwise.
enum class Names { raw, resolved };

std::string describe(const vrkNode *node, Names names = Names::raw);

// prefix|localName|namespaceURI; of every element and attribute of the
// subtree in document order (describe() shows only namespaceURI).
std::string namespaceFields(const vrkNode *node, Names names = Names::raw);

// UTF-8 of a library string, each half of a surrogate pair on its own as
// the library writes it; "(null)" for null.
std::string utf8(const UniChar *s);

}  // namespace vrktest
