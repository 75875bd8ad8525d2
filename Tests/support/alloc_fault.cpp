#include "support/alloc_fault.h"

#include <gtest/gtest.h>

namespace vrktest {

int64_t forEachAllocationFailure(const std::function<void(const AllocationRun &)> &scenario) {
    constexpr int64_t kMostRuns = 1'000'000;
    for (int64_t k = 1; k <= kMostRuns; ++k) {
        const int64_t liveBefore = liveAllocations();
        refuseAllocation(k);
        AllocationRun run(k);
        scenario(run);
        const bool refused = allocationRefused();
        stopRefusing();
        EXPECT_EQ(liveAllocations(), liveBefore)
            << "blocks leaked with allocation " << k << " refused";
        if (!refused) return k;
    }
    ADD_FAILURE() << "the scenario never finished without a refused allocation";
    return kMostRuns;
}

}  // namespace vrktest
