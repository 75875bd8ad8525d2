// Reading a document for the tool, and finding where an offset lies in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrktool {

// The bytes of a file ("-" for standard input), followed by four zero bytes:
// enough to terminate the text in every encoding the library may detect.
bool readInput(const std::string &path, std::vector<char> &bytes);

// A position for people: line and column from 1, and the line's text as
// UTF-8 with a caret line under the column.
struct Position {
    int64_t line = 1;
    int64_t column = 1;
    std::string lineText;
    std::string caret;
};

// Locates a parse error offset (16-bit units of the decoded text) in the
// bytes the parser was given.  Call it after the parse: a byte-swapped
// UTF-16 text has been turned into the machine's order by then.
Position locate(const std::vector<char> &bytes, int32_t offset);

}  // namespace vrktool
