// Character data and CDATA sections inside elements.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "unistring/find_unit.h"
#include "xmlparser/character_node.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kCDStart{u"<![CDATA["};
constexpr vrk::Literal kCDEnd{u"]]>"};

}  // namespace

VRK_EXPORT int32_t Produce_CharData(ProduceContext *context) {
    UniChar *const start = context->cursor;
    UniChar *p = start;
    for (;; ++p) {
        p = vrk::findUnit<'<', '&', ']'>(p, context->textEnd);
        if (p > context->textEnd) {
            // Text that no markup follows never becomes a node.
            context->cursor = p;
            return PRODUCE_NO_MATCH;
        }
        if (loadUnit(p) != ']' || vrk::startsWith(p, kCDEnd)) break;
    }
    context->cursor = p;
    if (p == start) return PRODUCE_NO_MATCH;
    const auto length = static_cast<int32_t>(p - start);
    return vrk::appendCharacterNode(context, TEXT_NODE, start, length, __LINE__);
}

VRK_EXPORT int32_t Produce_CDStart(ProduceContext *context) {
    if (!vrk::startsWith(context->cursor, kCDStart)) return PRODUCE_NO_MATCH;
    context->cursor += kCDStart.length;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_CDEnd(ProduceContext *context) {
    if (!vrk::startsWith(context->cursor, kCDEnd)) return PRODUCE_NO_MATCH;
    context->cursor += kCDEnd.length;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_CData(ProduceContext *context) {
    UniChar *p = context->cursor;
    for (; (p = vrk::findUnit<']'>(p, context->textEnd)) <= context->textEnd; ++p) {
        if (vrk::startsWith(p, kCDEnd)) break;
    }
    context->cursor = p;
    if (p > context->textEnd) return VRK_PARSE_ERROR(context, ERR_UNTERMINATED, p);
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_CDSect(ProduceContext *context) {
    if (Produce_CDStart(context) != PRODUCE_OK) return PRODUCE_NO_MATCH;
    UniChar *const start = context->cursor;
    if (Produce_CData(context) != PRODUCE_OK) return PRODUCE_ERROR;
    const auto length = static_cast<int32_t>(context->cursor - start);
    Produce_CDEnd(context);
    return vrk::appendCharacterNode(context, CDATA_SECTION_NODE, start, length, __LINE__);
}
