// Builders of the benchmark documents.  Nothing here depends on the clock
// or on the platform: a fixed-seed generator picks the words and numbers, so
// every run parses exactly the same bytes.
#include "documents.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "support/random.h"

namespace vrkbench {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

using Generator = vrktest::Random;

// Plain words, a few of them outside ASCII; none needs escaping.
constexpr std::array<std::string_view, 16> kWords = {
    "alpha", "bolt", "crate", "delta", "café", "naïve", "Größe", "東京",
    "spare", "valve", "gasket", "ring", "flange", "rotor", "seal", "hinge"};

void appendWords(std::string &out, Generator &random, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0) out += ' ';
        out += kWords[random.below(kWords.size())];
    }
}

// One data record of the ordinary document: nested elements, attributes,
// text and a few references.
void appendRecord(std::string &out, Generator &random, std::size_t id) {
    out += "  <record id=\"r" + std::to_string(id) + "\" kind=\"";
    out += kWords[random.below(kWords.size())];
    out += "\" m:rev=\"" + std::to_string(random.below(9) + 1) + "\">\n    <name>";
    appendWords(out, random, 2);
    out += " &amp; ";
    appendWords(out, random, 1);
    out += "</name>\n    <m:price currency=\"EUR\">" + std::to_string(random.below(1000)) + '.' +
           std::to_string(random.below(90) + 10) + "</m:price>\n    <tags>";
    for (std::size_t tags = random.below(4) + 1; tags > 0; --tags) {
        out += "<tag>";
        out += kWords[random.below(kWords.size())];
        out += "</tag>";
    }
    out += "</tags>\n    <note>";
    appendWords(out, random, random.below(12) + 4);
    out += " &lt;fragile&gt; &#x20AC;" + std::to_string(random.below(100)) + "</note>\n  </record>\n";
}

constexpr std::string_view kCatalogStart =
    "<catalog xmlns=\"urn:example:catalog\" xmlns:m=\"urn:example:meta\">\n";
constexpr std::string_view kCatalogEnd = "</catalog>\n";

// Records until the document (with its closing tags) reaches the target.
void appendRecordsUpToTarget(std::string &out, std::size_t reserveForEnd) {
    Generator random{0x5EED};
    for (std::size_t id = 0; out.size() + reserveForEnd < kTargetBytes; ++id) appendRecord(out, random, id);
}

std::string start() {
    std::string out;
    out.reserve(kTargetBytes + 4096);
    out += kDeclaration;
    return out;
}

std::string normal() {
    std::string out = start();
    out += kCatalogStart;
    appendRecordsUpToTarget(out, kCatalogEnd.size());
    out += kCatalogEnd;
    return out;
}

// Filler of the given length for attribute values and namespace names.
void appendFiller(std::string &out, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) out += static_cast<char>('a' + i % 26);
}

// 100,000 distinct attributes on one start tag, values padded to the target.
std::string manyAttributes() {
    constexpr std::size_t kCount = 100'000;
    std::string out = start();
    out += "<doc";
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::string name = " a" + std::to_string(i) + "='";
        out += name;
        const std::size_t budget = kTargetBytes / kCount;
        appendFiller(out, budget > name.size() + 1 ? budget - name.size() - 1 : 1);
        out += '\'';
    }
    out += "/>\n";
    return out;
}

// 100,000 nested elements, each declaring its own prefix.  With a root
// prefix every element is in the root's namespace, which is declared at the
// very bottom of the scope; without one every element asks for the default
// namespace, which is declared nowhere.
std::string nestedDeclarations(bool rootPrefix) {
    constexpr std::size_t kCount = 100'000;
    const std::string_view element = rootPrefix ? "r:e" : "e";
    std::string out = start();
    out += rootPrefix ? "<r:doc xmlns:r='urn:example:root'>" : "<doc>";
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(i);
        out += '<';
        out += element;
        out += " xmlns:p" + number + "='urn:example:ns:" + number + ':';
        const std::size_t used = 2 * element.size() + 2 * number.size() + 32;
        const std::size_t budget = kTargetBytes / kCount;
        appendFiller(out, budget > used ? budget - used : 1);
        out += "'>";
    }
    out += "end";
    for (std::size_t i = 0; i < kCount; ++i) {
        out += "</";
        out += element;
        out += '>';
    }
    out += rootPrefix ? "</r:doc>\n" : "</doc>\n";
    return out;
}

// One element holding 1,000,000 references in a row, then ordinary records
// up to the target.
std::string manyReferences() {
    std::string out = start();
    out += kCatalogStart;
    out += "<refs>";
    for (std::size_t i = 0; i < 1'000'000; ++i) out += i % 2 == 0 ? "&amp;" : "&#65;";
    out += "</refs>\n";
    appendRecordsUpToTarget(out, kCatalogEnd.size());
    out += kCatalogEnd;
    return out;
}

// 1,000,000 short siblings under the root, ten bytes each.
std::string manySiblings() {
    std::string out = start();
    out += "<doc>";
    for (std::size_t i = 0; i < 1'000'000; ++i) {
        out += "<s>";
        out += static_cast<char>('a' + i % 26);
        out += static_cast<char>('a' + i / 26 % 26);
        out += static_cast<char>('a' + i / 676 % 26);
        out += "</s>";
    }
    out += "</doc>\n";
    return out;
}

// Words up to the target, with a reference after every few words when asked.
void appendLongText(std::string &out, bool references, bool hyphens) {
    constexpr std::array<std::string_view, 5> kReferences = {"&amp;", "&lt;", "&#233;", "&#x20AC;", "&quot;"};
    Generator random{0x5EED};
    while (out.size() < kTargetBytes) {
        appendWords(out, random, 3);
        if (references) out += kReferences[random.below(kReferences.size())];
        out += hyphens ? " - " : " ";
    }
}

std::string longAttributeValue(bool references) {
    std::string out = start();
    out += "<doc a='";
    appendLongText(out, references, false);
    out += "x'/>\n";
    return out;
}

std::string longComment() {
    std::string out = start();
    out += "<doc><!--";
    appendLongText(out, false, true);
    out += "x--></doc>\n";
    return out;
}

// 1,000,000 levels of <a>.
std::string deepNesting() {
    constexpr std::size_t kDepth = 1'000'000;
    std::string out = start();
    for (std::size_t i = 0; i < kDepth; ++i) out += "<a>";
    for (std::size_t i = 0; i < kDepth; ++i) out += "</a>";
    out += '\n';
    return out;
}

constexpr std::array<DocumentRecipe, 10> kRecipes = {{
    {"normal", normal},
    {"attributes_100k", manyAttributes},
    {"ns_nested_100k_unprefixed", [] { return nestedDeclarations(false); }},
    {"ns_nested_100k_root_prefix", [] { return nestedDeclarations(true); }},
    {"references_1m", manyReferences},
    {"siblings_1m", manySiblings},
    {"attribute_value_10mb", [] { return longAttributeValue(false); }},
    {"attribute_value_10mb_refs", [] { return longAttributeValue(true); }},
    {"comment_10mb", longComment},
    {"depth_1m", deepNesting},
}};

}  // namespace

std::span<const DocumentRecipe> documentRecipes() { return kRecipes; }

}  // namespace vrkbench
