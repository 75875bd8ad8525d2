// Attributes of a start tag: namespace declarations and ordinary attributes.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"
#include "xmlparser/tag_attributes.h"

namespace {

constexpr vrk::Literal kXmlnsColon{u"xmlns:"};
constexpr int32_t kXmlnsLength = 5;  // "xmlns", the literal without its colon

int32_t lengthOf(const Token &token) { return static_cast<int32_t>(token.end - token.start + 1); }

// Gives up an attribute node that is not in the map yet.
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

VRK_EXPORT int32_t Produce_Attribute(ProduceContext *context) { return vrk::produceAttribute(context, nullptr); }

int32_t vrk::produceAttribute(ProduceContext *context, TagAttributes *tag) {
    Token name, prefix, local, value;
    const int32_t declaration = Produce_NSAttName(context, &name, &prefix, &local);
    if (declaration == PRODUCE_ERROR) return PRODUCE_ERROR;
    const bool isDeclaration = declaration == PRODUCE_OK;
    if (!isDeclaration && Produce_QName(context, &name, &prefix, &local) != PRODUCE_OK) return PRODUCE_NO_MATCH;

    if (Produce_Eq(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_EQ_MISSING, context->cursor);
    const int32_t quoted = Produce_AttValue(context, &value);
    if (quoted == PRODUCE_NO_MATCH) return VRK_PARSE_ERROR(context, ERR_OPENING_QUOTE, context->cursor);
    if (quoted == PRODUCE_ERROR) return PRODUCE_ERROR;

    // The stack keeps the raw text between the quotes, references unresolved.
    if (isDeclaration) {
        const Token &declared = prefix.start == nullptr ? prefix : local;
        if (pushNameSpaceStack(context, &declared, &value) == 0) {
            return VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        }
    }

    vrkDOMException *exception = vrk::treeException(context);
    vrkNode *attribute =
        prefix.start != nullptr
            ? vrkDOMReal_createEANodeNSP(VRK_PARSER_SITE, ATTRIBUTE_NODE, nullptr, 0, prefix.start,
                                         lengthOf(prefix), local.start, lengthOf(local), exception)
            : vrkDOMReal_createEANode(VRK_PARSER_SITE, ATTRIBUTE_NODE, name.start, lengthOf(name), exception);
    if (attribute == nullptr) return PRODUCE_ERROR;
    if (vrkNodeReal_setNodeValue(VRK_PARSER_SITE, attribute, value.start, lengthOf(value), exception) == 0) {
        return dropAttribute(attribute);
    }
    UniChar *resolved = AttrValueRefResolve(attribute->value);
    if (resolved == nullptr) {
        VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        return dropAttribute(attribute);
    }
    attribute->value = resolved;

    vrkNode *displaced = tag != nullptr ? vrk::setTagAttribute(*tag, attribute)
                                        : vrkElementReal_setAttributeNode(VRK_PARSER_SITE, context->current,
                                                                          attribute, exception);
    if (displaced == nullptr) {
        // A caller outside the parser may hand in a current that is no
        // element: the set is refused and the new node must not be lost.
        return attribute->parent != nullptr ? PRODUCE_OK : dropAttribute(attribute);
    }
    // The second attribute of a name stays in the map; the first goes.
    vrkDOM_destroyNode(displaced, 0);
    if (context->error.code == 0) context->error.message = "Duplicate attribute name.";
    return VRK_PARSE_ERROR(context, ERR_DUPLICATE_ATTRIBUTE, context->cursor);
}
