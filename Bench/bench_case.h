// Registering one measured case: a library doing one operation on one
// document.  Cases are named "document/library/operation" so that a filter
// can pick documents, libraries or operations.
#ifndef VRKXML_BENCH_BENCH_CASE_H
#define VRKXML_BENCH_BENCH_CASE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <string_view>

#include "corpus.h"

namespace vrkperf {

using CaseBody = std::function<void(benchmark::State &, Document &)>;

void addCase(Document &document, std::string_view library, std::string_view operation, CaseBody body);

// Throughput over the document's size, and its size in MB as a counter.
// Every case calls this once its loop is done.
void reportInput(benchmark::State &state, Document &document);

// A ratio to the document's size, as a counter.
void setPerInput(benchmark::State &state, const char *counter, double bytes, Document &document);

}  // namespace vrkperf

#endif
