// Looking prefixes up on the namespace stack and giving parsed nodes their
// namespace names.
#include "unistring/export.h"
#include "xmlparser/parse_error.h"

namespace {

constexpr UniChar kXmlPrefix[] = {'x', 'm', 'l', 0};

void setToken(Token *out, const UniChar *start, int32_t length) {
    out->start = const_cast<UniChar *>(start);
    out->end = out->start + length - 1;
}

}  // namespace

VRK_EXPORT int32_t getNameSpaceURI(ProduceContext *context, const UniChar *prefix, Token *out) {
    // The reserved prefixes come first and fold case: XML and Xmlns count.
    if (prefix != nullptr && vrkunistrcmp(prefix, kXmlPrefix) == 0) {
        setToken(out, XML10_NAMESPACE, vrkunistrlen(XML10_NAMESPACE));
        return 1;
    }
    if (prefix != nullptr && vrkunistrcmp(prefix, UCSxmlns) == 0) {
        setToken(out, XMLNS_URI, vrkunistrlen(XMLNS_URI));
        return 1;
    }
    const int32_t prefixLength = prefix == nullptr ? 0 : vrkunistrlen(prefix);
    for (const NameSpaceStackEntry *entry = context->nameSpaceStack; entry != nullptr; entry = entry->next) {
        const bool found = prefix == nullptr
                               ? entry->prefix == nullptr
                               : entry->prefix != nullptr && entry->prefixLength == prefixLength &&
                                     vrkunistrncmp(entry->prefix, prefix, prefixLength) == 0;
        if (found) {
            setToken(out, entry->uri, entry->uriLength);
            return 1;
        }
    }
    return 0;
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
    if (node->localName == nullptr) node->localName = vrkunistrdup(node->name);
    node->namespaceURI = vrkUniCharArrayToString(uri.start, static_cast<int32_t>(uri.end - uri.start + 1));
    if (node->localName == nullptr || node->namespaceURI == nullptr) {
        VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        return 0;
    }
    return 1;
}
