// The prolog: an optional XML declaration, then comments, processing
// instructions and white space.  The declaration is judged and dropped.
#include <cctype>

#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/literal.h"
#include "xmlparser/parse_error.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kDeclOpen{u"<?xml"};
constexpr vrk::Literal kDeclClose{u"?>"};
constexpr vrk::Literal kVersion{u"version"};
constexpr vrk::Literal kEncoding{u"encoding"};
constexpr vrk::Literal kStandalone{u"standalone"};
constexpr vrk::Literal kYes{u"yes"};
constexpr vrk::Literal kNo{u"no"};
constexpr vrk::Literal kUTF8{u"UTF-8"};
constexpr vrk::Literal kUTF16{u"UTF-16"};

bool isAsciiAlnum(UniChar unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9');
}

bool isVersionNumChar(UniChar unit) {
    return isAsciiAlnum(unit) || unit == '_' || unit == '.' || unit == ':' || unit == '-';
}

bool isEncNameChar(UniChar unit) { return isAsciiAlnum(unit) || unit == '_' || unit == '.' || unit == '-'; }

// White space, the keyword, =, and the opening quote, which goes to *quote.
// PRODUCE_NO_MATCH (cursor unmoved) when the white space or the keyword is
// missing; PRODUCE_ERROR when the = or the quote is, the latter reported
// with `missingQuote`.
template <std::size_t N>
int32_t openValue(ProduceContext *context, const vrk::Literal<N> &keyword, int32_t missingQuote, UniChar *quote) {
    UniChar *noted = context->cursor;
    if (Produce_S(context) != PRODUCE_OK) return PRODUCE_NO_MATCH;
    if (!vrk::startsWith(context->cursor, keyword)) {
        context->cursor = noted;
        return PRODUCE_NO_MATCH;
    }
    context->cursor += keyword.length;
    if (Produce_Eq(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_EQ_MISSING, context->cursor);
    *quote = loadUnit(context->cursor);
    if (*quote != '\'' && *quote != '"') return VRK_PARSE_ERROR(context, missingQuote, context->cursor);
    ++context->cursor;
    return PRODUCE_OK;
}

int32_t closingQuote(ProduceContext *context, UniChar quote) {
    if (loadUnit(context->cursor) != quote) return VRK_PARSE_ERROR(context, ERR_CLOSING_QUOTE, context->cursor);
    ++context->cursor;
    return PRODUCE_OK;
}

// Whether the name at start, of the literal's length, equals the literal
// once its units below 256 are mapped through the system's toupper.
template <std::size_t N>
bool equalsFoldingCase(const UniChar *start, const vrk::Literal<N> &literal) {
    for (int32_t i = 0; i < vrk::Literal<N>::length; ++i) {
        const UniChar unit = loadUnit(start + i);
        const int32_t mapped = unit < 256 ? std::toupper(unit) : unit;
        if (mapped != literal.units[i]) return false;
    }
    return true;
}

}  // namespace

VRK_EXPORT int32_t Produce_VersionNum(ProduceContext *context) {
    UniChar *p = context->cursor;
    while (isVersionNumChar(loadUnit(p))) ++p;
    if (p == context->cursor) return PRODUCE_NO_MATCH;
    context->cursor = p;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_VersionInfo(ProduceContext *context) {
    UniChar quote = 0;
    const int32_t opened = openValue(context, kVersion, ERR_OPENING_QUOTE, &quote);
    if (opened != PRODUCE_OK) return opened;
    if (Produce_VersionNum(context) != PRODUCE_OK) return VRK_PARSE_ERROR(context, ERR_DECL_VALUE, context->cursor);
    return closingQuote(context, quote);
}

VRK_EXPORT int32_t Produce_EncName(ProduceContext *context) {
    UniChar *const start = context->cursor;
    UniChar *p = start;
    while (isEncNameChar(loadUnit(p))) ++p;
    context->cursor = p;
    // Names of five and six units must be the two encodings the library
    // reads; names of any other length pass unjudged.
    const auto length = p - start;
    const bool refused = (length == kUTF8.length && !equalsFoldingCase(start, kUTF8)) ||
                         (length == kUTF16.length && !equalsFoldingCase(start, kUTF16));
    if (refused) return VRK_PARSE_ERROR(context, ERR_BAD_ENCODING, start);
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_EncodingDecl(ProduceContext *context) {
    // A missing quote here has its own code, unlike the other two values.
    UniChar quote = 0;
    const int32_t opened = openValue(context, kEncoding, ERR_ENCODING_DECL, &quote);
    if (opened != PRODUCE_OK) return opened;
    if (Produce_EncName(context) == PRODUCE_ERROR) return PRODUCE_ERROR;
    return closingQuote(context, quote);
}

VRK_EXPORT int32_t Produce_SDDecl(ProduceContext *context) {
    UniChar quote = 0;
    const int32_t opened = openValue(context, kStandalone, ERR_OPENING_QUOTE, &quote);
    if (opened != PRODUCE_OK) return opened;
    if (vrk::startsWith(context->cursor, kYes)) {
        context->cursor += kYes.length;
    } else if (vrk::startsWith(context->cursor, kNo)) {
        context->cursor += kNo.length;
    } else {
        return VRK_PARSE_ERROR(context, ERR_DECL_VALUE, context->cursor);
    }
    return closingQuote(context, quote);
}

VRK_EXPORT int32_t Produce_XMLDecl(ProduceContext *context) {
    // The five units commit: whatever follows them is judged as a declaration.
    if (!vrk::startsWith(context->cursor, kDeclOpen)) return PRODUCE_NO_MATCH;
    context->cursor += kDeclOpen.length;
    const int32_t version = Produce_VersionInfo(context);
    if (version == PRODUCE_NO_MATCH) return VRK_PARSE_ERROR(context, ERR_XMLDECL_VERSION, context->cursor);
    if (version == PRODUCE_ERROR) return PRODUCE_ERROR;
    // An error in these two stays pending; the declaration goes on.
    Produce_EncodingDecl(context);
    Produce_SDDecl(context);
    Produce_S(context);
    if (!vrk::startsWith(context->cursor, kDeclClose)) {
        return VRK_PARSE_ERROR(context, ERR_XMLDECL_END, context->cursor);
    }
    context->cursor += kDeclClose.length;
    return PRODUCE_OK;
}

VRK_EXPORT int32_t Produce_prolog(ProduceContext *context) {
    if (Produce_XMLDecl(context) == PRODUCE_ERROR) return PRODUCE_ERROR;
    int32_t misc;
    do {
        misc = Produce_Misc(context);
    } while (misc == PRODUCE_OK);
    return misc == PRODUCE_ERROR ? PRODUCE_ERROR : PRODUCE_OK;
}
