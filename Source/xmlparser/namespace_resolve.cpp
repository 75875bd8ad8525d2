// Looking prefixes up on the namespace stack and giving parsed nodes their
// namespace names.
#include "dom/node_block.h"
#include "unistring/export.h"
#include "unistring/fold_case.h"
#include "xmlparser/namespace_stack.h"
#include "xmlparser/parse_error.h"

namespace {

constexpr UniChar kXmlPrefix[] = {'x', 'm', 'l', 0};

void setToken(Token *out, const UniChar *start, int32_t length) {
    out->start = const_cast<UniChar *>(start);
    out->end = out->start + length - 1;
}

// The nearest declaration of a prefix: from what the top entry remembers,
// or by a walk from the top down, whose answer the top then remembers.
const NameSpaceStackEntry *findPrefix(const NameSpaceStackEntry *top, const UniChar *prefix, int32_t prefixLength) {
    if (top == nullptr) return nullptr;
    vrk::StackRecord *record = vrk::recordOf(top);
    for (const NameSpaceStackEntry *known : record->remembered) {
        if (vrk::declaresPrefix(known, prefix, prefixLength)) return known;
    }
    for (const NameSpaceStackEntry *entry = top; entry != nullptr; entry = entry->next) {
        if (vrk::declaresPrefix(entry, prefix, prefixLength)) {
            record->remembered[record->replaceNext] = entry;
            record->replaceNext = (record->replaceNext + 1) % vrk::StackRecord::kRemembered;
            return entry;
        }
    }
    return nullptr;
}

}  // namespace

namespace vrk {

bool findNamespace(ProduceContext *context, const UniChar *prefix, int32_t prefixLength, Token *out) {
    // The reserved prefixes come first and fold case: XML and Xmlns count.
    if (prefix != nullptr && equalsFolded(prefix, prefixLength, kXmlPrefix)) {
        setToken(out, XML10_NAMESPACE, vrkunistrlen(XML10_NAMESPACE));
        return true;
    }
    if (prefix != nullptr && equalsFolded(prefix, prefixLength, UCSxmlns)) {
        setToken(out, XMLNS_URI, vrkunistrlen(XMLNS_URI));
        return true;
    }
    const NameSpaceStackEntry *found = nullptr;
    if (prefix == nullptr) {
        // The nearest default declaration, remembered by the top entry.
        if (context->nameSpaceStack != nullptr) found = recordOf(context->nameSpaceStack)->nearestDefault;
    } else {
        found = findPrefix(context->nameSpaceStack, prefix, prefixLength);
    }
    if (found == nullptr) return false;
    setToken(out, found->uri, found->uriLength);
    return true;
}

}  // namespace vrk

VRK_EXPORT int32_t getNameSpaceURI(ProduceContext *context, const UniChar *prefix, Token *out) {
    return vrk::findNamespace(context, prefix, prefix == nullptr ? 0 : vrkunistrlen(prefix), out) ? 1 : 0;
}

VRK_EXPORT int32_t resolveNameSpace(ProduceContext *context, vrkNode *node) {
    // The default namespace does not apply to attributes, xmlns included.
    if (node->prefix == nullptr && node->type == ATTRIBUTE_NODE) return 1;
    Token uri;
    if (getNameSpaceURI(context, node->prefix, &uri) == 0) {
        if (node->prefix == nullptr) return 0;
        VRK_PARSE_ERROR(context, ERR_UNDECLARED_PREFIX, context->cursor);
        return 0;
    }
    // Both strings get blocks of their own: the node's block has no room
    // reserved for them.
    if (node->localName == nullptr) node->localName = vrkunistrdup(node->name);
    vrk::releaseNodeString(node, node->namespaceURI);
    node->namespaceURI = vrkUniCharArrayToString(uri.start, static_cast<int32_t>(uri.end - uri.start + 1));
    if (node->localName == nullptr || node->namespaceURI == nullptr) {
        VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        return 0;
    }
    return 1;
}
