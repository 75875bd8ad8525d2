// Shared pieces of the fuzz targets: turning fuzz bytes into a parse input,
// generated documents on request, and checking a parse failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vrkxml.h"

namespace fuzz {

// How the bytes after the mode byte become the text handed to the parser.
enum Mode : uint8_t {
    kUtf8,           // the bytes as they are, up to the first zero byte
    kNative,         // decoded leniently into units in the machine's order
    kNativeMark,     // the same behind a byte order mark
    kSwapped,        // units in the opposite order
    kSwappedMark,    // the same behind a byte order mark
    kNativeMarkOdd,  // native with a mark, starting at an odd address
    kSwappedOdd,     // swapped without a mark, at an odd address
    kUtf8Odd,        // UTF-8 at an odd address
    kModeCount
};

// A parse input in a heap block of exactly its size (plus one leading byte
// for the odd-address modes), so that any read past the terminator is seen.
struct Text {
    std::unique_ptr<unsigned char[]> block;
    unsigned char *start = nullptr;
    std::size_t size = 0;  // bytes from start, terminator included
    int32_t units = 0;     // length of the text as the parser counts it
    bool odd = false;

    Text copy() const;
};

Text makeText(uint8_t mode, const uint8_t *data, std::size_t size);

// A fuzz input as a text: a first byte below kModeCount is the mode, any
// other begins a UTF-8 text, so that plain XML files are inputs as they are.
Text fromInput(const uint8_t *data, std::size_t size);

// An input "G", N, SEED (up to eight bytes, little-endian) asks for N
// documents of the tests' generator (N = 0 counts as 1), from SEED on.
struct Generated {
    unsigned count;
    uint64_t seed;
};
std::optional<Generated> generatedRequest(const uint8_t *data, std::size_t size);

// The generated document of `seed`, as UTF-8 when that is all it can be.
std::string generatedDocument(uint64_t seed);

// That document, presented in the mode `seed` picks (a UTF-8 text now and
// then behind a byte order mark; characters beyond 16 bits in UTF-16 only).
Text generatedText(uint64_t seed);

// Whether a parse may report this code at all.
bool isParseCode(int32_t code);

// Checks the record of a failed parse of `text`; aborts on nonsense.
void checkFailure(const vrkParseError &error, const Text &text);

[[noreturn]] void fail(const char *what);

}  // namespace fuzz
