// What the peer cases share: the heap a peer's tree holds, measured from
// outside the peer as the growth of the process heap.
#ifndef VRKXML_BENCH_PEER_SUPPORT_H
#define VRKXML_BENCH_PEER_SUPPORT_H

#include <benchmark/benchmark.h>

#include <utility>

#include "alloc_tracking.h"
#include "bench_case.h"

namespace vrkperf {

// `load` builds the tree and returns it, `release` frees it.  Both run twice
// so that the second, measured time finds the heap grown; the counter
// heap_per_input is the heap held between load and release.
template <class Load, class Release>
void setHeapCounter(benchmark::State &state, Document &document, Load load, Release release) {
    release(load());
    const std::size_t before = heapInUse();
    auto tree = load();
    const std::size_t after = heapInUse();
    release(std::move(tree));
    setPerInput(state, "heap_per_input", after > before ? static_cast<double>(after - before) : 0.0, document);
}

}  // namespace vrkperf

#endif
