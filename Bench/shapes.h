// Generators of the benchmark's document shapes.  Each returns a UTF-8
// document of at least `targetBytes` bytes (a little more: the last unit of
// content is finished and the open elements are closed), built by a
// fixed-seed generator.
#ifndef VRKXML_BENCH_SHAPES_H
#define VRKXML_BENCH_SHAPES_H

#include <cstddef>
#include <string>

namespace vrkperf {

// Nested data records: attributes on most elements, short text.  With
// `encodingName` the declaration names that encoding instead of UTF-8.
std::string recordsDocument(std::size_t targetBytes, const char *encodingName = "UTF-8");
// Elements of a dozen or more short attributes each, little text.
std::string attributesDocument(std::size_t targetBytes);
// Paragraphs of prose with inline markup, entity and character references.
std::string proseDocument(std::size_t targetBytes);
// Chains of elements nested 90 levels deep, a few words at every level.
std::string deepDocument(std::size_t targetBytes);
// Records whose names, values and text are mostly accented Latin, Greek,
// Japanese, Chinese and Korean.
std::string nonAsciiDocument(std::size_t targetBytes);

// UTF-8 to UTF-16 in the machine's byte order, with a byte order mark in
// front; returned as bytes.
std::string toNativeUtf16(const std::string &utf8);

}  // namespace vrkperf

#endif
