// libvrkxml: an optional C++17 layer over the C interface of vrkxml.h.
//
// Everything here is inline and lives in namespace vrkxml; the library
// exports nothing for it and the C interface is unchanged.  What it adds,
// each part in a header of its own under vrkxml/:
//   text.hpp      std::u16string_view access to the strings of a node, and
//                 standard UTF-8 to and from them (toUtf8, fromUtf8);
//   result.hpp    Result<T> and Error: the code, plain words, and the line
//                 and column in the caller's own text;
//   messages.hpp  every code's name and meaning, and hints for common causes;
//   tree.hpp      Document, an owning handle of a tree; children(),
//                 attributes() and walkDescendants() to read one;
//   input.hpp     bytes and units with a length, checked and decoded;
//                 readFile() and readStream();
//   parse.hpp     parse() of UTF-8 or UTF-16 bytes or of units, with a
//                 length, characters beyond U+FFFF included; strict checks
//                 on request (strict.hpp);
//   write.hpp     serialize() in standard UTF-8 or in UTF-16; indent();
//   edit.hpp      owning Node handles, attributes by name, elements by
//                 local name and namespace, a safe move.
// Nothing here throws: failures, exhausted memory included, are values.
// (toUtf8 and fromUtf8 return plain strings and may throw std::bad_alloc,
// as the standard containers do; encodeUtf8 reports instead.)
#ifndef VRKXML_HPP
#define VRKXML_HPP

#include "vrkxml.h"
#include "vrkxml/edit.hpp"
#include "vrkxml/input.hpp"
#include "vrkxml/messages.hpp"
#include "vrkxml/parse.hpp"
#include "vrkxml/result.hpp"
#include "vrkxml/strict.hpp"
#include "vrkxml/text.hpp"
#include "vrkxml/tree.hpp"
#include "vrkxml/write.hpp"

#endif  // VRKXML_HPP
