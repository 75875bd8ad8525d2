// Parse cost of hostile documents next to an ordinary document of the same
// size.  Each benchmark parses one document and destroys the tree.  The
// "factor" counter is the processor time per byte relative to the ordinary
// document, available once "normal" has run (it runs first unless filtered
// out).  Processor time rather than wall time, so that a busy machine skews
// the comparison less.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "documents.h"
#include "vrkxml.h"

namespace {

// Documents are built on first use and kept for the repeated runs.
std::vector<std::optional<std::string>> gDocuments;

// Seconds per byte of the ordinary document, 0 until it has been measured.
double gNormalSecondsPerByte = 0.0;

void parseDocument(benchmark::State &state, std::size_t index) {
    const vrkbench::DocumentRecipe &recipe = vrkbench::documentRecipes()[index];
    std::optional<std::string> &slot = gDocuments[index];
    if (!slot) slot = recipe.build();
    // The parser decodes UTF-8 into its own copy and leaves the text alone,
    // so the same buffer serves every iteration.
    std::string &text = *slot;

    // One parse outside the timing, so that the first timed parse does not
    // pay for growing the heap.
    vrkParseError error{};
    vrkDOM_destroyNode(vrkDOM_parse(text.data(), &error), 1);
    const std::clock_t started = std::clock();
    for (auto _ : state) {
        vrkNode *document = vrkDOM_parse(text.data(), &error);
        if (document == nullptr) {
            char message[96];
            std::snprintf(message, sizeof message, "not parsed: code %d at unit %d", static_cast<int>(error.code),
                          static_cast<int>(error.offset));
            state.SkipWithError(message);
            break;
        }
        vrkDOM_destroyNode(document, 1);
    }
    if (error.code != 0) return;
    const double elapsed = static_cast<double>(std::clock() - started) / CLOCKS_PER_SEC;

    const auto bytes = static_cast<double>(text.size());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size()));
    state.counters["MB"] = bytes / 1e6;
    const double secondsPerByte = elapsed / (static_cast<double>(state.iterations()) * bytes);
    if (index == 0) gNormalSecondsPerByte = secondsPerByte;
    if (gNormalSecondsPerByte > 0.0) state.counters["factor"] = secondsPerByte / gNormalSecondsPerByte;
}

}  // namespace

int main(int argc, char **argv) {
    const auto recipes = vrkbench::documentRecipes();
    gDocuments.resize(recipes.size());
    for (std::size_t i = 0; i < recipes.size(); ++i) {
        benchmark::internal::Benchmark *bench = benchmark::RegisterBenchmark(recipes[i].name, parseDocument, i);
        bench->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
