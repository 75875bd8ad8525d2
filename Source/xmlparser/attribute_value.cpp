// Attribute values: validated while scanned, resolved while copied into
// their node.
#include <cstdlib>
#include <cstring>

#include "unistring/export.h"
#include "unistring/find_unit.h"
#include "unistring/unit_access.h"
#include "dom/node_block.h"
#include "xmlparser/attribute_text.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;
using vrk::storeUnit;

namespace {

// The unit of the reference at context's cursor, which moves behind it;
// false, with the cursor unmoved, when none begins there.
bool resolveReference(ProduceContext *context, UniChar *unit) {
    return Produce_EntityRef(context, unit) == PRODUCE_OK || Produce_CharRef(context, unit) == PRODUCE_OK;
}

}  // namespace

int32_t vrk::readAttValue(ProduceContext *context, Token *value, int32_t *resolvedLength) {
    const UniChar quote = loadUnit(context->cursor);
    if (quote != '"' && quote != '\'') return PRODUCE_NO_MATCH;
    ++context->cursor;
    value->start = context->cursor;
    int32_t shortenedBy = 0;  // each reference resolves to one unit
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
            *resolvedLength = vrk::tokenLength(*value) - shortenedBy;
            return PRODUCE_OK;
        }
        // A < never begins a reference; a & that begins none ends the value.
        if (unit == '<') break;
        const int32_t reference = Produce_Reference(context, 2);
        if (reference == PRODUCE_ERROR) return PRODUCE_ERROR;
        if (reference == PRODUCE_NO_MATCH) break;
        shortenedBy += static_cast<int32_t>(context->cursor - p) - 1;
    }
    return VRK_PARSE_ERROR(context, ERR_ATTVALUE_END, context->cursor);
}

VRK_EXPORT int32_t Produce_AttValue(ProduceContext *context, Token *value) {
    int32_t resolvedLength = 0;
    return vrk::readAttValue(context, value, &resolvedLength);
}

UniChar *vrk::placeResolvedValue(UniChar *&room, const Token &value, int32_t resolvedLength) {
    const int32_t rawLength = tokenLength(value);
    if (resolvedLength == rawLength) return placeString(room, value.start, static_cast<std::size_t>(rawLength));
    // Runs between references are copied whole; each reference, which the
    // scan has accepted already, becomes its unit.
    UniChar *const string = room;
    UniChar *out = room;
    ProduceContext context{};
    context.textStart = value.start;
    for (UniChar *read = value.start; read <= value.end;) {
        UniChar *ampersand = findUnit<'&'>(read, value.end);
        const auto run = static_cast<std::size_t>(ampersand - read);
        std::memcpy(out, read, run * sizeof(UniChar));
        out += run;
        if (ampersand > value.end) break;
        context.cursor = ampersand;
        resolveReference(&context, out++);
        read = context.cursor;
    }
    *out = 0;
    room = out + 1;
    return string;
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
        UniChar resolved = unit;
        context.cursor = read;
        if (unit == '&' && resolveReference(&context, &resolved)) {
            read = context.cursor;
        } else {
            ++read;
        }
        storeUnit(write++, resolved);
    }
    storeUnit(write, 0);
    const auto length = static_cast<std::size_t>(write - s);
    return static_cast<UniChar *>(std::realloc(s, vrk::stringBytes(length)));
}
