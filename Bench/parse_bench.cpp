// Throughput of this library's parser, serializer and tree operations on
// ordinary documents of several shapes and sizes, next to peer XML
// libraries on the same bytes in the same process, and next to the bare
// cost of the allocations our tree needs.
//
//   vrkxml_parse_bench [--sizes=1,10,100] [--file=PATH]... [--malloc-defaults]
//                      [benchmark flags]
//   vrkxml_parse_bench [--sizes=...] --write-documents=DIR
//
// Cases are named document/library/operation; see Bench/perf_table.sh for
// the summary table.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "cases.h"
#include "heap_state.h"
#include "options.h"

int main(int argc, char **argv) {
    std::deque<vrkperf::Document> corpus;
    try {
        const vrkperf::BenchOptions options = vrkperf::takeOptions(argc, argv);
        if (!options.mallocDefaults) vrkperf::fixHeapThresholds();
        corpus = vrkperf::makeCorpus(options.corpus);
        if (!options.writeDirectory.empty()) {
            vrkperf::writeCorpus(corpus, options.writeDirectory);
            return 0;
        }
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "vrkxml_parse_bench: %s\n", failure.what());
        return 2;
    }
    for (vrkperf::Document &document : corpus) {
        vrkperf::addVrkxmlParseCases(document);
        vrkperf::addPeerCases(document);
        vrkperf::addMallocFloorCase(document);
        vrkperf::addVrkxmlTreeCases(document);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    vrkperf::startPeers();
    benchmark::RunSpecifiedBenchmarks();
    vrkperf::stopPeers();
    benchmark::Shutdown();
    return 0;
}
