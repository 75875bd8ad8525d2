// Character classes, names, white space and the equals sign.  These are pure
// recognisers: they move the cursor, fill tokens and record nothing.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/char_class.h"
#include "xmlparser/scan.h"

using vrk::loadUnit;
namespace cc = vrk::charclass;

namespace {

// Accepts the unit at the cursor when it has one of `bits`.
int32_t acceptClass(ProduceContext *context, uint8_t bits) {
    if (!cc::has(loadUnit(context->cursor), bits)) return PRODUCE_NO_MATCH;
    ++context->cursor;
    return PRODUCE_OK;
}

// The first unit of a name is read without a look at textEnd; the terminator
// behind the text is in no class.  The units after it stop at textEnd.
int32_t scanName(ProduceContext *context, bool colonAllowed) {
    const UniChar first = loadUnit(context->cursor);
    if (!cc::has(first, cc::kNameStartBit) && !(colonAllowed && first == ':')) return PRODUCE_NO_MATCH;
    UniChar *p = context->cursor + 1;
    const UniChar *end = context->textEnd;
    if (colonAllowed) {
        // NameChar: an NCNameChar within the text, else a colon (read without
        // the bound, like the first unit).
        for (;; ++p) {
            if (p <= end && cc::has(loadUnit(p), cc::kNameCharBit)) continue;
            if (loadUnit(p) == ':') continue;
            break;
        }
    } else {
        p = vrk::scanNCNameChars(p, end);
    }
    context->cursor = p;
    return PRODUCE_OK;
}

}  // namespace

VRK_EXPORT int32_t Produce_BaseChar(ProduceContext *context) { return acceptClass(context, cc::kBaseCharBit); }
VRK_EXPORT int32_t Produce_Ideographic(ProduceContext *context) { return acceptClass(context, cc::kIdeographicBit); }
VRK_EXPORT int32_t Produce_CombiningChar(ProduceContext *context) { return acceptClass(context, cc::kCombiningCharBit); }
VRK_EXPORT int32_t Produce_Digit(ProduceContext *context) { return acceptClass(context, cc::kDigitBit); }
VRK_EXPORT int32_t Produce_Extender(ProduceContext *context) { return acceptClass(context, cc::kExtenderBit); }

VRK_EXPORT int32_t Produce_Letter(ProduceContext *context) {
    return acceptClass(context, cc::kBaseCharBit | cc::kIdeographicBit);
}

VRK_EXPORT int32_t Produce_NCNameChar(ProduceContext *context) {
    if (context->cursor > context->textEnd) return PRODUCE_NO_MATCH;
    return acceptClass(context, cc::kNameCharBit);
}

VRK_EXPORT int32_t Produce_NameChar(ProduceContext *context) {
    if (Produce_NCNameChar(context) == PRODUCE_OK) return PRODUCE_OK;
    if (loadUnit(context->cursor) != ':') return PRODUCE_NO_MATCH;
    ++context->cursor;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_NCName(ProduceContext *context) { return scanName(context, false); }
VRK_EXPORT int32_t Produce_Prefix(ProduceContext *context) { return Produce_NCName(context); }
VRK_EXPORT int32_t Produce_LocalPart(ProduceContext *context) { return Produce_NCName(context); }
VRK_EXPORT int32_t Produce_Name(ProduceContext *context) { return scanName(context, true); }

VRK_EXPORT int32_t Produce_QName(ProduceContext *context, Token *qualified, Token *prefix, Token *local) {
    UniChar *begin = context->cursor;
    qualified->start = prefix->start = local->start = begin;
    if (Produce_Prefix(context) != PRODUCE_OK) return PRODUCE_NO_MATCH;
    if (loadUnit(context->cursor) == ':') {
        prefix->end = context->cursor - 1;
        ++context->cursor;
        local->start = context->cursor;
        if (Produce_LocalPart(context) != PRODUCE_OK) {
            context->cursor = begin;
            return PRODUCE_NO_MATCH;
        }
    } else {
        // Without a colon the prefix scan has already read the local part:
        // the same units, with the same rule.
        prefix->start = prefix->end = nullptr;
    }
    local->end = qualified->end = context->cursor - 1;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_S(ProduceContext *context) {
    UniChar *p = vrk::skipWhiteSpace(context->cursor);
    if (p == context->cursor) return PRODUCE_NO_MATCH;
    context->cursor = p;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_Eq(ProduceContext *context) {
    UniChar *noted = context->cursor;
    UniChar *p = vrk::skipWhiteSpace(noted);
    if (loadUnit(p) != '=') return PRODUCE_NO_MATCH;
    context->cursor = vrk::skipWhiteSpace(p + 1);
    return PRODUCE_OK;
}
