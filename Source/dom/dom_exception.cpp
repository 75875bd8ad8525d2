#include "dom/dom_exception.h"

namespace vrk {

void raiseDOMException(vrkDOMException *exception, int32_t code, int32_t line,
                       const char *callerFile, int32_t callerLine) {
    exception->code = code;
    exception->file = "Source/dom";
    exception->line = line;
    exception->callerFile = callerFile;
    exception->callerLine = callerLine;
}

}  // namespace vrk
