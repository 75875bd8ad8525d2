// pugixml: load_buffer (which copies the text) and the document's release;
// save to a string without indentation.
#include <pugixml.hpp>

#include <memory>
#include <string>

#include "cases.h"
#include "peer_support.h"

namespace vrkperf {
namespace {

std::unique_ptr<pugi::xml_document> load(Document &document) {
    auto tree = std::make_unique<pugi::xml_document>();
    if (!tree->load_buffer(document.data(), document.size())) tree.reset();
    return tree;
}

// False after SkipWithError with pugixml's message when the document is
// refused.
bool parses(benchmark::State &state, Document &document) {
    pugi::xml_document tree;
    const pugi::xml_parse_result result = tree.load_buffer(document.data(), document.size());
    if (result) return true;
    state.SkipWithError(result.description());
    return false;
}

void parseAndDestroy(benchmark::State &state, Document &document) {
    if (!parses(state, document)) return;
    for (auto _ : state) {
        pugi::xml_document tree;
        benchmark::DoNotOptimize(tree.load_buffer(document.data(), document.size()).status);
    }
    reportInput(state, document);
    setHeapCounter(
        state, document, [&] { return load(document); }, [](std::unique_ptr<pugi::xml_document>) {});
}

struct StringWriter : pugi::xml_writer {
    std::string out;
    void write(const void *data, std::size_t size) override { out.append(static_cast<const char *>(data), size); }
};

void serialize(benchmark::State &state, Document &document) {
    if (!parses(state, document)) return;
    const std::unique_ptr<pugi::xml_document> tree = load(document);
    StringWriter writer;
    tree->save(writer, "", pugi::format_raw, pugi::encoding_utf8);
    for (auto _ : state) {
        writer.out.clear();
        tree->save(writer, "", pugi::format_raw, pugi::encoding_utf8);
        benchmark::DoNotOptimize(writer.out.data());
    }
    reportInput(state, document);
}

}  // namespace

void addPugixmlCases(Document &document) {
    addCase(document, "pugixml", "parse_destroy", parseAndDestroy);
    addCase(document, "pugixml", "serialize", serialize);
}

}  // namespace vrkperf
