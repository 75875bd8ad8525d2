// tinyxml2: XMLDocument::Parse (which copies the text) and the document's
// release; XMLPrinter in compact mode to write.  UTF-8 only, so the UTF-16
// documents get no case.
#include <tinyxml2.h>

#include <memory>

#include "cases.h"
#include "peer_support.h"

namespace vrkperf {
namespace {

std::unique_ptr<tinyxml2::XMLDocument> load(Document &document) {
    auto tree = std::make_unique<tinyxml2::XMLDocument>();
    if (tree->Parse(document.data(), document.size()) != tinyxml2::XML_SUCCESS) tree.reset();
    return tree;
}

// False after SkipWithError with tinyxml2's message when the document is
// refused.
bool parses(benchmark::State &state, Document &document) {
    tinyxml2::XMLDocument tree;
    if (tree.Parse(document.data(), document.size()) == tinyxml2::XML_SUCCESS) return true;
    state.SkipWithError(tree.ErrorStr());
    return false;
}

void parseAndDestroy(benchmark::State &state, Document &document) {
    if (!parses(state, document)) return;
    for (auto _ : state) {
        tinyxml2::XMLDocument tree;
        benchmark::DoNotOptimize(tree.Parse(document.data(), document.size()));
    }
    reportInput(state, document);
    setHeapCounter(
        state, document, [&] { return load(document); }, [](std::unique_ptr<tinyxml2::XMLDocument>) {});
}

void serialize(benchmark::State &state, Document &document) {
    if (!parses(state, document)) return;
    const std::unique_ptr<tinyxml2::XMLDocument> tree = load(document);
    for (auto _ : state) {
        tinyxml2::XMLPrinter printer(nullptr, true);
        tree->Print(&printer);
        benchmark::DoNotOptimize(printer.CStr());
    }
    reportInput(state, document);
}

}  // namespace

void addTinyxml2Cases(Document &document) {
    if (document.utf16()) return;
    addCase(document, "tinyxml2", "parse_destroy", parseAndDestroy);
    addCase(document, "tinyxml2", "serialize", serialize);
}

}  // namespace vrkperf
