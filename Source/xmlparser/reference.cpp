// Entity and character references.
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/character_node.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kHexOpening{u"&#x"};
constexpr vrk::Literal kDecimalOpening{u"&#"};

// The value of a digit in the given base, or -1.
int32_t digitValue(UniChar unit, bool hexadecimal) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (!hexadecimal) return -1;
    if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
    return -1;
}

}  // namespace

VRK_EXPORT int32_t Produce_Char(uint32_t value) {
    const bool isChar = value == 0x09 || value == 0x0A || value == 0x0D ||
                        (value >= 0x20 && value <= 0xD7FF) || (value >= 0xE000 && value <= 0xFFFD);
    return isChar ? PRODUCE_OK : PRODUCE_NO_MATCH;
}

VRK_EXPORT int32_t Produce_EntityRef(ProduceContext *context, UniChar *out) {
    if (loadUnit(context->cursor) != '&') return PRODUCE_NO_MATCH;
    for (const PredefEntity &entity : predefEnt) {
        if (vrk::startsWith(context->cursor, entity.text, entity.length)) {
            context->cursor += entity.length;
            *out = entity.character;
            return PRODUCE_OK;
        }
    }
    return PRODUCE_NO_MATCH;
}

VRK_EXPORT int32_t Produce_CharRef(ProduceContext *context, UniChar *out) {
    const bool hexadecimal = vrk::startsWith(context->cursor, kHexOpening);
    if (!hexadecimal && !vrk::startsWith(context->cursor, kDecimalOpening)) return PRODUCE_NO_MATCH;
    UniChar *p = context->cursor + (hexadecimal ? kHexOpening.length : kDecimalOpening.length);

    // The value wraps modulo 2^32; only the wrapped value is judged.
    uint32_t value = 0;
    int32_t digits = 0;
    const uint32_t base = hexadecimal ? 16 : 10;
    for (int32_t digit; (digit = digitValue(loadUnit(p), hexadecimal)) >= 0; ++p, ++digits) {
        value = value * base + static_cast<uint32_t>(digit);
    }
    context->cursor = p;
    if (loadUnit(p) != ';') return VRK_PARSE_ERROR(context, ERR_CHAR_REF, p);
    ++context->cursor;
    if (digits == 0 || Produce_Char(value) != PRODUCE_OK) {
        return VRK_PARSE_ERROR(context, ERR_CHAR_REF, context->cursor);
    }
    *out = static_cast<UniChar>(value);
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_Reference(ProduceContext *context, int32_t mode) {
    UniChar unit = 0;
    int32_t result = Produce_EntityRef(context, &unit);
    if (result == PRODUCE_NO_MATCH) result = Produce_CharRef(context, &unit);
    if (result != PRODUCE_OK || mode != 1) return result;

    // In content each reference becomes a text node of its one unit.
    return vrk::appendCharacterNode(context, TEXT_NODE, &unit, 1, __LINE__);
}
