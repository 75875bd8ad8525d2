// The public header as a C++17 translation unit sees it.
#include "vrkxml.h"

static_assert(sizeof(UniChar) == 2, "units are 16 bits");
static_assert(ELEMENT_NODE == 1 && DOCUMENT_NODE == 9, "node types");

int vrkxmlHeaderCompilesAsCxx17() { return PRODUCE_OK; }
