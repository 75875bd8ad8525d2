// The node factories.  Each node is one block: the record with its strings
// behind it (dom/node_block.h), so a factory either returns a whole node or
// makes nothing and reports ERR_OUT_OF_MEMORY.
#include "dom/node_block.h"
#include "dom/node_names.h"
#include "unistring/export.h"

namespace {

// Text and CDATA sections: the copy is the value, the name is static.
vrkNode *createCharacterNode(const char *callerFile, int32_t callerLine, int32_t type, const UniChar *name,
                             const UniChar *text, int32_t textLength, vrkDOMException *exception) {
    vrkNode *node = vrk::newNodeBlock(callerFile, callerLine, type, vrk::roomFor(textLength), exception);
    if (node == nullptr) return nullptr;
    UniChar *room = vrk::roomOf(node);
    node->name = vrk::staticName(name);
    node->value = vrk::placeString(room, text, static_cast<std::size_t>(textLength));
    return node;
}

}  // namespace

VRK_EXPORT vrkNode *vrkDOMReal_createEANode(const char *callerFile, int32_t callerLine, int32_t type,
                                            const UniChar *name, int32_t nameLength,
                                            vrkDOMException *exception) {
    vrkNode *node = vrk::newNodeBlock(callerFile, callerLine, type, vrk::roomFor(nameLength), exception);
    if (node == nullptr) return nullptr;
    UniChar *room = vrk::roomOf(node);
    node->name = vrk::placeString(room, name, static_cast<std::size_t>(nameLength));
    return node;
}

VRK_EXPORT vrkNode *vrkDOMReal_createEANodeNSP(const char *callerFile, int32_t callerLine, int32_t type,
                                               const UniChar *namespaceURI, int32_t uriLength,
                                               const UniChar *prefix, int32_t prefixLength,
                                               const UniChar *localName, int32_t localNameLength,
                                               vrkDOMException *exception) {
    // name, prefix, local name and namespace name; the name is prefix:local.
    const std::size_t prefixRoom = vrk::roomFor(prefixLength);
    const std::size_t localRoom = vrk::roomFor(localNameLength);
    const std::size_t uriRoom = namespaceURI != nullptr ? vrk::roomFor(uriLength) : 0;
    vrkNode *node = vrk::newNodeBlock(callerFile, callerLine, type, 2 * (prefixRoom + localRoom) + uriRoom,
                                      exception);
    if (node == nullptr) return nullptr;
    UniChar *room = vrk::roomOf(node);
    node->name = vrk::placeString(room, prefix, prefixRoom - 1);
    room[-1] = ':';  // the prefix's terminator, with the local part behind it
    vrk::placeString(room, localName, localRoom - 1);
    node->prefix = vrk::placeString(room, prefix, prefixRoom - 1);
    node->localName = vrk::placeString(room, localName, localRoom - 1);
    if (namespaceURI != nullptr) node->namespaceURI = vrk::placeString(room, namespaceURI, uriRoom - 1);
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
    vrkNode *node = vrk::newNodeBlock(callerFile, callerLine, PROCESSING_INSTRUCTION_NODE,
                                      vrk::roomFor(targetLength) + vrk::roomFor(dataLength), exception);
    if (node == nullptr) return nullptr;
    UniChar *room = vrk::roomOf(node);
    node->name = vrk::placeString(room, target, static_cast<std::size_t>(targetLength));
    node->value = vrk::placeString(room, data, static_cast<std::size_t>(dataLength));
    return node;
}
