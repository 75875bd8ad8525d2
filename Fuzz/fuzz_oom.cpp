// The parser under exhausted memory.  The first four bytes choose which
// allocation of the parse is refused; the rest is a fuzz_parse input.  A
// refused allocation must end the parse with ERR_OUT_OF_MEMORY (unless an
// error came first) and nothing left allocated; one that was never reached
// must change nothing.
#include <cstdio>
#include <cstring>
#include <string>

#include "fuzz_support.h"
#include "support/alloc_wrap.h"
#include "support/written.h"

namespace {

struct Outcome {
    bool parsed;
    vrkParseError error;
    std::string tree;     // the document written as UTF-16
    int64_t allocations;  // asked for by the parse
    bool refused;         // whether the one to refuse was asked for
};

// Parses a copy of `original` with its `refuseAt`th allocation refused, 0
// for none.  The wrappers count per thread, so the fuzzer's own threads are
// never counted or refused.
Outcome parse(const fuzz::Text &original, int64_t refuseAt) {
    fuzz::Text text = original.copy();  // swapped UTF-16 is changed in place
    Outcome outcome{false, {}, {}, 0, false};
    const int64_t liveBefore = vrktest::liveAllocations();
    if (refuseAt != 0) vrktest::refuseAllocation(refuseAt);
    vrkNode *document = nullptr;
    outcome.allocations =
        vrktest::countAllocations([&] { document = vrkDOM_parse(text.start, &outcome.error); });
    outcome.refused = vrktest::allocationRefused();
    vrktest::stopRefusing();
    if (document != nullptr) {
        outcome.parsed = true;
        outcome.tree = vrktest::written(document, ENCODING_UTF16);
        vrkDOM_destroyNode(document, 1);
    } else {
        fuzz::checkFailure(outcome.error, original);
    }
    if (vrktest::liveAllocations() != liveBefore)
        fuzz::fail("blocks left allocated after the parse");
    return outcome;
}

}  // namespace

extern "C" {

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (size < 4) return 0;
    uint32_t choice = 0;
    std::memcpy(&choice, data, sizeof choice);
    fuzz::Text text = fuzz::fromInput(data + 4, size - 4);

    const Outcome reference = parse(text, 0);
    const int64_t allocations = reference.allocations;
    // One past the last allocation is a run in which none is refused.
    const int64_t refuseAt = 1 + static_cast<int64_t>(choice) % (allocations + 1);
    const Outcome outcome = parse(text, refuseAt);

    if (outcome.refused) {
        const bool utf8 =
            IdentifyCharacterEncoding(text.start, text.start[0] == 0 ? 1 : 2) == ENCODING_UTF8;
        const bool copyRefused = utf8 && refuseAt == 1 && outcome.error.code == ERR_ENCODING_DECL;
        // An error found before the refusal stands: the first failure survives.
        const bool earlier = !reference.parsed && outcome.error.code == reference.error.code &&
                             outcome.error.offset == reference.error.offset;
        if (outcome.parsed ||
            (outcome.error.code != ERR_OUT_OF_MEMORY && !copyRefused && !earlier)) {
            std::fprintf(stderr, "allocation %lld of %lld refused: parsed %d, code %d\n",
                         static_cast<long long>(refuseAt), static_cast<long long>(allocations),
                         outcome.parsed ? 1 : 0, outcome.error.code);
            fuzz::fail("a refused allocation did not end the parse with ERR_OUT_OF_MEMORY");
        }
    } else if (outcome.parsed != reference.parsed || outcome.tree != reference.tree ||
               (!outcome.parsed && (outcome.error.code != reference.error.code ||
                                    outcome.error.offset != reference.error.offset))) {
        fuzz::fail("an allocation that was never refused changed the outcome");
    }
    return 0;
}

}  // extern "C"
