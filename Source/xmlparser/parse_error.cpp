#include "xmlparser/parse_error.h"

#include "dom/dom_exception.h"

namespace vrk {

int32_t recordParseError(ProduceContext *context, int32_t code, int32_t line, const UniChar *at) {
    vrkParseError &error = context->error;
    if (error.code == 0) {
        error.code = code;
        error.file = "Source/xmlparser";
        error.line = line;
        error.offset = offsetOf(context, at);
    }
    return PRODUCE_ERROR;
}

int32_t recordNodeRefused(ProduceContext *context, int32_t callerLine) {
    if (context->error.code == 0) {
        raiseDOMException(treeException(context), ERR_OUT_OF_MEMORY, __LINE__, "Source/xmlparser", callerLine);
    }
    return PRODUCE_ERROR;
}

}  // namespace vrk
