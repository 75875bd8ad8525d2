// The parse entry: from the caller's bytes to a document.
#include <cstdlib>

#include "unistring/export.h"
#include "unistring/text_limits.h"
#include "xmlparser/document.h"
#include "unistring/unit_access.h"

namespace {

void failEntry(vrkParseError *result, int32_t code, const char *message, int32_t line) {
    result->code = code;
    result->file = "Source/dom";
    result->line = line;
    result->callerFile = "Source/dom";
    result->callerLine = line;
    result->offset = 0;
    result->message = message;
}

// Byte-swaps n units in place; the buffer may start at an odd address.
void swapUnits(UniChar *text, int32_t n) {
    auto *bytes = reinterpret_cast<unsigned char *>(text);
    for (int32_t i = 0; i < n; ++i) {
        const unsigned char low = bytes[2 * i];
        bytes[2 * i] = bytes[2 * i + 1];
        bytes[2 * i + 1] = low;
    }
}

}  // namespace

VRK_EXPORT vrkNode *vrkDOM_parse(void *text, vrkParseError *result) {
    ProduceContext context{};
    auto *units = static_cast<UniChar *>(text);

    // The detection only asks whether the text has two bytes, so the length
    // passed stops there instead of measuring the whole text.
    const auto *bytes = static_cast<const unsigned char *>(text);
    const int32_t length = bytes[0] == 0 ? 1 : 2;

    const int32_t encoding = IdentifyCharacterEncoding(text, length);
    if (encoding == ENCODING_UNKNOWN) {
        failEntry(result, ERR_BAD_ENCODING, "Must be UTF-8 or UTF-16 encoding", __LINE__);
        return nullptr;
    }
    // Every offset must fit 32 bits: a longer text is refused before
    // anything is decoded or swapped.
    int64_t count = 0;
    if (encoding == ENCODING_UTF8) {
        context.textStart = vrk::decodeUtf8Text(static_cast<const char *>(text), &count);
    } else {
        count = vrk::unitCount(units);
    }
    if (count > vrk::kMaxTextUnits) {
        failEntry(result, ERR_TEXT_TOO_LONG, "Text too long: more than 2147483647 units.", __LINE__);
        return nullptr;
    }
    if (encoding == ENCODING_UTF8) {
        if (context.textStart == nullptr) {
            failEntry(result, ERR_ENCODING_DECL, "Unable to process UTF-8 encoding, probably corrupt.", __LINE__);
            return nullptr;
        }
    } else {
        if (encoding == ENCODING_UTF16_SWAPPED) swapUnits(units, static_cast<int32_t>(count));
        context.textStart = units;
    }

    vrkNode *document = nullptr;
    if (vrk::produceDocument(&context, static_cast<int32_t>(count)) == PRODUCE_OK) {
        document = context.document;
    } else {
        *result = context.error;
        vrkDOM_destroyNode(context.document, 1);
    }
    if (context.textStart != units) std::free(context.textStart);
    return document;
}
