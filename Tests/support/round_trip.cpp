#include "support/round_trip.h"

#include <cstring>
#include <vector>

#include "support/tree_text.h"
#include "support/written.h"

namespace vrktest {

namespace {

constexpr std::size_t kHeader8Bytes = 39;   // <?xml version="1.0" encoding="UTF-8"?>\n
constexpr std::size_t kHeader16Bytes = 80;  // the same with UTF-16, in units

bool isXmlTarget(const UniChar *name) {
    return vrkunistrlen(name) == 3 && (name[0] | 0x20) == 'x' && (name[1] | 0x20) == 'm' &&
           (name[2] | 0x20) == 'l';
}

// Whether a processing instruction below node is written as "<?xml data?>",
// which the parser takes for a misplaced declaration.
bool hasXmlInstruction(const vrkNode *node) {
    for (const vrkNode *c = node->firstChild; c != nullptr; c = c->next) {
        if (c->type == PROCESSING_INSTRUCTION_NODE && isXmlTarget(c->name) && c->value[0] != 0)
            return true;
        if (hasXmlInstruction(c)) return true;
    }
    return false;
}

// Surrogates (ED A0..BF ..) and U+FFFF (EF BF BF) in the library's UTF-8.
bool utf8Refuses(const std::string &text) {
    for (std::size_t i = 0; i + 2 < text.size(); ++i) {
        const auto b0 = static_cast<unsigned char>(text[i]);
        const auto b1 = static_cast<unsigned char>(text[i + 1]);
        const auto b2 = static_cast<unsigned char>(text[i + 2]);
        if ((b0 == 0xED && b1 >= 0xA0) || (b0 == 0xEF && b1 == 0xBF && b2 == 0xBF)) return true;
    }
    return false;
}

std::string fields(vrkNode *document, std::string &fault) {
    vrkDOMException e{};
    if (vrkNode_normalize(document, &e) != 1)
        fault = "normalize failed with " + std::to_string(e.code);
    return describe(document, Names::resolved) + "\n" + namespaceFields(document, Names::resolved);
}

// Where two texts first differ, with a little of each.
std::string difference(const std::string &expected, const std::string &got) {
    std::size_t at = 0;
    while (at < expected.size() && at < got.size() && expected[at] == got[at]) ++at;
    const std::size_t from = at < 20 ? 0 : at - 20;
    return "at byte " + std::to_string(at) + ": expected ..." + expected.substr(from, 60) +
           "... got ..." + got.substr(from, 60) + "...";
}

// The units of UTF-16 output in the library's own UTF-8.
std::string libraryUtf8(const std::string &utf16) {
    std::vector<UniChar> units(utf16.size() / 2 + 1, 0);
    std::memcpy(units.data(), utf16.data(), utf16.size() / 2 * 2);
    return utf8(units.data());
}

std::string comeBack(const std::string &out, int32_t encoding, const std::string &expected,
                     bool refused) {
    const char *name = encoding == ENCODING_UTF8 ? "UTF-8" : "UTF-16";
    std::vector<unsigned char> text(out.begin(), out.end());
    text.resize(out.size() + 2, 0);  // a zero byte or a zero unit
    vrkParseError error{};
    vrkNode *again = vrkDOM_parse(text.data(), &error);
    if (refused) {
        vrkDOM_destroyNode(again, 1);
        if (error.code == ERR_ENCODING_DECL) return "";
        return std::string(name) +
               ": expected the decoder to refuse a surrogate or U+FFFF, got code " +
               std::to_string(error.code);
    }
    if (again == nullptr) {
        return std::string(name) + " output does not parse: code " + std::to_string(error.code) +
               " at " + std::to_string(error.offset);
    }
    std::string fault;
    const std::string got = fields(again, fault);
    if (fault.empty() && got != expected)
        fault = std::string(name) + ": tree changed " + difference(expected, got);
    if (fault.empty() && written(again, encoding) != out)
        fault = std::string(name) + ": second writing differs";
    vrkDOM_destroyNode(again, 1);
    return fault;
}

}  // namespace

std::string roundTripFault(vrkNode *document) {
    std::string fault;
    const std::string expected = fields(document, fault);
    if (!fault.empty() || hasXmlInstruction(document)) return fault;
    int32_t result8 = 0;
    int32_t result16 = 0;
    const std::string out8 = written(document, ENCODING_UTF8, &result8);
    const std::string out16 = written(document, ENCODING_UTF16, &result16);
    if (result8 != 1 || result16 != 1) return "serialize failed";
    const std::string body16 = libraryUtf8(out16.substr(kHeader16Bytes));
    if (out8.substr(kHeader8Bytes) != body16)
        return "UTF-8 and UTF-16 differ " + difference(body16, out8);
    fault = comeBack(out16, ENCODING_UTF16, expected, false);
    if (fault.empty()) fault = comeBack(out8, ENCODING_UTF8, expected, utf8Refuses(expected));
    return fault;
}

}  // namespace vrktest
