// Replacing the value of an attribute, text or CDATA section node.
#include "dom/dom_exception.h"
#include "dom/node_block.h"
#include "unistring/export.h"

VRK_EXPORT int32_t vrkNodeReal_setNodeValue(const char *callerFile, int32_t callerLine, vrkNode *node,
                                            const UniChar *value, int32_t valueLength,
                                            vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return 0;
    if (node->type != ATTRIBUTE_NODE && node->type != TEXT_NODE && node->type != CDATA_SECTION_NODE) return 0;
    if (!vrk::replaceNodeString(node, &vrkNode::value, value, valueLength)) {
        VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
        return 0;
    }
    return 1;
}
