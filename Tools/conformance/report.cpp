// Writes the conformance page (Docs/conformance.md): runs the W3C XML
// conformance suite against the library, by default and with the C++
// layer's strict checks, and groups every case that differs from the suite
// under the rule the expectations file gives for it.
//
//   vrkxml_conformance_report SUITE_DIR EXPECTATIONS > Docs/conformance.md
//
// SUITE_DIR is the unpacked suite (holding xmlconf/).  A case whose result
// the expectations do not record, and a recorded case that agrees or is not
// in the suite, is named on standard error and shows in the page, which the
// test suite compares with the committed one.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "catalog.h"
#include "vrkxml.hpp"

namespace {

using conformance::TestCase;
namespace fs = std::filesystem;

enum Mode { kDefault, kStrict, kModes };

std::string readBytes(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string lower(std::string text) {
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool isUtf16(const std::string &bytes) {
    if (bytes.size() < 2) return false;
    const auto b0 = static_cast<unsigned char>(bytes[0]), b1 = static_cast<unsigned char>(bytes[1]);
    return (b0 == 0xFE && b1 == 0xFF) || (b0 == 0xFF && b1 == 0xFE) || (b0 == 0 && b1 == 0x3C) ||
           (b0 == 0x3C && b1 == 0);
}

// The ASCII characters of the text, whatever its encoding: enough to look
// for a document type declaration and an encoding declaration.
std::string asciiView(const std::string &bytes) {
    std::string out;
    for (char c : bytes) {
        if (c != 0) out.push_back(c);
    }
    return out;
}

// The encoding name the declaration gives, lower case, or empty.
std::string declaredEncoding(const std::string &ascii) {
    if (ascii.rfind("<?xml", 0) != 0 && ascii.find("<?xml") > 3) return "";
    const std::size_t end = ascii.find("?>");
    const std::size_t at = ascii.find("encoding");
    if (at == std::string::npos || at > end) return "";
    const std::size_t quote = ascii.find_first_of("\"'", at);
    if (quote == std::string::npos || quote > end) return "";
    const std::size_t close = ascii.find(ascii[quote], quote + 1);
    return lower(ascii.substr(quote + 1, close - quote - 1));
}

// Why a case is outside what this library reads, or empty when it is not.
std::string notApplicable(const TestCase &test, const std::string &bytes) {
    if (test.type == "error") return "optional errors, which a processor may or may not report";
    if (test.version.find("1.1") != std::string::npos || test.recommendation == "XML1.1" ||
        test.recommendation == "NS1.1") {
        return "XML 1.1 or Namespaces 1.1";
    }
    if (!test.edition.empty() && test.edition.find('4') == std::string::npos) {
        return "fifth edition only (this library's names follow the first four editions)";
    }
    if (test.namespaces == "no") return "for processors that do not apply namespaces";
    if (!fs::exists(test.file)) return "document missing from the suite";
    const std::string ascii = asciiView(bytes);
    if (ascii.find("<!DOCTYPE") != std::string::npos) return "document type declaration";
    const std::string encoding = declaredEncoding(ascii);
    if (!isUtf16(bytes) && !encoding.empty() && encoding != "utf-8" && encoding != "utf-16") {
        return "encoding other than UTF-8 and UTF-16";
    }
    return "";
}

struct Outcome {
    std::string kind;    // agrees, accepts (a not-wf document), rejects (a well-formed one)
    std::string detail;  // the error of a rejection
};

// A parse's outcome: document null on failure, with the error's words.
Outcome judge(const TestCase &test, const vrkNode *document, const std::string &error) {
    const bool wellFormed = test.type != "not-wf";
    if (document == nullptr) return {wellFormed ? "rejects" : "agrees", wellFormed ? error : ""};
    return {wellFormed ? "agrees" : "accepts", ""};
}

// The library alone, given the bytes as they are.
Outcome runDefault(const TestCase &test, std::string bytes) {
    bytes.append(4, '\0');  // terminates the text in every encoding
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(bytes.data(), &error);
    const Outcome outcome =
        judge(test, document, std::string(vrkxml::errorName(error.code)) + " at " + std::to_string(error.offset));
    vrkDOM_destroyNode(document, 1);
    return outcome;
}

// The C++ layer with its strict checks.
Outcome runStrict(const TestCase &test, const std::string &bytes) {
    vrkxml::ParseOptions options;
    options.strict = true;
    const auto parsed = vrkxml::parse(bytes, options);
    if (parsed) return judge(test, parsed.value().node(), "");
    const vrkxml::Error &error = parsed.error();
    const std::string words = vrkxml::errorName(error.code);
    return judge(test, nullptr, words + " at " + std::to_string(error.offset) + ": " + error.message);
}

struct Expectation {
    std::string kind[kModes];
    std::string reason;
};

// Lines "ID | DEFAULT | STRICT | REASON"; # begins a comment.
std::map<std::string, Expectation> readExpectations(const fs::path &path) {
    std::map<std::string, Expectation> expectations;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> fields;
        for (std::size_t start = 0;;) {
            const std::size_t bar = line.find(" | ", start);
            fields.push_back(line.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
            if (bar == std::string::npos) break;
            start = bar + 3;
        }
        if (fields.size() != 4) {
            std::cerr << "unreadable expectation: " << line << "\n";
            std::exit(1);
        }
        expectations[fields[0]] = {{fields[1], fields[2]}, fields[3]};
    }
    return expectations;
}

struct Summary {
    int total = 0;
    int applicable = 0;
    int agreeing[kModes] = {};
    // By rule: the cases each mode leaves different.
    std::map<std::string, std::vector<std::string>> differentByReason[kModes];
    std::map<std::string, int> notApplicableByReason;
};

int differences(const Summary &summary, Mode mode) {
    int count = 0;
    for (const auto &[reason, ids] : summary.differentByReason[mode]) count += static_cast<int>(ids.size());
    return count;
}

std::string page(const Summary &summary) {
    int skipped = 0;
    for (const auto &[reason, count] : summary.notApplicableByReason) skipped += count;
    const auto both = [](auto value) {
        std::ostringstream cells;
        cells << " | " << value << " | " << value << " |\n";
        return cells.str();
    };

    std::ostringstream out;
    out << "# Conformance\n\n"
        << "How libvrkxml fares on the W3C XML Conformance Test Suite (edition of\n"
        << "2013-09-23), by default and with the C++ layer's strict checks\n"
        << "(`vrkxml::ParseOptions::strict`, `vrkxml check --strict`).\n"
        << "`Tools/conformance` writes this page, grouping the cases that differ\n"
        << "by the rules recorded in `Tools/conformance/expectations.txt`; a test\n"
        << "fails when the page it writes differs from this one.\n\n"
        << "A case is applicable when it is XML 1.0, its document has no document\n"
        << "type declaration, and it is encoded in UTF-8 or UTF-16. Valid and\n"
        << "invalid documents must parse, not-well-formed ones must fail.\n"
        << "Canonical outputs are not compared: in the 2013 suite every valid\n"
        << "document that has one also has a document type declaration. By\n"
        << "default the library is given the file's bytes; in strict mode the C++\n"
        << "layer reads them.\n\n"
        << "| | Default | Strict |\n|---|---:|---:|\n"
        << "| In the suite" << both(summary.total) << "| Applicable" << both(summary.applicable)
        << "| Agreeing with the suite | " << summary.agreeing[kDefault] << " | " << summary.agreeing[kStrict] << " |\n"
        << "| Deliberately different | " << differences(summary, kDefault) << " | " << differences(summary, kStrict)
        << " |\n"
        << "| Not applicable" << both(skipped) << "\n"
        << "## Deliberate differences, by the rule responsible\n\n"
        << "| Rule | Default | Strict |\n|---|---:|---:|\n";
    std::map<std::string, std::vector<std::string>> rules = summary.differentByReason[kDefault];
    for (const auto &[reason, ids] : summary.differentByReason[kStrict]) rules[reason];
    const auto casesOf = [&](Mode mode, const std::string &reason) {
        const auto found = summary.differentByReason[mode].find(reason);
        return found == summary.differentByReason[mode].end() ? 0 : found->second.size();
    };
    for (const auto &[reason, ids] : rules) {
        out << "| " << reason << " | " << casesOf(kDefault, reason) << " | " << casesOf(kStrict, reason) << " |\n";
    }
    for (const auto &[reason, ids] : rules) {
        out << "\n### " << reason << "\n\n";
        for (std::size_t i = 0; i < ids.size(); ++i) out << (i == 0 ? "" : ", ") << "`" << ids[i] << "`";
        out << "\n";
    }
    out << "\n## Not applicable, by reason\n\n| Reason | Cases |\n|---|---:|\n";
    for (const auto &[reason, count] : summary.notApplicableByReason) out << "| " << reason << " | " << count << " |\n";
    return out.str();
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::cerr << "usage: vrkxml_conformance_report SUITE_DIR EXPECTATIONS\n";
        return 2;
    }
    const fs::path root = fs::path(argv[1]) / "xmlconf";
    if (!fs::exists(root / "xmlconf.xml")) {
        std::cerr << "conformance suite not found under " << argv[1]
                  << " (unpack Tests/conformance/xmlts20130923.zip there)\n";
        return 1;
    }
    const std::map<std::string, Expectation> expectations = readExpectations(argv[2]);
    std::map<std::string, bool> seen;  // every case of the suite, by id

    Summary summary;
    for (const TestCase &test : conformance::readCatalogues(root)) {
        ++summary.total;
        const std::string bytes = fs::exists(test.file) ? readBytes(test.file) : "";
        const std::string reason = notApplicable(test, bytes);
        const auto expected = expectations.find(test.id);
        seen[test.id] = true;
        if (!reason.empty()) {
            ++summary.notApplicableByReason[reason];
            if (expected != expectations.end()) {
                std::cerr << "stale: " << test.id << " is recorded but not applicable (" << reason << ")\n";
            }
            continue;
        }
        ++summary.applicable;
        const Outcome outcomes[kModes] = {runDefault(test, bytes), runStrict(test, bytes)};
        for (const Mode mode : {kDefault, kStrict}) {
            const Outcome &outcome = outcomes[mode];
            const std::string expectedKind = expected == expectations.end() ? "agrees" : expected->second.kind[mode];
            if (outcome.kind != expectedKind) {
                std::cerr << "unexpected: " << (mode == kStrict ? "(strict) " : "") << test.id << " ("
                          << test.type << ", " << test.file.string() << "): " << outcome.kind
                          << (outcome.detail.empty() ? "" : " " + outcome.detail) << ", recorded "
                          << expectedKind << "\n    " << test.description << "\n";
            }
            if (outcome.kind == "agrees") {
                ++summary.agreeing[mode];
            } else {
                const std::string rule =
                    expected == expectations.end() ? "(no reason recorded)" : expected->second.reason;
                summary.differentByReason[mode][rule].push_back(test.id);
            }
        }
    }
    for (const auto &[id, expectation] : expectations) {
        if (seen.count(id) == 0) std::cerr << "stale: " << id << " is recorded but not in the suite\n";
    }
    std::cout << page(summary);
    return 0;
}
