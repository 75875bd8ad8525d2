// The malloc wrappers that count and refuse allocations, shared by the test
// programs and the allocation-failure fuzz target.
//
// A program using them is linked with -Wl,--wrap for malloc, calloc, realloc
// and free, so every such call made by the library (linked statically) or by
// the program's own code goes through the counters here.  Allocations made
// inside other libraries (the C++ runtime, GoogleTest) are not seen.  Only
// the C standard library and the C++ runtime are used here, so that the fuzz
// build, which has no GoogleTest, compiles this too.
#pragma once

#include <cstdint>
#include <functional>

namespace vrktest {

// Blocks allocated through the wrapped functions and not yet freed, all
// threads together.
int64_t liveAllocations();

// Number of allocations (malloc, calloc, realloc) `action` makes on this thread.
int64_t countAllocations(const std::function<void()> &action);

// Refuses the `nth` allocation (from 1) that this thread asks for from now
// on: malloc, calloc and realloc then return null without allocating.
void refuseAllocation(int64_t nth);

// Whether the allocation chosen by refuseAllocation has been asked for, and
// refused, so far.
bool allocationRefused();

// Ends the refusal: every allocation of this thread is made again.
void stopRefusing();

}  // namespace vrktest
