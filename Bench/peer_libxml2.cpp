// libxml2: xmlReadMemory and xmlFreeDoc; xmlDocDumpMemory to write.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>

#include "cases.h"
#include "peer_support.h"

namespace vrkperf {
namespace {

// Skips the case with libxml2's message.
void skip(benchmark::State &state) {
    const xmlError *error = xmlGetLastError();
    state.SkipWithError(error != nullptr && error->message != nullptr ? error->message : "not parsed");
}

xmlDocPtr load(Document &document) {
    if (document.size() > static_cast<std::size_t>(INT_MAX)) return nullptr;
    return xmlReadMemory(document.data(), static_cast<int>(document.size()), "bench.xml", nullptr, XML_PARSE_NONET);
}

void parseAndDestroy(benchmark::State &state, Document &document) {
    xmlDocPtr first = load(document);
    if (first == nullptr) {
        skip(state);
        return;
    }
    xmlFreeDoc(first);
    for (auto _ : state) {
        xmlDocPtr tree = load(document);
        benchmark::DoNotOptimize(tree);
        xmlFreeDoc(tree);
    }
    reportInput(state, document);
    setHeapCounter(state, document, [&] { return load(document); }, xmlFreeDoc);
}

void serialize(benchmark::State &state, Document &document) {
    xmlDocPtr tree = load(document);
    if (tree == nullptr) {
        skip(state);
        return;
    }
    for (auto _ : state) {
        xmlChar *text = nullptr;
        int length = 0;
        xmlDocDumpMemory(tree, &text, &length);
        benchmark::DoNotOptimize(text);
        xmlFree(text);
    }
    reportInput(state, document);
    xmlFreeDoc(tree);
}

// Quiet: a document the parser refuses is reported by the case, not on stderr.
void ignoreMessage(void *, const char *, ...) {}

}  // namespace

void addLibxml2Cases(Document &document) {
    addCase(document, "libxml2", "parse_destroy", parseAndDestroy);
    addCase(document, "libxml2", "serialize", serialize);
}

void startLibxml2() {
    xmlInitParser();
    xmlSetGenericErrorFunc(nullptr, ignoreMessage);
}

void stopLibxml2() { xmlCleanupParser(); }

}  // namespace vrkperf
