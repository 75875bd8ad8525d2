// What one parse of a document costs in memory and allocations, measured
// once per document outside any timing, and the parse call the cases share.
#ifndef VRKXML_BENCH_PARSE_FACTS_H
#define VRKXML_BENCH_PARSE_FACTS_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "alloc_tracking.h"
#include "corpus.h"
#include "tree_stats.h"
#include "vrkxml.h"

namespace vrkperf {

struct ParseFacts {
    std::string failure;            // empty when the document parses
    TreeStats tree;                 // the finished tree
    std::uint64_t allocations = 0;  // allocation calls during the parse
    std::int64_t peakBytes = 0;     // most bytes live during the parse (text copy included)
    std::size_t heapBytes = 0;      // growth of the process heap held by the tree
};

// Measured on the first call for each document, then kept.
const ParseFacts &parseFacts(Document &document);

// A parse, or null after SkipWithError when the document does not parse.
vrkNode *parseOrSkip(benchmark::State &state, Document &document);

// Allocation calls and peak bytes of one run of an operation.
struct OperationCost {
    std::uint64_t allocations = 0;
    std::int64_t peakBytes = 0;
};

// The allocations and peak bytes of one call of operation.
template <class Operation>
OperationCost costOf(Operation operation) {
    Tracking tracking;
    operation();
    return {tracking.allocations(), tracking.peakBytes()};
}

// Sets allocs_per_node (over the nodes of the parsed tree) and
// peak_per_input from one operation's cost.
void setOperationCounters(benchmark::State &state, Document &document, const OperationCost &cost);

// The tree counters too: tree_per_input (usable sizes of its blocks),
// heap_per_input (the process heap it holds, as measured for the peers),
// blocks_per_node and nodes.
void setParseCounters(benchmark::State &state, Document &document);

}  // namespace vrkperf

#endif
