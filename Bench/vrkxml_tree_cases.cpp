// Operations on a parsed tree: writing it out, merging its text nodes and
// copying it.
#include <string>

#include "alloc_tracking.h"
#include "bench_case.h"
#include "cases.h"
#include "parse_facts.h"
#include "tree_copy.h"
#include "tree_stats.h"

namespace vrkperf {
namespace {

int appendToString(const void *data, uint32_t length, void *userData) {
    static_cast<std::string *>(userData)->append(static_cast<const char *>(data), length);
    return 1;
}

// Into one string that is emptied, not released, between iterations, so
// that after the first run the output costs a copy and no allocation.
void serialize(benchmark::State &state, Document &document, int32_t encoding) {
    vrkNode *tree = parseOrSkip(state, document);
    if (tree == nullptr) return;
    std::string out;
    int32_t written = 0;
    const OperationCost cost = costOf([&] { written = vrkDOM_serialize(tree, encoding, appendToString, &out); });
    if (written != 1) {
        state.SkipWithError("not serialized");
        vrkDOM_destroyNode(tree, 1);
        return;
    }
    for (auto _ : state) {
        out.clear();
        vrkDOM_serialize(tree, encoding, appendToString, &out);
        benchmark::DoNotOptimize(out.data());
    }
    reportInput(state, document);
    setOperationCounters(state, document, cost);
    setPerInput(state, "output_per_input", static_cast<double>(out.size()), document);
    vrkDOM_destroyNode(tree, 1);
}

// On a fresh tree each time, since the first run merges what there is to
// merge; the parse and the release are outside the timing.
void normalize(benchmark::State &state, Document &document) {
    vrkNode *tree = parseOrSkip(state, document);
    if (tree == nullptr) return;
    const std::size_t nodesBefore = measureTree(tree).nodes;
    vrkDOMException exception{};
    const OperationCost cost = costOf([&] { vrkNodeReal_normalize(__FILE__, __LINE__, tree, &exception); });
    const std::size_t nodesAfter = measureTree(tree).nodes;
    vrkDOM_destroyNode(tree, 1);
    for (auto _ : state) {
        state.PauseTiming();
        vrkParseError error{};
        tree = vrkDOM_parse(document.data(), &error);
        state.ResumeTiming();
        vrkNodeReal_normalize(__FILE__, __LINE__, tree, &exception);
        state.PauseTiming();
        vrkDOM_destroyNode(tree, 1);
        state.ResumeTiming();
    }
    if (exception.code != 0) state.SkipWithError("normalize failed");
    reportInput(state, document);
    setOperationCounters(state, document, cost);
    state.counters["merged_per_node"] =
        static_cast<double>(nodesBefore - nodesAfter) / static_cast<double>(nodesBefore);
}

// The whole tree, node by node through cloneNode; the copy is released
// outside the timing.
void copy(benchmark::State &state, Document &document) {
    vrkNode *tree = parseOrSkip(state, document);
    if (tree == nullptr) return;
    vrkDOMException exception{};
    const OperationCost cost = costOf([&] { vrkDOM_destroyNode(copyTree(tree, &exception), 1); });
    if (exception.code != 0) {
        state.SkipWithError("copy failed");
        vrkDOM_destroyNode(tree, 1);
        return;
    }
    for (auto _ : state) {
        vrkNode *duplicate = copyTree(tree, &exception);
        benchmark::DoNotOptimize(duplicate);
        state.PauseTiming();
        vrkDOM_destroyNode(duplicate, 1);
        state.ResumeTiming();
    }
    reportInput(state, document);
    setOperationCounters(state, document, cost);
    vrkDOM_destroyNode(tree, 1);
}

}  // namespace

void addVrkxmlTreeCases(Document &document) {
    addCase(document, "vrkxml", "serialize_utf8",
            [](benchmark::State &state, Document &d) { serialize(state, d, ENCODING_UTF8); });
    addCase(document, "vrkxml", "serialize_utf16",
            [](benchmark::State &state, Document &d) { serialize(state, d, ENCODING_UTF16); });
    addCase(document, "vrkxml", "normalize", normalize);
    addCase(document, "vrkxml", "copy", copy);
}

}  // namespace vrkperf
