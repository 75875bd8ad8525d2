// Parse, then the round-trip oracle of the tests (Tests/support/round_trip.h):
// the tree written in both encodings and parsed again must agree with the
// first, and writing it again must give the same bytes.  Inputs as in
// fuzz_parse, or "G" requests of generated documents (fuzz_support.h).
#include <cstdio>

#include "fuzz_support.h"
#include "support/round_trip.h"

namespace {

// A generated document must parse; any other input may fail.
void check(const fuzz::Text &text, bool generated) {
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(text.start, &error);
    if (document == nullptr && generated) {
        std::fprintf(stderr, "code %d at %d\n", error.code, error.offset);
        fuzz::fail("a generated document does not parse");
    }
    if (document == nullptr) return;
    const std::string fault = vrktest::roundTripFault(document);
    vrkDOM_destroyNode(document, 1);
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        fuzz::fail("a tree changed by writing and reading it back");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (const auto request = fuzz::generatedRequest(data, size)) {
        for (unsigned k = 0; k < request->count; ++k)
            check(fuzz::generatedText(request->seed + k), true);
        return 0;
    }
    check(fuzz::fromInput(data, size), false);
    return 0;
}
