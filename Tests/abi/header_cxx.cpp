// The public header as a C++ translation unit sees it (built as C++17 and C++20).
#include "vrkxml.h"

static_assert(sizeof(UniChar) == 2, "units are 16 bits");
static_assert(ELEMENT_NODE == 1 && DOCUMENT_NODE == 9, "node types");

int vrkxmlHeaderCompilesAsCxx() { return PRODUCE_OK; }
