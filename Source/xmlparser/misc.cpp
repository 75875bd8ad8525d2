// Comments, processing instructions, and Misc: what may stand around the
// root element.  Comments leave no trace in the tree.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "unistring/find_unit.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kCommentOpen{u"<!--"};
constexpr vrk::Literal kCommentClose{u"-->"};
constexpr vrk::Literal kTwoHyphens{u"--"};
constexpr vrk::Literal kPIOpen{u"<?"};
constexpr vrk::Literal kPIClose{u"?>"};

bool isOneOf(UniChar unit, char16_t upper, char16_t lower) { return unit == upper || unit == lower; }

int32_t lengthBetween(const UniChar *start, const UniChar *end) { return static_cast<int32_t>(end - start); }

}  // namespace

VRK_EXPORT int32_t Produce_Comment(ProduceContext *context) {
    if (!vrk::startsWith(context->cursor, kCommentOpen)) return PRODUCE_NO_MATCH;
    // The scan begins behind the opening: "<!-->" does not close itself.
    UniChar *p = context->cursor + kCommentOpen.length;
    for (;; ++p) {
        p = vrk::findUnit<'-'>(p, context->textEnd);
        if (p > context->textEnd) {
            context->cursor = p;
            return VRK_PARSE_ERROR(context, ERR_UNTERMINATED, p);
        }
        if (vrk::startsWith(p, kCommentClose)) {
            context->cursor = p + kCommentClose.length;
            return PRODUCE_OK;
        }
        if (vrk::startsWith(p, kTwoHyphens)) {
            context->cursor = p;
            return VRK_PARSE_ERROR(context, ERR_COMMENT_HYPHENS, p);
        }
    }
}

VRK_EXPORT int32_t Produce_PITarget(ProduceContext *context) {
    UniChar *noted = context->cursor;
    if (Produce_Name(context) != PRODUCE_OK) return PRODUCE_NO_MATCH;
    // Only the three letters xml, in any case, with white space behind them
    // are refused; the checks stop at the first mismatch, so the unit behind
    // a shorter name is never passed.
    if (isOneOf(loadUnit(noted), u'X', u'x') && isOneOf(loadUnit(noted + 1), u'M', u'm') &&
        isOneOf(loadUnit(noted + 2), u'L', u'l')) {
        const UniChar fourth = loadUnit(noted + 3);
        if (fourth == 0x09 || fourth == 0x20 || fourth == 0x0A || fourth == 0x0D) {
            context->cursor = noted;
            return PRODUCE_NO_MATCH;
        }
    }
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_PI(ProduceContext *context) {
    if (!vrk::startsWith(context->cursor, kPIOpen)) return PRODUCE_NO_MATCH;
    context->cursor += kPIOpen.length;
    UniChar *const target = context->cursor;
    if (Produce_PITarget(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_BAD_PI, context->cursor);
    UniChar *const targetEnd = context->cursor;
    Produce_S(context);

    UniChar *const data = context->cursor;
    UniChar *p = data;
    for (;; ++p) {
        const UniChar unit = loadUnit(p);
        if (unit == 0) {
            context->cursor = p;
            return VRK_PARSE_ERROR(context, ERR_BAD_PI, p);
        }
        if (unit == '?' && loadUnit(p + 1) == '>') break;
    }
    context->cursor = p;
    vrkNode *instruction = vrkDOMReal_createProcessingInstruction(
        VRK_PARSER_SITE, target, lengthBetween(target, targetEnd), data, lengthBetween(data, p),
        vrk::treeException(context));
    if (instruction == nullptr) return PRODUCE_ERROR;
    // Allowed under an element and under a document, root or not.
    vrkNodeReal_appendChild(VRK_PARSER_SITE, context->current, instruction, vrk::treeException(context));
    context->cursor = p + kPIClose.length;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_Misc(ProduceContext *context) {
    int32_t result = Produce_Comment(context);
    if (result != PRODUCE_NO_MATCH) return result;
    result = Produce_PI(context);
    if (result != PRODUCE_NO_MATCH) return result;
    return Produce_S(context);
}
