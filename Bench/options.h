// Command-line and environment options of the performance benchmark, taken
// out of argv before Google Benchmark reads its own.
#ifndef VRKXML_BENCH_OPTIONS_H
#define VRKXML_BENCH_OPTIONS_H

#include <string>

#include "corpus.h"

namespace vrkperf {

struct BenchOptions {
    CorpusOptions corpus;
    // When set, the documents are written there as NAME.xml instead of
    // being measured.
    std::string writeDirectory;
    // Leave the C library's allocator as it comes (see heap_state.h).
    bool mallocDefaults = false;
};

// Understands, next to Google Benchmark's flags:
//   --sizes=1,10,100   sizes of the generated documents in MB (default 1,10;
//                      also VRKXML_BENCH_SIZES)
//   --file=PATH        a file to measure too, repeatable (also
//                      VRKXML_BENCH_FILES, paths separated by ':')
//   --write-documents=DIR  writes the documents to DIR and measures nothing
//   --malloc-defaults  keeps glibc's adaptive heap thresholds (also
//                      VRKXML_BENCH_MALLOC_DEFAULTS=1)
// Removes what it understands from argv.  Throws std::invalid_argument on a
// malformed value.
BenchOptions takeOptions(int &argc, char **argv);

}  // namespace vrkperf

#endif
