// Attributes of a start tag: namespace declarations and ordinary attributes.
#include "dom/node_block.h"
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/attribute_text.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"

namespace {

constexpr vrk::Literal kXmlnsColon{u"xmlns:"};
constexpr int32_t kXmlnsLength = 5;  // "xmlns", the literal without its colon

// Gives up an attribute node that is not in the map.
int32_t dropAttribute(vrkNode *attribute) {
    vrkDOM_destroyNode(attribute, 0);
    return PRODUCE_ERROR;
}

}  // namespace

VRK_EXPORT int32_t Produce_PrefixedAttName(ProduceContext *context, Token *name, Token *prefix, Token *local) {
    name->start = prefix->start = context->cursor;
    if (!vrk::startsWith(context->cursor, kXmlnsColon)) return PRODUCE_NO_MATCH;
    prefix->end = context->cursor + kXmlnsLength - 1;
    context->cursor += kXmlnsColon.length;
    local->start = context->cursor;
    if (Produce_NCName(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_NSATT_NAME, context->cursor);
    local->end = name->end = context->cursor - 1;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_DefaultAttName(ProduceContext *context, Token *token) {
    // Only the five units count: xmlnsfoo matches here too.
    if (!vrk::startsWith(context->cursor, kXmlnsColon.units, kXmlnsLength)) return PRODUCE_NO_MATCH;
    token->start = context->cursor;
    token->end = context->cursor + kXmlnsLength - 1;
    context->cursor += kXmlnsLength;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_NSAttName(ProduceContext *context, Token *name, Token *prefix, Token *local) {
    const int32_t prefixed = Produce_PrefixedAttName(context, name, prefix, local);
    if (prefixed != PRODUCE_NO_MATCH) return prefixed;
    prefix->start = nullptr;
    if (Produce_DefaultAttName(context, local) != PRODUCE_OK) return PRODUCE_NO_MATCH;
    *name = *local;
    return PRODUCE_OK;
}

int32_t vrk::readAttribute(ProduceContext *context, AttributeText *attribute) {
    Token &name = attribute->name;
    Token &prefix = attribute->prefix;
    Token &local = attribute->local;
    attribute->uri.start = attribute->uri.end = nullptr;
    const int32_t declaration = Produce_NSAttName(context, &name, &prefix, &local);
    if (declaration == PRODUCE_ERROR) return PRODUCE_ERROR;
    const bool isDeclaration = declaration == PRODUCE_OK;
    if (!isDeclaration && Produce_QName(context, &name, &prefix, &local) != PRODUCE_OK) return PRODUCE_NO_MATCH;

    if (Produce_Eq(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_EQ_MISSING, context->cursor);
    const int32_t quoted = readAttValue(context, &attribute->value, &attribute->resolvedLength);
    if (quoted == PRODUCE_NO_MATCH) return VRK_PARSE_ERROR(context, ERR_OPENING_QUOTE, context->cursor);
    if (quoted == PRODUCE_ERROR) return PRODUCE_ERROR;

    // The stack keeps the raw text between the quotes, references unresolved.
    if (isDeclaration) {
        const Token &declared = prefix.start == nullptr ? prefix : local;
        if (pushNameSpaceStack(context, &declared, &attribute->value) == 0) {
            return VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        }
    }
    return PRODUCE_OK;
}

vrkNode *vrk::makeAttributeNode(const AttributeText &attribute) {
    const bool prefixed = attribute.prefix.start != nullptr;
    const bool namespaced = attribute.uri.start != nullptr;
    std::size_t units = tokenRoom(attribute.name) + roomFor(attribute.resolvedLength);
    if (prefixed) units += tokenRoom(attribute.prefix) + tokenRoom(attribute.local);
    if (namespaced) units += tokenRoom(attribute.uri);
    vrkNode *node = allocateNodeBlock(ATTRIBUTE_NODE, units);
    if (node == nullptr) return nullptr;
    UniChar *room = roomOf(node);
    node->name = placeToken(room, attribute.name);
    if (prefixed) {
        node->prefix = placeToken(room, attribute.prefix);
        node->localName = placeToken(room, attribute.local);
    }
    if (namespaced) node->namespaceURI = placeToken(room, attribute.uri);
    node->value = placeResolvedValue(room, attribute.value, attribute.resolvedLength);
    return node;
}

// An attribute read on its own, outside a start tag, has no namespace name
// yet (resolveNameSpace gives it one).
VRK_EXPORT int32_t Produce_Attribute(ProduceContext *context) {
    vrk::AttributeText text;
    const int32_t read = vrk::readAttribute(context, &text);
    if (read != PRODUCE_OK) return read;
    if (context->error.code != 0) return PRODUCE_ERROR;  // as every factory refuses then
    vrkNode *attribute = vrk::makeAttributeNode(text);
    if (attribute == nullptr) return vrk::recordNodeRefused(context, __LINE__);

    vrkNode *displaced =
        vrkElementReal_setAttributeNode(VRK_PARSER_SITE, context->current, attribute, vrk::treeException(context));
    if (displaced == nullptr) {
        // A caller outside the parser may hand in a current that is no
        // element: the set is refused and the new node must not be lost.
        return attribute->parent != nullptr ? PRODUCE_OK : dropAttribute(attribute);
    }
    // The second attribute of a name stays in the map; the first goes.
    vrkDOM_destroyNode(displaced, 0);
    return vrk::recordDuplicateAttribute(context);
}

int32_t vrk::recordDuplicateAttribute(ProduceContext *context) {
    if (context->error.code == 0) context->error.message = "Duplicate attribute name.";
    return VRK_PARSE_ERROR(context, ERR_DUPLICATE_ATTRIBUTE, context->cursor);
}
