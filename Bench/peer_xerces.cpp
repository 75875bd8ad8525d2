// Xerces-C: XercesDOMParser on a MemBufInputSource, without validation and
// with namespaces, the document adopted and released; DOMLSSerializer into
// a MemBufFormatTarget to write.  One parser serves all iterations.
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

#include "cases.h"
#include "peer_support.h"

namespace vrkperf {
namespace {

using namespace xercesc;

void configure(XercesDOMParser &parser) {
    parser.setValidationScheme(XercesDOMParser::Val_Never);
    parser.setDoNamespaces(true);
    parser.setDoSchema(false);
    parser.setLoadExternalDTD(false);
}

// The document, now the caller's, or null.
DOMDocument *load(XercesDOMParser &parser, Document &document) {
    MemBufInputSource source(reinterpret_cast<const XMLByte *>(document.data()), document.size(), "bench.xml",
                             false);
    try {
        parser.parse(source);
    } catch (...) {
        return nullptr;
    }
    if (parser.getErrorCount() != 0) return nullptr;
    return parser.adoptDocument();
}

// Configures parser and loads the document, or skips the case.
DOMDocument *loadOrSkip(benchmark::State &state, XercesDOMParser &parser, Document &document) {
    configure(parser);
    DOMDocument *tree = load(parser, document);
    if (tree == nullptr) state.SkipWithError("not parsed");
    return tree;
}

void parseAndDestroy(benchmark::State &state, Document &document) {
    XercesDOMParser parser;
    DOMDocument *first = loadOrSkip(state, parser, document);
    if (first == nullptr) return;
    first->release();
    for (auto _ : state) {
        DOMDocument *tree = load(parser, document);
        benchmark::DoNotOptimize(tree);
        tree->release();
    }
    reportInput(state, document);
    setHeapCounter(state, document, [&] { return load(parser, document); }, [](DOMDocument *tree) { tree->release(); });
}

void serialize(benchmark::State &state, Document &document) {
    XercesDOMParser parser;
    DOMDocument *tree = loadOrSkip(state, parser, document);
    if (tree == nullptr) return;
    static const XMLCh kLS[] = {chLatin_L, chLatin_S, chNull};
    static const XMLCh kUtf8[] = {chLatin_U, chLatin_T, chLatin_F, chDash, chDigit_8, chNull};
    DOMImplementation *implementation = DOMImplementationRegistry::getDOMImplementation(kLS);
    DOMLSSerializer *serializer = implementation->createLSSerializer();
    DOMLSOutput *output = implementation->createLSOutput();
    MemBufFormatTarget target;
    output->setByteStream(&target);
    output->setEncoding(kUtf8);
    for (auto _ : state) {
        target.reset();
        serializer->write(tree, output);
        benchmark::DoNotOptimize(target.getRawBuffer());
    }
    reportInput(state, document);
    output->release();
    serializer->release();
    tree->release();
}

}  // namespace

void addXercesCases(Document &document) {
    addCase(document, "xerces", "parse_destroy", parseAndDestroy);
    addCase(document, "xerces", "serialize", serialize);
}

void startXerces() { XMLPlatformUtils::Initialize(); }

void stopXerces() { XMLPlatformUtils::Terminate(); }

}  // namespace vrkperf
