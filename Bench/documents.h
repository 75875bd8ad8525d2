// Documents for the parse benchmarks: one ordinary data file and a set of
// hostile ones, all about the same size, built the same way on every run.
#ifndef VRKXML_BENCH_DOCUMENTS_H
#define VRKXML_BENCH_DOCUMENTS_H

#include <cstddef>
#include <span>
#include <string>

namespace vrkbench {

// Every document is grown to roughly this many bytes of UTF-8.
inline constexpr std::size_t kTargetBytes = 10'000'000;

struct DocumentRecipe {
    const char *name;
    std::string (*build)();
};

// The ordinary document comes first; the factors are relative to it.
std::span<const DocumentRecipe> documentRecipes();

}  // namespace vrkbench

#endif
