// Case registration and the counters every case shares.
#include "bench_case.h"

#include "heap_state.h"

#include <string>
#include <utility>

namespace vrkperf {

void addCase(Document &document, std::string_view library, std::string_view operation, CaseBody body) {
    std::string name = document.name();
    name += '/';
    name += library;
    name += '/';
    name += operation;
    Document *target = &document;
    benchmark::RegisterBenchmark(name.c_str(), [target, run = std::move(body)](benchmark::State &state) {
        settleHeap();
        run(state, *target);
    })->Unit(benchmark::kMillisecond);
}

void reportInput(benchmark::State &state, Document &document) {
    const auto bytes = static_cast<std::int64_t>(document.size());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void setPerInput(benchmark::State &state, const char *counter, double bytes, Document &document) {
    state.counters[counter] = bytes / static_cast<double>(document.size());
}

}  // namespace vrkperf
