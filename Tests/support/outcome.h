// One line for what a parse gives, so that tables of documents can state
// their expected tree or error side by side.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vrktest {

// "error CODE at OFFSET".
std::string errorAt(int32_t code, int32_t offset);

// The tree of the UTF-8 text as describe() writes it, or errorAt() of the
// failure; " (leaked)" is appended when the parse left a block behind.
std::string outcome(std::string_view text);

// A row of such a table.
struct Case {
    const char *text;
    std::string expected;
};

}  // namespace vrktest
