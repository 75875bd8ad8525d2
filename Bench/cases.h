// Registration of every case for one document, library by library.  A peer
// library's function exists only when the library was found at configure
// time (VRKXML_PERF_<NAME> is then defined).
#ifndef VRKXML_BENCH_CASES_H
#define VRKXML_BENCH_CASES_H

#include "corpus.h"

namespace vrkperf {

// parse_destroy, parse, destroy.
void addVrkxmlParseCases(Document &document);
// serialize_utf8, serialize_utf16, normalize, copy.
void addVrkxmlTreeCases(Document &document);
// malloc_free: the allocations of our tree alone.
void addMallocFloorCase(Document &document);

// Every peer library that was found: parse_destroy, and serialize where
// the library writes documents.
void addPeerCases(Document &document);
// Once before and after all benchmarks.
void startPeers();
void stopPeers();

void addPugixmlCases(Document &document);
void addLibxml2Cases(Document &document);
void addExpatCases(Document &document);
void addTinyxml2Cases(Document &document);
void addXercesCases(Document &document);
void startLibxml2();
void stopLibxml2();
void startXerces();
void stopXerces();

}  // namespace vrkperf

#endif
