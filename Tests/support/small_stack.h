// Running work on a thread whose stack is far too small for a frame per
// level of a deep tree: anything that recursed per level would crash.
#pragma once

#include <cstddef>
#include <functional>

namespace vrktest {

constexpr std::size_t kSmallStackBytes = 256 * 1024;

// Runs work on a new thread with a stack of `bytes` and waits for it.
void runOnSmallStack(const std::function<void()> &work, std::size_t bytes = kSmallStackBytes);

}  // namespace vrktest
