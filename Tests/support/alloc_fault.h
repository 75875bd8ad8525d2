// Running a test scenario once for every allocation it makes, with that
// allocation refused.  The counting and refusing is done by the malloc
// wrappers of alloc_wrap.h; test programs are linked with them.
#pragma once

#include <cstdint>
#include <functional>

#include "support/alloc_wrap.h"

namespace vrktest {

// What a scenario run by forEachAllocationFailure can ask about its run.
class AllocationRun {
public:
    explicit AllocationRun(int64_t failingIndex) : failingIndex_(failingIndex) {}
    // The allocation number (from 1) that is refused in this run.
    int64_t failingIndex() const { return failingIndex_; }
    // Whether that allocation has been asked for, and refused, so far.
    bool failed() const { return allocationRefused(); }

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
