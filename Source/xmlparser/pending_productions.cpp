// Productions whose grammar has not been built yet: the prolog has nothing
// to read, and comments and processing instructions match nothing.
#include "unistring/export.h"
#include "vrkxml.h"

VRK_EXPORT int32_t Produce_prolog(ProduceContext *) { return PRODUCE_OK; }
VRK_EXPORT int32_t Produce_Misc(ProduceContext *) { return PRODUCE_NO_MATCH; }
VRK_EXPORT int32_t Produce_PI(ProduceContext *) { return PRODUCE_NO_MATCH; }
VRK_EXPORT int32_t Produce_Comment(ProduceContext *) { return PRODUCE_NO_MATCH; }
