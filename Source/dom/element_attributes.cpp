// Setting an attribute node on an element.
#include "dom/dom_exception.h"
#include "unistring/export.h"

namespace {

using SetItem = vrkNode *(*)(vrkNamedNodeMap *, vrkNode *);

vrkNode *setAttribute(const char *callerFile, int32_t callerLine, vrkNode *element, vrkNode *attribute,
                      vrkDOMException *exception, SetItem setItem) {
    if (vrk::exceptionPending(exception)) return nullptr;
    if (element->type != ELEMENT_NODE) {
        VRK_RAISE(exception, ERR_HIERARCHY_REQUEST, callerFile, callerLine);
        return nullptr;
    }
    attribute->parent = element;
    return setItem(&element->attributes, attribute);
}

}  // namespace

VRK_EXPORT vrkNode *vrkElementReal_setAttributeNode(const char *callerFile, int32_t callerLine,
                                                    vrkNode *element, vrkNode *attribute,
                                                    vrkDOMException *exception) {
    return setAttribute(callerFile, callerLine, element, attribute, exception, vrkNamedNodeMap_setNamedItem);
}

VRK_EXPORT vrkNode *vrkElementReal_setAttributeNodeNS(const char *callerFile, int32_t callerLine,
                                                      vrkNode *element, vrkNode *attribute,
                                                      vrkDOMException *exception) {
    return setAttribute(callerFile, callerLine, element, attribute, exception, vrkNamedNodeMap_setNamedItemNS);
}
