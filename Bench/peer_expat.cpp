// expat: a namespace-aware streaming parse with trivial handlers.  It
// builds no tree, so it shows what reading the text alone costs.
#include <expat.h>

#include <climits>

#include "cases.h"
#include "peer_support.h"

namespace vrkperf {
namespace {

struct Tally {
    std::size_t elements = 0;
    std::size_t textBytes = 0;
};

void XMLCALL startElement(void *userData, const XML_Char *, const XML_Char **) {
    ++static_cast<Tally *>(userData)->elements;
}

void XMLCALL endElement(void *, const XML_Char *) {}

void XMLCALL characters(void *userData, const XML_Char *, int length) {
    static_cast<Tally *>(userData)->textBytes += static_cast<std::size_t>(length);
}

// True, or false with expat's message in *message when one is asked for.
bool parse(Document &document, Tally &tally, const char **message = nullptr) {
    XML_Parser parser = XML_ParserCreateNS(nullptr, '\x1F');
    XML_SetUserData(parser, &tally);
    XML_SetElementHandler(parser, startElement, endElement);
    XML_SetCharacterDataHandler(parser, characters);
    const bool parsed = XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
    if (!parsed && message != nullptr) *message = XML_ErrorString(XML_GetErrorCode(parser));
    XML_ParserFree(parser);
    return parsed;
}

void parseOnly(benchmark::State &state, Document &document) {
    Tally tally;
    const char *message = "too long";
    if (document.size() > static_cast<std::size_t>(INT_MAX) || !parse(document, tally, &message)) {
        state.SkipWithError(message);
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(parse(document, tally));
    }
    reportInput(state, document);
    state.counters["elements"] = static_cast<double>(tally.elements) / static_cast<double>(state.iterations() + 1);
}

}  // namespace

// Named like the tree builders' case so that it lines up with them.
void addExpatCases(Document &document) { addCase(document, "expat", "parse_destroy", parseOnly); }

}  // namespace vrkperf
