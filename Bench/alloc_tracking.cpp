// The malloc wrappers behind Tracking, and the process-wide heap figure.
#include "alloc_tracking.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unordered_map>

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

// The arena: blocks carry their size in the 16 bytes before them, so that
// realloc can copy and free can tell arena blocks from others.
char *gArenaStart = nullptr;
char *gArenaEnd = nullptr;
char *gArenaNext = nullptr;
bool gArenaOverflowed = false;
constexpr std::size_t kHeader = 16;

bool inArena(void *block) {
    auto *p = static_cast<char *>(block);
    return p != nullptr && p >= gArenaStart && p < gArenaEnd;
}

void *arenaAllocate(std::size_t size) {
    const std::size_t rounded = (size + kHeader - 1) / kHeader * kHeader;
    if (static_cast<std::size_t>(gArenaEnd - gArenaNext) < kHeader + rounded) {
        gArenaOverflowed = true;
        return nullptr;
    }
    std::memcpy(gArenaNext, &size, sizeof size);
    void *block = gArenaNext + kHeader;
    gArenaNext += kHeader + rounded;
    return block;
}

std::size_t arenaSize(void *block) {
    std::size_t size;
    std::memcpy(&size, static_cast<char *>(block) - kHeader, sizeof size);
    return size;
}

// The log being recorded, if any, and which event made each live block.
struct LogState {
    std::vector<vrkperf::AllocationLog::Event> events;
    std::unordered_map<void *, std::size_t> makers;
};
LogState *gLog = nullptr;

void logAllocation(void *block, std::size_t size) {
    if (gLog == nullptr || block == nullptr) return;
    gLog->makers[block] = gLog->events.size();
    gLog->events.push_back({vrkperf::AllocationLog::Event::Allocate, size, 0});
}

void logReallocation(void *block, void *moved, std::size_t size) {
    if (gLog == nullptr || moved == nullptr) return;
    const auto maker = block == nullptr ? gLog->makers.end() : gLog->makers.find(block);
    if (maker == gLog->makers.end()) return logAllocation(moved, size);
    const std::size_t made = maker->second;
    gLog->makers.erase(maker);
    gLog->makers[moved] = gLog->events.size();
    gLog->events.push_back({vrkperf::AllocationLog::Event::Reallocate, size, made});
}

void logRelease(void *block) {
    if (gLog == nullptr || block == nullptr) return;
    const auto maker = gLog->makers.find(block);
    if (maker == gLog->makers.end()) return;
    gLog->events.push_back({vrkperf::AllocationLog::Event::Release, 0, maker->second});
    gLog->makers.erase(maker);
}

std::int64_t usable(void *block) { return block == nullptr ? 0 : static_cast<std::int64_t>(malloc_usable_size(block)); }

void added(void *block) {
    if (block == nullptr) return;
    ++gAllocations;
    gLiveBytes += usable(block);
    gPeakBytes = std::max(gPeakBytes, gLiveBytes);
}

}  // namespace

extern "C" void *__wrap_malloc(std::size_t size) {
    if (gArenaStart != nullptr) {
        if (void *block = arenaAllocate(size)) return block;
    }
    void *block = __real_malloc(size);
    if (gTracking) added(block);
    logAllocation(block, size);
    return block;
}

extern "C" void *__wrap_calloc(std::size_t count, std::size_t size) {
    if (gArenaStart != nullptr && size != 0 && count <= SIZE_MAX / size) {
        if (void *block = arenaAllocate(count * size)) return std::memset(block, 0, count * size);
    }
    void *block = __real_calloc(count, size);
    if (gTracking) added(block);
    logAllocation(block, count * size);
    return block;
}

extern "C" void *__wrap_realloc(void *block, std::size_t size) {
    if (gArenaStart != nullptr && (block == nullptr || inArena(block))) {
        if (void *moved = arenaAllocate(size)) {
            if (block != nullptr) std::memcpy(moved, block, std::min(size, arenaSize(block)));
            return moved;
        }
        if (block != nullptr) return nullptr;  // an arena block cannot move to the C library's heap
    }
    const std::int64_t before = gTracking ? usable(block) : 0;
    void *moved = __real_realloc(block, size);
    logReallocation(block, moved, size);
    if (!gTracking) return moved;
    if (moved != nullptr) {
        gLiveBytes -= before;
        added(moved);
    } else if (size == 0) {
        gLiveBytes -= before;  // released
    }
    return moved;
}

extern "C" void __wrap_free(void *block) {
    if (inArena(block)) return;
    if (gTracking) gLiveBytes -= usable(block);
    logRelease(block);
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

Arena::Arena(std::size_t bytes) {
    gArenaStart = static_cast<char *>(__real_malloc(bytes));
    gArenaEnd = gArenaStart + bytes;
    std::memset(gArenaStart, 0, bytes);  // touch every page before the timing
    reset();
}

Arena::~Arena() {
    __real_free(gArenaStart);
    gArenaStart = gArenaEnd = gArenaNext = nullptr;
}

void Arena::reset() {
    gArenaNext = gArenaStart;
    gArenaOverflowed = false;
}

bool Arena::sufficed() const { return !gArenaOverflowed; }

std::uint64_t Tracking::allocations() const { return gAllocations; }

std::int64_t Tracking::peakBytes() const { return gPeakBytes; }

AllocationLog::AllocationLog() { gLog = new LogState; }

AllocationLog::~AllocationLog() {
    delete gLog;
    gLog = nullptr;
}

const std::vector<AllocationLog::Event> &AllocationLog::events() const { return gLog->events; }

std::size_t AllocationLog::allocations() const {
    return static_cast<std::size_t>(std::count_if(gLog->events.begin(), gLog->events.end(),
                                                  [](const Event &event) { return event.kind == Event::Allocate; }));
}

void replay(const std::vector<AllocationLog::Event> &events, std::vector<void *> &blocks) {
    blocks.resize(events.size());
    for (std::size_t i = 0; i < events.size(); ++i) {
        const AllocationLog::Event &event = events[i];
        switch (event.kind) {
        case AllocationLog::Event::Allocate:
            blocks[i] = std::malloc(event.size);
            break;
        case AllocationLog::Event::Reallocate:
            blocks[i] = std::realloc(blocks[event.block], event.size);
            break;
        case AllocationLog::Event::Release:
            std::free(blocks[event.block]);
            break;
        }
    }
}

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace vrkperf
