// The node factories.  Each makes all its copies, and either returns a whole
// node or frees everything it made and reports ERR_OUT_OF_MEMORY.
#include <cstdlib>
#include <cstring>

#include "dom/dom_exception.h"
#include "dom/node_alloc.h"
#include "dom/node_names.h"
#include "unistring/export.h"
#include "unistring/unit_access.h"

namespace {

// Frees a half-made node with the strings it owns so far, and reports.
vrkNode *abandon(vrkNode *node, UniChar *first, UniChar *second, const char *callerFile,
                 int32_t callerLine, vrkDOMException *exception) {
    std::free(first);
    std::free(second);
    std::free(node);
    VRK_RAISE(exception, ERR_OUT_OF_MEMORY, callerFile, callerLine);
    return nullptr;
}

// The factories that make one copy: a new record of the type, with the
// length units at units copied into the field copyInto; or, when either
// block is refused, nothing kept and ERR_OUT_OF_MEMORY reported.  The
// record comes first, then the copy.
vrkNode *newNodeWithCopy(const char *callerFile, int32_t callerLine, int32_t type, UniChar *vrkNode::*copyInto,
                         const UniChar *units, int32_t length, vrkDOMException *exception) {
    vrkNode *node = vrk::newNodeRecord(callerFile, callerLine, exception);
    if (node == nullptr) return nullptr;
    UniChar *copy = vrkUniCharArrayToString(units, length);
    if (copy == nullptr) return abandon(node, nullptr, nullptr, callerFile, callerLine, exception);
    node->type = type;
    node->*copyInto = copy;
    return node;
}

// Text and CDATA sections: the copy is the value, the name is static.
vrkNode *createCharacterNode(const char *callerFile, int32_t callerLine, int32_t type,
                             const UniChar *name, const UniChar *text, int32_t textLength,
                             vrkDOMException *exception) {
    vrkNode *node = newNodeWithCopy(callerFile, callerLine, type, &vrkNode::value, text, textLength, exception);
    if (node != nullptr) node->name = vrk::staticName(name);
    return node;
}

}  // namespace

VRK_EXPORT vrkNode *vrkDOMReal_createEANode(const char *callerFile, int32_t callerLine, int32_t type,
                                            const UniChar *name, int32_t nameLength,
                                            vrkDOMException *exception) {
    return newNodeWithCopy(callerFile, callerLine, type, &vrkNode::name, name, nameLength, exception);
}

VRK_EXPORT vrkNode *vrkDOMReal_createEANodeNSP(const char *callerFile, int32_t callerLine, int32_t type,
                                               const UniChar *namespaceURI, int32_t uriLength,
                                               const UniChar *prefix, int32_t prefixLength,
                                               const UniChar *localName, int32_t localNameLength,
                                               vrkDOMException *exception) {
    vrkNode *node = vrk::newNodeRecord(callerFile, callerLine, exception);
    if (node == nullptr) return nullptr;
    // Every block is asked for before any result is looked at.
    node->prefix = vrkUniCharArrayToString(prefix, prefixLength);
    if (namespaceURI != nullptr) node->namespaceURI = vrkUniCharArrayToString(namespaceURI, uriLength);
    node->localName = vrkUniCharArrayToString(localName, localNameLength);
    const auto nameUnits = static_cast<std::size_t>(prefixLength) + 1 + static_cast<std::size_t>(localNameLength);
    node->name = static_cast<UniChar *>(std::malloc(vrk::stringBytes(nameUnits)));

    if (node->name == nullptr || node->prefix == nullptr || node->localName == nullptr ||
        (namespaceURI != nullptr && node->namespaceURI == nullptr)) {
        std::free(node->name);
        std::free(node->prefix);
        return abandon(node, node->localName, node->namespaceURI, callerFile, callerLine, exception);
    }
    node->type = type;
    UniChar *name = node->name;
    std::memcpy(name, prefix, static_cast<std::size_t>(prefixLength) * sizeof(UniChar));
    name[prefixLength] = ':';
    std::memcpy(name + prefixLength + 1, localName, static_cast<std::size_t>(localNameLength) * sizeof(UniChar));
    name[nameUnits] = 0;
    return node;
}

VRK_EXPORT vrkNode *vrkDOMReal_createTextNode(const char *callerFile, int32_t callerLine,
                                              const UniChar *text, int32_t textLength,
                                              vrkDOMException *exception) {
    return createCharacterNode(callerFile, callerLine, TEXT_NODE, vrk::kTextNodeName, text, textLength,
                               exception);
}

VRK_EXPORT vrkNode *vrkDOMReal_createCDATASection(const char *callerFile, int32_t callerLine,
                                                  const UniChar *text, int32_t textLength,
                                                  vrkDOMException *exception) {
    return createCharacterNode(callerFile, callerLine, CDATA_SECTION_NODE, vrk::kCDATASectionNodeName, text,
                               textLength, exception);
}

VRK_EXPORT vrkNode *vrkDOMReal_createProcessingInstruction(const char *callerFile, int32_t callerLine,
                                                           const UniChar *target, int32_t targetLength,
                                                           const UniChar *data, int32_t dataLength,
                                                           vrkDOMException *exception) {
    vrkNode *node = vrk::newNodeRecord(callerFile, callerLine, exception);
    if (node == nullptr) return nullptr;
    // Both copies are made before either is looked at.
    UniChar *name = vrkUniCharArrayToString(target, targetLength);
    UniChar *value = vrkUniCharArrayToString(data, dataLength);
    if (name == nullptr || value == nullptr) return abandon(node, name, value, callerFile, callerLine, exception);
    node->type = PROCESSING_INSTRUCTION_NODE;
    node->name = name;
    node->value = value;
    return node;
}
