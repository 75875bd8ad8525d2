// The malloc floor: the allocations of one parse and release, and nothing
// else.  One parse and release is recorded (every malloc, realloc and free
// our library makes, in order, with its size) and the case makes exactly
// those calls again.  A parse that allocates these blocks cannot be
// cheaper than this.
#include <vector>

#include "alloc_tracking.h"
#include "bench_case.h"
#include "cases.h"
#include "parse_facts.h"

namespace vrkperf {
namespace {

void mallocFloor(benchmark::State &state, Document &document) {
    vrkNode *tree = parseOrSkip(state, document);  // the heap has grown once
    if (tree == nullptr) return;
    vrkDOM_destroyNode(tree, 1);
    std::vector<AllocationLog::Event> events;
    std::size_t allocations = 0;
    {
        AllocationLog log;
        vrkParseError error{};
        vrkDOM_destroyNode(vrkDOM_parse(document.data(), &error), 1);
        events = log.events();
        allocations = log.allocations();
    }
    std::vector<void *> blocks;
    replay(events, blocks);  // outside the timing, so that the heap has grown once
    for (auto _ : state) {
        replay(events, blocks);
        benchmark::ClobberMemory();
    }
    reportInput(state, document);
    state.counters["blocks"] = static_cast<double>(allocations);
}

}  // namespace

void addMallocFloorCase(Document &document) { addCase(document, "floor", "malloc_free", mallocFloor); }

}  // namespace vrkperf
