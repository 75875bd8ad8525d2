// Attribute values: validated while scanned, resolved afterwards in the
// node's own copy.
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "unistring/find_unit.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;
using vrk::storeUnit;

VRK_EXPORT int32_t Produce_AttValue(ProduceContext *context, Token *value) {
    const UniChar quote = loadUnit(context->cursor);
    if (quote != '"' && quote != '\'') return PRODUCE_NO_MATCH;
    ++context->cursor;
    value->start = context->cursor;
    for (;;) {
        // Every unit but &, < and the quote passes unexamined.
        UniChar *p = quote == '"' ? vrk::findUnit<'"', '&', '<'>(context->cursor, context->textEnd)
                                  : vrk::findUnit<'\'', '&', '<'>(context->cursor, context->textEnd);
        context->cursor = p;
        if (p > context->textEnd) break;
        const UniChar unit = loadUnit(p);
        if (unit == quote) {
            value->end = p - 1;
            ++context->cursor;
            return PRODUCE_OK;
        }
        // A < never begins a reference; a & that begins none ends the value.
        if (unit == '<') break;
        const int32_t reference = Produce_Reference(context, 2);
        if (reference == PRODUCE_ERROR) return PRODUCE_ERROR;
        if (reference == PRODUCE_NO_MATCH) break;
    }
    return VRK_PARSE_ERROR(context, ERR_ATTVALUE_END, context->cursor);
}

// Resolves in one pass, writing each resolved unit in place of its & and
// moving the rest down behind it; a unit produced by a reference is never
// read again.  The block shrinks once, and only when a reference was there.
// A & that begins no reference (which the parser never hands in) is kept as
// it is.
VRK_EXPORT UniChar *AttrValueRefResolve(UniChar *s) {
    UniChar *read = vrkunistrchr(s, '&');
    if (read == nullptr) return s;
    UniChar *write = read;
    ProduceContext context{};
    context.textStart = s;  // an offset, should a reference be reported, stays inside s
    for (UniChar unit; (unit = loadUnit(read)) != 0;) {
        if (unit != '&') {
            storeUnit(write++, unit);
            ++read;
            continue;
        }
        UniChar resolved = 0;
        context.cursor = read;
        if (Produce_EntityRef(&context, &resolved) == PRODUCE_OK ||
            Produce_CharRef(&context, &resolved) == PRODUCE_OK) {
            storeUnit(write++, resolved);
            read = context.cursor;
        } else {
            storeUnit(write++, unit);
            ++read;
        }
    }
    storeUnit(write, 0);
    const auto length = static_cast<std::size_t>(write - s);
    return static_cast<UniChar *>(std::realloc(s, vrk::stringBytes(length)));
}
