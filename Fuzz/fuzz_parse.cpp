// Raw bytes to the parser.  A first byte below 8 picks how the rest is
// presented (UTF-8, UTF-16 in either order, with or without a mark, odd
// addresses); any other input is UTF-8 text as it is.
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    fuzz::Text text = fuzz::fromInput(data, size);
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(text.start, &error);
    if (document != nullptr) {
        if (document->type != DOCUMENT_NODE || vrkDOM_getDocumentElement(document) == nullptr)
            fuzz::fail("parse gave no document with an element");
        vrkDOM_destroyNode(document, 1);
    } else {
        fuzz::checkFailure(error, text);
    }
    return 0;
}
