// glibc's knobs for heap_state.h.
#include "heap_state.h"

#include <malloc.h>

#include <climits>

namespace vrkperf {

void fixHeapThresholds() {
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

// mallopt merges the main arena's fast lists before it changes a setting;
// setting the fast-list limit to the value it has by default (64 *
// sizeof(size_t) / 4) changes nothing else.
void settleHeap() { mallopt(M_MXFAST, static_cast<int>(64 * sizeof(std::size_t) / 4)); }

}  // namespace vrkperf
