// Parse, write as UTF-8 and as UTF-16, parse the output again: the trees
// must agree, and writing the second tree must give the same bytes.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "vrkxml.hpp"

namespace {

// A tree as a list of items, one per node, attribute or end of element.  An
// item is a tag unit followed by its fields, each as 0, '+' or '-' (null),
// and the units.  Adjacent text nodes become one item, since the parser
// makes a node per reference and the text splits differently the second time.
using Description = std::vector<std::u16string>;

void addField(std::u16string &item, const UniChar *s) {
    item += u'\0';
    item += s == nullptr ? u'-' : u'+';
    for (; s != nullptr && *s != 0; ++s) item += static_cast<char16_t>(*s);
}

// A namespace name is the raw text of its declaration, references and all,
// while the writer escapes the declaration's value: the name comes back in
// another spelling of the same characters.  So names are compared resolved.
void addResolvedField(std::u16string &item, const UniChar *s) {
    if (s == nullptr) return addField(item, s);
    UniChar *copy = vrkunistrdup(s);
    if (copy == nullptr) fuzz::fail("out of memory");
    UniChar *resolved = AttrValueRefResolve(copy);
    if (resolved == nullptr) fuzz::fail("out of memory");
    addField(item, resolved);
    std::free(resolved);
}

std::u16string item(char16_t tag, const vrkNode *node) {
    std::u16string out(1, tag);
    for (const UniChar *field : {node->name, node->value}) addField(out, field);
    addResolvedField(out, node->namespaceURI);
    for (const UniChar *field : {node->prefix, node->localName}) addField(out, field);
    return out;
}

// A processing instruction whose target is xml, in any case, and that has
// data is written with a blank behind the target, which then refuses it:
// such a tree cannot come back.
bool hasXmlTargetWithData(const Description &description) {
    for (const std::u16string &i : description) {
        if (i[0] != u'0' + PROCESSING_INSTRUCTION_NODE) continue;
        const std::size_t valueField = i.find(u'\0', 2);
        const std::u16string target = i.substr(3, valueField - 3);
        const bool xml = target.size() == 3 && (target[0] | 0x20) == u'x' && (target[1] | 0x20) == u'm' &&
                         (target[2] | 0x20) == u'l';
        if (xml && i.size() > valueField + 2) return true;
    }
    return false;
}

void describeOpening(const vrkNode *node, Description &out) {
    if (node->type == TEXT_NODE) {
        if (node->value == nullptr || node->value[0] == 0) return;
        if (out.empty() || out.back()[0] != u'T') out.emplace_back(u"T\0+", 3);
        for (const UniChar *s = node->value; *s != 0; ++s) out.back() += static_cast<char16_t>(*s);
        return;
    }
    out.push_back(item(static_cast<char16_t>(u'0' + node->type), node));
    for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next) out.push_back(item(u'A', a));
}

// A parsed tree may be as deep as its text allows: the walk does not recurse.
Description describe(const vrkNode *document) {
    Description out;
    vrkxml::walkDescendants(
        document, [&](const vrkNode *node, int64_t) { describeOpening(node, out); },
        [&](const vrkNode *node, int64_t) {
            if (node->type == ELEMENT_NODE) out.emplace_back(u")");
        });
    return out;
}

// Surrogates are written to UTF-8 one by one and U+FFFF as it is; the
// decoder refuses both, so such a tree cannot come back from UTF-8.
bool utf8Encodable(const Description &description) {
    for (const std::u16string &i : description) {
        for (char16_t unit : i) {
            if ((unit >= 0xD800 && unit <= 0xDFFF) || unit == 0xFFFF) return false;
        }
    }
    return true;
}

void printItem(const char *label, const Description &d, std::size_t index) {
    std::fprintf(stderr, "%s item %zu: ", label, index);
    if (index >= d.size()) {
        std::fprintf(stderr, "(none)\n");
        return;
    }
    for (char16_t unit : d[index]) {
        if (unit >= 0x20 && unit < 0x7F) std::fputc(unit, stderr);
        else std::fprintf(stderr, "\\u%04X", static_cast<unsigned>(unit));
    }
    std::fputc('\n', stderr);
}

void compare(const Description &first, const Description &second, int32_t encoding) {
    if (first == second) return;
    std::size_t i = 0;
    while (i < first.size() && i < second.size() && first[i] == second[i]) ++i;
    std::fprintf(stderr, "encoding %d\n", encoding);
    printItem("original", first, i);
    printItem("reparsed", second, i);
    fuzz::fail("tree changed by writing and reading it back");
}

void roundTrip(const vrkNode *document, const Description &original, int32_t encoding) {
    int32_t result = 0;
    const std::string written = fuzz::serialize(document, encoding, &result);
    if (result != 1) fuzz::fail("serialize reported a failure");
    // Exactly the output and its terminator: one zero byte or one zero unit.
    const std::size_t terminator = encoding == ENCODING_UTF8 ? 1 : 2;
    std::vector<unsigned char> again(written.size() + terminator, 0);
    std::memcpy(again.data(), written.data(), written.size());
    vrkParseError error{};
    vrkNode *reparsed = vrkDOM_parse(again.data(), &error);
    if (reparsed == nullptr) {
        std::fprintf(stderr, "encoding %d: code %d at %d\n", encoding, error.code, error.offset);
        fuzz::fail("written tree does not parse");
    }
    compare(original, describe(reparsed), encoding);
    if (fuzz::serialize(reparsed, encoding) != written) fuzz::fail("second writing differs from the first");
    vrkDOM_destroyNode(reparsed, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    fuzz::Text text = fuzz::fromInput(data, size);
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(text.start, &error);
    if (document == nullptr) return 0;
    const Description original = describe(document);
    if (hasXmlTargetWithData(original)) {
        vrkDOM_destroyNode(document, 1);
        return 0;
    }
    roundTrip(document, original, ENCODING_UTF16);
    if (utf8Encodable(original)) roundTrip(document, original, ENCODING_UTF8);
    vrkDOM_destroyNode(document, 1);
    return 0;
}
