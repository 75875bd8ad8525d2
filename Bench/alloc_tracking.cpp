// The malloc wrappers behind Tracking, and the process-wide heap figure.
#include "alloc_tracking.h"

#include <malloc.h>

#include <algorithm>

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
void __real_free(void *block);
void *__wrap_malloc(std::size_t size);
void *__wrap_calloc(std::size_t count, std::size_t size);
void *__wrap_realloc(void *block, std::size_t size);
void __wrap_free(void *block);
}

namespace {

bool gTracking = false;
std::uint64_t gAllocations = 0;
std::int64_t gLiveBytes = 0;
std::int64_t gPeakBytes = 0;

std::int64_t usable(void *block) { return block == nullptr ? 0 : static_cast<std::int64_t>(malloc_usable_size(block)); }

void added(void *block) {
    if (block == nullptr) return;
    ++gAllocations;
    gLiveBytes += usable(block);
    gPeakBytes = std::max(gPeakBytes, gLiveBytes);
}

}  // namespace

extern "C" void *__wrap_malloc(std::size_t size) {
    void *block = __real_malloc(size);
    if (gTracking) added(block);
    return block;
}

extern "C" void *__wrap_calloc(std::size_t count, std::size_t size) {
    void *block = __real_calloc(count, size);
    if (gTracking) added(block);
    return block;
}

extern "C" void *__wrap_realloc(void *block, std::size_t size) {
    if (!gTracking) return __real_realloc(block, size);
    const std::int64_t before = usable(block);
    void *moved = __real_realloc(block, size);
    if (moved != nullptr) {
        gLiveBytes -= before;
        added(moved);
    } else if (size == 0) {
        gLiveBytes -= before;  // released
    }
    return moved;
}

extern "C" void __wrap_free(void *block) {
    if (gTracking) gLiveBytes -= usable(block);
    __real_free(block);
}

namespace vrkperf {

Tracking::Tracking() {
    gAllocations = 0;
    gLiveBytes = 0;
    gPeakBytes = 0;
    gTracking = true;
}

Tracking::~Tracking() { gTracking = false; }

std::uint64_t Tracking::allocations() const { return gAllocations; }

std::int64_t Tracking::peakBytes() const { return gPeakBytes; }

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace vrkperf
