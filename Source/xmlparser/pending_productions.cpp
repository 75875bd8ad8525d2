// Productions whose grammar has not been built yet.  The prolog has nothing
// to read and the others match nothing, so that every text in a good
// encoding ends in ERR_NO_ROOT_ELEMENT.
#include "unistring/export.h"
#include "vrkxml.h"

VRK_EXPORT int32_t Produce_prolog(ProduceContext *) { return PRODUCE_OK; }
VRK_EXPORT int32_t Produce_element(ProduceContext *) { return PRODUCE_NO_MATCH; }
VRK_EXPORT int32_t Produce_Misc(ProduceContext *) { return PRODUCE_NO_MATCH; }
