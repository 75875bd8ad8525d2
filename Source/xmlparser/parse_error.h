// How productions record the first error of a parse, and how the parser
// names itself to the tree operations it calls.
#pragma once

#include "vrkxml.h"

namespace vrk {

// Records code at `at` unless the context already holds an error; either way
// the result is PRODUCE_ERROR, so a site can `return` it.
int32_t recordParseError(ProduceContext *context, int32_t code, int32_t line, const UniChar *at);

// No memory for a node that the parser makes itself: ERR_OUT_OF_MEMORY as a
// tree operation reports it ("Source/dom", with the parser's site as the
// caller and no offset), unless an error is pending.  PRODUCE_ERROR.
int32_t recordNodeRefused(ProduceContext *context, int32_t callerLine);

// The parse error begins with the five fields of vrkDOMException, so tree
// operations report straight into it.
inline vrkDOMException *treeException(ProduceContext *context) {
    return reinterpret_cast<vrkDOMException *>(&context->error);
}

inline int32_t offsetOf(const ProduceContext *context, const UniChar *at) {
    return static_cast<int32_t>(at - context->textStart);
}

}  // namespace vrk

#define VRK_PARSE_ERROR(context, code, at) vrk::recordParseError((context), (code), __LINE__, (at))

// The location the parser passes as callerFile and callerLine.
#define VRK_PARSER_SITE "Source/xmlparser", __LINE__
