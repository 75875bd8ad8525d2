// Parsing test documents in the encodings the library reads.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vrkxml.h"

namespace vrktest {

struct DocumentDeleter {
    void operator()(vrkNode *document) const { vrkDOM_destroyNode(document, 1); }
};
using DocumentPtr = std::unique_ptr<vrkNode, DocumentDeleter>;

// The outcome of one parse.  `error` is filled with 0x55 bytes ahead of the
// call, so that a test can tell a record the parse left alone.
struct Parsed {
    DocumentPtr document;
    vrkParseError error;
};

enum class Utf16Form { Native, Swapped };

struct Utf16Options {
    Utf16Form form = Utf16Form::Native;
    bool byteOrderMark = false;
    bool oddAddress = false;
};

// Parses UTF-8 bytes from an exactly sized heap buffer (text + one zero).
Parsed parseUtf8(std::string_view text);

// Parses the units of text as UTF-16, in an exactly sized heap buffer (text,
// an optional mark ahead of it, and a zero unit), at an odd address if asked.
Parsed parseUtf16(std::u16string_view text, Utf16Options options = {});

}  // namespace vrktest
