// The malloc floor: the allocations of one parse and release, and nothing
// else.  The blocks are those of our tree (its sizes, in its order) and,
// for UTF-8 input, the decoded copy of the text, allocated first and freed
// once the tree's blocks are there, as the parse does.  A parse with one
// block per node and per string cannot be cheaper than this.
#include <cstdlib>
#include <vector>

#include "bench_case.h"
#include "cases.h"
#include "parse_facts.h"
#include "tree_stats.h"

namespace vrkperf {
namespace {

struct Blocks {
    std::size_t textBytes;  // 0 for UTF-16 input, which is parsed in place
    const std::vector<std::size_t> &sizes;
    std::vector<void *> &live;
};

void allocateAndFree(const Blocks &blocks) {
    void *text = blocks.textBytes != 0 ? std::malloc(blocks.textBytes) : nullptr;
    benchmark::DoNotOptimize(text);
    for (std::size_t i = 0; i < blocks.sizes.size(); ++i) {
        blocks.live[i] = std::malloc(blocks.sizes[i]);
        benchmark::DoNotOptimize(blocks.live[i]);
    }
    std::free(text);
    for (void *block : blocks.live) std::free(block);
    benchmark::ClobberMemory();
}

void mallocFloor(benchmark::State &state, Document &document) {
    vrkNode *tree = parseOrSkip(state, document);
    if (tree == nullptr) return;
    const std::vector<std::size_t> sizes = blockSizes(tree);
    vrkDOM_destroyNode(tree, 1);
    std::size_t textBytes = 0;
    if (!document.utf16()) {
        const int32_t units = vrkUTF8StrLen(document.data());
        textBytes = 2 * (static_cast<std::size_t>(units < 0 ? 0 : units) + 1);
    }
    std::vector<void *> live(sizes.size());
    const Blocks blocks{textBytes, sizes, live};
    allocateAndFree(blocks);  // outside the timing, so that the heap has grown once
    for (auto _ : state) allocateAndFree(blocks);
    reportInput(state, document);
    state.counters["blocks"] = static_cast<double>(sizes.size() + (textBytes != 0 ? 1 : 0));
}

}  // namespace

void addMallocFloorCase(Document &document) { addCase(document, "floor", "malloc_free", mallocFloor); }

}  // namespace vrkperf
