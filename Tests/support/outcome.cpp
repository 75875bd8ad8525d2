#include "support/outcome.h"

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"

namespace vrktest {

std::string errorAt(int32_t code, int32_t offset) {
    return "error " + std::to_string(code) + " at " + std::to_string(offset);
}

std::string outcome(std::string_view text) {
    const int64_t liveBefore = liveAllocations();
    std::string out;
    {
        Parsed parsed = parseUtf8(text);
        out = parsed.document ? describe(parsed.document.get())
                              : errorAt(parsed.error.code, parsed.error.offset);
    }
    if (liveAllocations() != liveBefore) out += " (leaked)";
    return out;
}

}  // namespace vrktest
