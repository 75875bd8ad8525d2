// Counting this program's own heap use.  The benchmark program is linked
// with malloc, calloc, realloc and free wrapped (-Wl,--wrap), so every call
// that the statically linked library makes passes through here; the peer
// libraries are shared objects and call the C library directly.
//
// Tracking is off unless a Tracking object is alive, so the timed loops pay
// one test of a flag per call.
#ifndef VRKXML_BENCH_ALLOC_TRACKING_H
#define VRKXML_BENCH_ALLOC_TRACKING_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vrkperf {

// Counts from its construction to its destruction.  One at a time, and only
// on the thread that runs the benchmarks.
class Tracking {
public:
    Tracking();
    ~Tracking();
    Tracking(const Tracking &) = delete;
    Tracking &operator=(const Tracking &) = delete;

    // Successful malloc, calloc and realloc calls so far.
    std::uint64_t allocations() const;
    // The most bytes (usable sizes) live at once, counted from zero at the
    // start: blocks older than the Tracking object that are freed meanwhile
    // lower the running count but never the peak.
    std::int64_t peakBytes() const;
};

// While alive, records every allocation, reallocation and release that
// goes through the wrappers, in order, so that replay() can make exactly
// the same calls again (with the same sizes, on the blocks they then give)
// and nothing else.  One at a time, on the thread that runs the benchmarks.
class AllocationLog {
public:
    AllocationLog();
    ~AllocationLog();
    AllocationLog(const AllocationLog &) = delete;
    AllocationLog &operator=(const AllocationLog &) = delete;

    struct Event {
        enum Kind { Allocate, Reallocate, Release } kind;
        std::size_t size;   // Allocate, Reallocate
        std::size_t block;  // Reallocate, Release: the event that made the block
    };
    // The events so far; blocks older than the log are left out.
    const std::vector<Event> &events() const;
    // Number of Allocate events.
    std::size_t allocations() const;
};

// Makes the calls of a recorded log once; `blocks` is scratch space.
void replay(const std::vector<AllocationLog::Event> &events, std::vector<void *> &blocks);

// While alive, the library's allocations come from one preallocated region
// by bumping a pointer and its frees cost nothing, so that a timed parse
// and release measure our own work without the allocator's.  reset() makes
// the whole region free again (call it only when no block from it is live).
// One at a time, on the thread that runs the benchmarks.
class Arena {
public:
    explicit Arena(std::size_t bytes);
    ~Arena();
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    void reset();
    // False when the region ran out and the C library served the rest.
    bool sufficed() const;
};

// Bytes the C library's allocator has handed out and not taken back, for
// the whole process, peer libraries included (ordinary and mapped blocks).
std::size_t heapInUse();

}  // namespace vrkperf

#endif
