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
    OperationCost cost;
    {
        Tracking tracking;
        vrkDOM_destroyNode(tree, 1);
        cost = {tracking.allocations(), tracking.peakBytes()};
    }
    setOperationCounters(state, document, cost);
}

}  // namespace

void addVrkxmlParseCases(Document &document) {
    addCase(document, "vrkxml", "parse_destroy", parseAndDestroy);
    addCase(document, "vrkxml", "parse", parseOnly);
    addCase(document, "vrkxml", "destroy", destroyOnly);
}

}  // namespace vrkperf
