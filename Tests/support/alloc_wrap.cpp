#include "support/alloc_wrap.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
void __real_free(void *block);
}

namespace {

// The blocks handed out through the wrappers, with their sizes.  Other code
// in the program (the C library, GoogleTest, the fuzzer) may free blocks it
// got elsewhere; those are not ours to count.  But a pointer into a live
// block of ours that is not its start was never a block: freeing it is the
// fault of freeing a string that lives inside its node's block, and the
// program stops there.  The map allocates through operator new, which the
// wrappers do not see, so there is no recursion.
struct LiveBlocks {
    std::mutex mutex;
    std::map<const char *, std::size_t> blocks;

    void add(void *block, std::size_t size) {
        std::lock_guard<std::mutex> lock(mutex);
        blocks[static_cast<const char *>(block)] = size;
    }
    // Forgets block and returns its size; 0 for a block from elsewhere.
    std::size_t remove(void *block) {
        const auto *p = static_cast<const char *>(block);
        std::lock_guard<std::mutex> lock(mutex);
        auto found = blocks.upper_bound(p);
        if (found == blocks.begin()) return 0;
        --found;
        if (found->first == p) {
            const std::size_t size = found->second;
            blocks.erase(found);
            return size;
        }
        if (p < found->first + found->second) {
            std::fprintf(stderr, "free(%p): a pointer inside the live block %p of %zu bytes\n",
                         block, static_cast<const void *>(found->first), found->second);
            std::abort();
        }
        return 0;
    }
    int64_t count() {
        std::lock_guard<std::mutex> lock(mutex);
        return static_cast<int64_t>(blocks.size());
    }
};

LiveBlocks &live() {
    static LiveBlocks *blocks = new LiveBlocks;  // never destroyed: used until exit
    return *blocks;
}

// Per thread, so that a refusal meant for the code under test never hits
// another thread (a test's helpers, the fuzzer's own threads).
struct ThreadState {
    int64_t allocations = 0;  // allocations asked for on this thread
    int64_t refuseAt = 0;     // absolute number to refuse, 0 for none
    bool refused = false;
};
thread_local ThreadState state;

// Counts one allocation and tells whether it is the one to refuse.
bool refuseNext() {
    ++state.allocations;
    if (state.refuseAt != 0 && state.allocations == state.refuseAt) {
        state.refused = true;
        return true;
    }
    return false;
}

}  // namespace

extern "C" {

void *__wrap_malloc(std::size_t size) {
    if (refuseNext()) return nullptr;
    void *block = __real_malloc(size);
    if (block != nullptr) live().add(block, size);
    return block;
}

void *__wrap_calloc(std::size_t count, std::size_t size) {
    if (refuseNext()) return nullptr;
    void *block = __real_calloc(count, size);
    if (block != nullptr) live().add(block, count * size);
    return block;
}

void *__wrap_realloc(void *block, std::size_t size) {
    if (refuseNext()) return nullptr;
    // A pointer inside a block stops here, before the C library sees it.
    const std::size_t oldSize = block != nullptr ? live().remove(block) : 0;
    void *moved = __real_realloc(block, size);
    if (moved != nullptr) {
        live().add(moved, size);
    } else if (oldSize != 0) {
        live().add(block, oldSize);  // refused: the old block stays
    }
    return moved;
}

void __wrap_free(void *block) {
    if (block != nullptr) live().remove(block);
    __real_free(block);
}

}  // extern "C"

namespace vrktest {

int64_t liveAllocations() { return live().count(); }

int64_t countAllocations(const std::function<void()> &action) {
    const int64_t before = state.allocations;
    action();
    return state.allocations - before;
}

void refuseAllocation(int64_t nth) {
    state.refused = false;
    state.refuseAt = state.allocations + nth;
}

bool allocationRefused() { return state.refused; }

void stopRefusing() {
    state.refuseAt = 0;
    state.refused = false;
}

}  // namespace vrktest
