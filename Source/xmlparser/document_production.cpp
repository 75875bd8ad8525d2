// document ::= prolog element Misc*
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/document.h"
#include "xmlparser/parse_error.h"

namespace {

constexpr UniChar kByteOrderMark = 0xFEFF;

int32_t abandonDocument(ProduceContext *context) {
    vrkDOM_destroyNode(context->document, 1);
    context->document = nullptr;
    return PRODUCE_ERROR;
}

}  // namespace

VRK_EXPORT int32_t Produce_document(ProduceContext *context) {
    return vrk::produceDocument(context, vrkunistrlen(context->textStart));
}

int32_t vrk::produceDocument(ProduceContext *context, int32_t length) {
    context->cursor = context->textStart;
    context->textEnd = context->textStart + length - 1;
    context->document = nullptr;
    context->current = nullptr;
    context->depth = 0;
    context->nameSpaceStack = nullptr;
    context->error.code = 0;
    context->error.offset = 0;
    context->error.message = nullptr;

    // The mark is skipped but stays counted in every offset.
    if (vrk::loadUnit(context->cursor) == kByteOrderMark) ++context->cursor;

    context->document = vrkDOMReal_createDocument(VRK_PARSER_SITE, vrk::treeException(context));
    if (context->document == nullptr) return PRODUCE_ERROR;
    context->current = context->document;

    // A failed prolog leaves the document for the entry to destroy.
    if (Produce_prolog(context) != PRODUCE_OK) return PRODUCE_ERROR;

    const int32_t root = Produce_element(context);
    if (root == PRODUCE_NO_MATCH) {
        // Replaces an error left pending by the XML declaration.
        vrkParseError &error = context->error;
        error.code = ERR_NO_ROOT_ELEMENT;
        error.file = "Source/xmlparser";
        error.line = __LINE__;
        error.offset = vrk::offsetOf(context, context->cursor);
    }
    if (root != PRODUCE_OK) {
        context->depth = 0;
        popNameSpaceStack(context);
        return abandonDocument(context);
    }

    // Whatever follows the last comment, PI or white space is not examined.
    int32_t misc;
    do {
        misc = Produce_Misc(context);
    } while (misc == PRODUCE_OK);
    if (misc == PRODUCE_ERROR || context->error.code != 0) return abandonDocument(context);
    return PRODUCE_OK;
}
