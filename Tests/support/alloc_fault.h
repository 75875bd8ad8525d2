// Counting and refusing the allocations of the code under test.
//
// Test programs are linked with -Wl,--wrap for malloc, calloc, realloc and
// free, so every such call made by the library (linked statically into the
// test) or by a test's own code goes through the counters here.  Allocations
// made inside other libraries (the C++ runtime, GoogleTest) are not seen.
#pragma once

#include <cstdint>
#include <functional>

namespace vrktest {

// Blocks allocated through the wrapped functions and not yet freed, all
// threads together.
int64_t liveAllocations();

// Number of allocations (malloc, calloc, realloc) `action` makes on this thread.
int64_t countAllocations(const std::function<void()> &action);

// What a scenario run by forEachAllocationFailure can ask about its run.
class AllocationRun {
public:
    explicit AllocationRun(int64_t failingIndex) : failingIndex_(failingIndex) {}
    // The allocation number (from 1) that is refused in this run.
    int64_t failingIndex() const { return failingIndex_; }
    // Whether that allocation has been asked for, and refused, so far.
    bool failed() const;

private:
    int64_t failingIndex_;
};

// Runs `scenario` with the 1st allocation refused, then the 2nd, and so on,
// until a run asks for fewer allocations than the refused number: that last
// run saw every allocation succeed.  After every run it checks that the
// scenario freed everything it allocated (the scenario releases what it
// made, on success as on failure).  Returns the number of runs.
int64_t forEachAllocationFailure(const std::function<void(const AllocationRun &)> &scenario);

}  // namespace vrktest
