// Keeping the C library's heap in the same state for every case, so that a
// case's result depends neither on the cases that ran before it nor on the
// kernel's cost of handing out fresh pages.
//
// glibc adapts two thresholds as a program runs: free memory at the top of
// the heap goes back to the kernel once it exceeds the trim threshold, and
// the size from which blocks are mapped on their own rises after such a
// block is freed.  With them adapting, a tree of a hundred MB is handed back
// to the kernel and faulted in again on some iterations and not on others,
// depending on what happens to sit at the top of the heap.  On a virtual
// machine a page fault can cost 10 us or more, which then decides the result
// (and its spread) rather than the code being measured.
#ifndef VRKXML_BENCH_HEAP_STATE_H
#define VRKXML_BENCH_HEAP_STATE_H

namespace vrkperf {

// Fixes the mapping threshold at glibc's starting value (128 KiB) and keeps
// freed memory in the process (trim threshold 2 GiB), for the whole run.
// Every case makes one untimed run before its loop, so its timed
// iterations reuse pages that are already there.
void fixHeapThresholds();

// Before each case, outside its timing: merges the free blocks that glibc
// keeps in its fast lists with their free neighbours, as a fresh heap would
// have them, so that the blocks a case allocates lie in the order it
// allocates them.  Returns no memory to the kernel.
void settleHeap();

}  // namespace vrkperf

#endif
