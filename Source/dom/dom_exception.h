// How tree operations report a failure into the caller's vrkDOMException.
#pragma once

#include "vrkxml.h"

namespace vrk {

// The sticky-record test every Real operation makes before anything else.
inline bool exceptionPending(const vrkDOMException *exception) { return exception->code != 0; }

// Fills all five fields: this library's site, and the caller's location.
void raiseDOMException(vrkDOMException *exception, int32_t code, int32_t line,
                       const char *callerFile, int32_t callerLine);

}  // namespace vrk

// A reporting site inside Source/dom records its own line.
#define VRK_RAISE(exception, code, callerFile, callerLine) \
    vrk::raiseDOMException((exception), (code), __LINE__, (callerFile), (callerLine))
