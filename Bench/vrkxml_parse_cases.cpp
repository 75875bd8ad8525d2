// Parsing and releasing with this library: together, and each alone with
// the other outside the timing.
#include "alloc_tracking.h"
#include "bench_case.h"
#include "cases.h"
#include "parse_facts.h"

namespace vrkperf {
namespace {

vrkNode *parse(Document &document) {
    vrkParseError error{};
    return vrkDOM_parse(document.data(), &error);
}

// False (after SkipWithError) when the document does not parse; else the
// facts are measured and one untimed parse has warmed the heap.
bool ready(benchmark::State &state, Document &document) {
    const ParseFacts &facts = parseFacts(document);
    if (!facts.failure.empty()) {
        state.SkipWithError(facts.failure.c_str());
        return false;
    }
    vrkDOM_destroyNode(parse(document), 1);
    return true;
}

void parseAndDestroy(benchmark::State &state, Document &document) {
    if (!ready(state, document)) return;
    for (auto _ : state) {
        vrkNode *tree = parse(document);
        benchmark::DoNotOptimize(tree);
        vrkDOM_destroyNode(tree, 1);
    }
    reportInput(state, document);
    setParseCounters(state, document);
}

// Parse and release with the allocator taken out: the library's blocks come
// from an arena (bump pointer, frees do nothing).  What remains is our own
// work (decoding, scanning, copying, linking), the part that the floor does
// not contain.
void ownWork(benchmark::State &state, Document &document) {
    if (!ready(state, document)) return;
    // Twice the peak of a parse with the C library's allocator, plus the
    // 16-byte header and rounding of each arena block.
    const ParseFacts &facts = parseFacts(document);
    const std::size_t bytes = 2 * static_cast<std::size_t>(facts.peakBytes) + 32 * facts.allocations + (1 << 20);
    Arena arena(bytes);
    for (auto _ : state) {
        arena.reset();
        vrkNode *tree = parse(document);
        benchmark::DoNotOptimize(tree);
        vrkDOM_destroyNode(tree, 1);
    }
    if (!arena.sufficed()) state.SkipWithError("arena too small");
    reportInput(state, document);
}

void parseOnly(benchmark::State &state, Document &document) {
    if (!ready(state, document)) return;
    for (auto _ : state) {
        vrkNode *tree = parse(document);
        benchmark::DoNotOptimize(tree);
        state.PauseTiming();
        vrkDOM_destroyNode(tree, 1);
        state.ResumeTiming();
    }
    reportInput(state, document);
    setParseCounters(state, document);
}

void destroyOnly(benchmark::State &state, Document &document) {
    if (!ready(state, document)) return;
    for (auto _ : state) {
        state.PauseTiming();
        vrkNode *tree = parse(document);
        state.ResumeTiming();
        vrkDOM_destroyNode(tree, 1);
    }
    reportInput(state, document);
    vrkNode *tree = parse(document);
    setOperationCounters(state, document, costOf([tree] { vrkDOM_destroyNode(tree, 1); }));
}

}  // namespace

void addVrkxmlParseCases(Document &document) {
    addCase(document, "vrkxml", "parse_destroy", parseAndDestroy);
    addCase(document, "vrkxml", "parse", parseOnly);
    addCase(document, "vrkxml", "own_work", ownWork);
    addCase(document, "vrkxml", "destroy", destroyOnly);
}

}  // namespace vrkperf
