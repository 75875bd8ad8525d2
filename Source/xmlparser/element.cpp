// Elements: content and end tags (start tags are in start_tag.cpp).
//
// The grammar nests element in content in element.  Produce_content reads
// the nesting with a loop instead of calling Produce_element for every
// child, so the depth of a document is limited by memory alone: the state of
// every open element is `current` and its name, which the node holds.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"
#include "xmlparser/token.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kEndTagStart{u"</"};

// What follows the content of the element `current`: its declarations go,
// then its end tag is read and matched against its start tag's name, which
// the node holds exactly as written.
int32_t finishElement(ProduceContext *context) {
    context->depth -= 1;
    popNameSpaceStack(context);
    Token endName;
    const int32_t end = Produce_ETag(context, &endName);
    if (end == PRODUCE_NO_MATCH) return VRK_PARSE_ERROR(context, ERR_END_TAG, context->cursor);
    if (end == PRODUCE_ERROR) return PRODUCE_ERROR;
    const vrkNode *element = context->current;
    context->current = element->parent;
    const int32_t length = vrk::tokenLength(endName);
    // The end tag's units hold no zero, so equal units followed by the
    // name's terminator mean equal names, without measuring the name (a
    // shorter name differs at its terminator, where the walk stops).
    const UniChar *name = element->name;
    for (int32_t i = 0; i < length; ++i) {
        if (name[i] != loadUnit(endName.start + i)) return VRK_PARSE_ERROR(context, ERR_END_TAG, context->cursor);
    }
    if (name[length] != 0) return VRK_PARSE_ERROR(context, ERR_END_TAG, context->cursor);
    return PRODUCE_OK;
}

// One item of content other than character data and elements.
int32_t produceOtherContent(ProduceContext *context) {
    int32_t result = Produce_Reference(context, 1);
    if (result == PRODUCE_NO_MATCH) result = Produce_CDSect(context);
    if (result == PRODUCE_NO_MATCH) result = Produce_PI(context);
    if (result == PRODUCE_NO_MATCH) result = Produce_Comment(context);
    return result;
}

}  // namespace

VRK_EXPORT int32_t Produce_ETag(ProduceContext *context, Token *name) {
    if (!vrk::startsWith(context->cursor, kEndTagStart)) return PRODUCE_NO_MATCH;
    context->cursor += kEndTagStart.length;
    name->start = context->cursor;
    Token qualified, prefix, local;
    if (Produce_QName(context, &qualified, &prefix, &local) != PRODUCE_OK) {
        return VRK_PARSE_ERROR(context, ERR_ETAG_NAME, context->cursor);
    }
    name->end = local.end;
    Produce_S(context);
    if (loadUnit(context->cursor) != '>') return VRK_PARSE_ERROR(context, ERR_TAG_END, context->cursor);
    ++context->cursor;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_element(ProduceContext *context) {
    Token name;
    int32_t hasContent = 0;
    const int32_t start = Produce_STagOREmptyElemTag(context, &name, &hasContent);
    if (start != PRODUCE_OK || hasContent == 0) return start;
    context->depth += 1;
    if (Produce_content(context) != PRODUCE_OK) return PRODUCE_ERROR;
    return finishElement(context);
}

VRK_EXPORT int32_t Produce_content(ProduceContext *context) {
    // Elements opened inside this call whose content is being read.
    int64_t open = 0;
    for (;;) {
        Produce_CharData(context);  // its error, if any, stays pending

        Token name;
        int32_t hasContent = 0;
        int32_t result = Produce_STagOREmptyElemTag(context, &name, &hasContent);
        if (result == PRODUCE_OK && hasContent != 0) {
            // A child with content: read its content in this same loop.
            context->depth += 1;
            ++open;
            continue;
        }
        if (result == PRODUCE_NO_MATCH) result = produceOtherContent(context);
        if (result == PRODUCE_OK) continue;
        if (result == PRODUCE_ERROR) return PRODUCE_ERROR;

        // Nothing matches: the content of the innermost open element ends.
        if (open == 0) return PRODUCE_OK;
        --open;
        if (finishElement(context) != PRODUCE_OK) return PRODUCE_ERROR;
    }
}
