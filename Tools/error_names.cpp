#include "error_names.h"

#include "vrkxml.h"

namespace vrktool {

const char *errorName(int32_t code) {
    switch (code) {
#define VRK_NAME(name) \
    case name:         \
        return #name;
        VRK_NAME(ERR_OUT_OF_MEMORY)
        VRK_NAME(ERR_XMLDECL_VERSION)
        VRK_NAME(ERR_BAD_ENCODING)
        VRK_NAME(ERR_XMLDECL_END)
        VRK_NAME(ERR_UNTERMINATED)
        VRK_NAME(ERR_COMMENT_HYPHENS)
        VRK_NAME(ERR_CLOSING_QUOTE)
        VRK_NAME(ERR_ENCODING_DECL)
        VRK_NAME(ERR_NO_ROOT_ELEMENT)
        VRK_NAME(ERR_END_TAG)
        VRK_NAME(ERR_CHAR_REF)
        VRK_NAME(ERR_ATTVALUE_END)
        VRK_NAME(ERR_NSATT_NAME)
        VRK_NAME(ERR_EQ_MISSING)
        VRK_NAME(ERR_OPENING_QUOTE)
        VRK_NAME(ERR_DECL_VALUE)
        VRK_NAME(ERR_TAG_END)
        VRK_NAME(ERR_ETAG_NAME)
        VRK_NAME(ERR_UNDECLARED_PREFIX)
        VRK_NAME(ERR_BAD_PI)
        VRK_NAME(ERR_DUPLICATE_ATTRIBUTE)
        VRK_NAME(ERR_HIERARCHY_REQUEST)
        VRK_NAME(ERR_NOT_FOUND)
        VRK_NAME(ERR_NAMESPACE)
        VRK_NAME(ERR_TEXT_TOO_LONG)
#undef VRK_NAME
    default:
        return "UNKNOWN_ERROR";
    }
}

}  // namespace vrktool
