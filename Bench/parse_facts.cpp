// Measuring a parse once per document.
#include "parse_facts.h"

#include <cstdio>
#include <map>

#include "alloc_tracking.h"
#include "bench_case.h"

namespace vrkperf {
namespace {

std::string describe(const vrkParseError &error) {
    char text[160];
    std::snprintf(text, sizeof text, "not parsed: code %d at unit %d%s%s", static_cast<int>(error.code),
                  static_cast<int>(error.offset), error.message != nullptr ? ": " : "",
                  error.message != nullptr ? error.message : "");
    return text;
}

ParseFacts measure(Document &document) {
    ParseFacts facts;
    vrkParseError error{};
    // A first parse, so that the heap has grown once before it is measured.
    vrkDOM_destroyNode(vrkDOM_parse(document.data(), &error), 1);
    const std::size_t heapBefore = heapInUse();
    vrkNode *tree = nullptr;
    const OperationCost parse = costOf([&] { tree = vrkDOM_parse(document.data(), &error); });
    facts.allocations = parse.allocations;
    facts.peakBytes = parse.peakBytes;
    if (tree == nullptr) {
        facts.failure = describe(error);
        return facts;
    }
    const std::size_t heapAfter = heapInUse();
    facts.heapBytes = heapAfter > heapBefore ? heapAfter - heapBefore : 0;
    facts.tree = measureTree(tree);
    vrkDOM_destroyNode(tree, 1);
    return facts;
}

double perNode(double amount, const ParseFacts &facts) {
    return facts.tree.nodes == 0 ? 0.0 : amount / static_cast<double>(facts.tree.nodes);
}

}  // namespace

const ParseFacts &parseFacts(Document &document) {
    static std::map<const Document *, ParseFacts> cache;
    auto found = cache.find(&document);
    if (found == cache.end()) found = cache.emplace(&document, measure(document)).first;
    return found->second;
}

vrkNode *parseOrSkip(benchmark::State &state, Document &document) {
    vrkParseError error{};
    vrkNode *tree = vrkDOM_parse(document.data(), &error);
    if (tree == nullptr) state.SkipWithError(describe(error).c_str());
    return tree;
}

void setOperationCounters(benchmark::State &state, Document &document, const OperationCost &cost) {
    const ParseFacts &facts = parseFacts(document);
    state.counters["allocs_per_node"] = perNode(static_cast<double>(cost.allocations), facts);
    setPerInput(state, "peak_per_input", static_cast<double>(cost.peakBytes), document);
}

void setParseCounters(benchmark::State &state, Document &document) {
    const ParseFacts &facts = parseFacts(document);
    setOperationCounters(state, document, {facts.allocations, facts.peakBytes});
    setPerInput(state, "tree_per_input", static_cast<double>(facts.tree.bytes), document);
    setPerInput(state, "heap_per_input", static_cast<double>(facts.heapBytes), document);
    state.counters["blocks_per_node"] = perNode(static_cast<double>(facts.tree.nodes + facts.tree.strings), facts);
    state.counters["nodes"] = static_cast<double>(facts.tree.nodes);
}

}  // namespace vrkperf
