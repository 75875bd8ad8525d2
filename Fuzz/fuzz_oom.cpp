// The parser under exhausted memory.  The first four bytes choose which
// allocation of the parse is refused; the rest is a fuzz_parse input.  A
// refused allocation must end the parse with ERR_OUT_OF_MEMORY (unless an
// error came first) and nothing left allocated; one that was never reached
// must change nothing.
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_set>

#include "fuzz_support.h"

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
void __real_free(void *block);
}

namespace {

// Per thread, so that libFuzzer's own threads are never counted.
struct Counter {
    bool armed;
    int64_t allocations;  // asked for while armed
    int64_t refuseAt;     // the allocation to refuse, 0 for none
    bool refused;
};
thread_local Counter counter{};

// Blocks handed out while armed and not yet freed.  The set allocates
// through operator new, which the wrappers do not see.
std::unordered_set<void *> &live() {
    static auto *blocks = new std::unordered_set<void *>;
    return *blocks;
}

bool refuseNext() {
    if (!counter.armed) return false;
    if (++counter.allocations != counter.refuseAt) return false;
    counter.refused = true;
    return true;
}

void *track(void *block) {
    if (block != nullptr && counter.armed) live().insert(block);
    return block;
}

struct Outcome {
    bool parsed;
    vrkParseError error;
    std::string tree;  // the document written as UTF-16
};

Outcome parse(const fuzz::Text &original, int64_t refuseAt) {
    fuzz::Text text = original.copy();  // swapped UTF-16 is changed in place
    Outcome outcome{false, {}, {}};
    counter = Counter{true, 0, refuseAt, false};
    vrkNode *document = vrkDOM_parse(text.start, &outcome.error);
    counter.armed = false;
    if (document != nullptr) {
        outcome.parsed = true;
        outcome.tree = fuzz::serialize(document, ENCODING_UTF16);
        vrkDOM_destroyNode(document, 1);
    } else {
        fuzz::checkFailure(outcome.error, original);
    }
    if (!live().empty()) fuzz::fail("blocks left allocated after the parse");
    return outcome;
}

}  // namespace

extern "C" {

void *__wrap_malloc(std::size_t size) { return refuseNext() ? nullptr : track(__real_malloc(size)); }

void *__wrap_calloc(std::size_t count, std::size_t size) {
    return refuseNext() ? nullptr : track(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, std::size_t size) {
    if (refuseNext()) return nullptr;
    void *moved = __real_realloc(block, size);
    if (moved != nullptr && block != nullptr) live().erase(block);
    return track(moved);
}

void __wrap_free(void *block) {
    if (block != nullptr) live().erase(block);
    __real_free(block);
}

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (size < 4) return 0;
    uint32_t choice = 0;
    std::memcpy(&choice, data, sizeof choice);
    fuzz::Text text = fuzz::fromInput(data + 4, size - 4);

    const Outcome reference = parse(text, 0);
    const int64_t allocations = counter.allocations;
    // One past the last allocation is a run in which none is refused.
    const int64_t refuseAt = 1 + static_cast<int64_t>(choice) % (allocations + 1);
    const Outcome outcome = parse(text, refuseAt);

    if (counter.refused) {
        const bool utf8 = IdentifyCharacterEncoding(text.start, text.start[0] == 0 ? 1 : 2) == ENCODING_UTF8;
        const bool copyRefused = utf8 && refuseAt == 1 && outcome.error.code == ERR_ENCODING_DECL;
        // An error found before the refusal stands: the first failure survives.
        const bool earlier = !reference.parsed && outcome.error.code == reference.error.code &&
                             outcome.error.offset == reference.error.offset;
        if (outcome.parsed || (outcome.error.code != ERR_OUT_OF_MEMORY && !copyRefused && !earlier)) {
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
