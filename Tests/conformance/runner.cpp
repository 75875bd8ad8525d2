// Runs the W3C XML conformance suite against the library, by default and
// with the C++ layer's strict checks, and holds the results to the
// expectations file, which lists every case where this library
// deliberately differs from the suite in either mode, with the rule
// responsible.  Strict mode may differ on one case at most.
//
//   vrkxml_conformance SUITE_DIR EXPECTATIONS DOCS_PAGE
//
// SUITE_DIR is the unpacked suite (holding xmlconf/).  The run fails when a
// case's result differs from the expectations in either direction, or when
// DOCS_PAGE does not read as this run writes it (with
// VRKXML_WRITE_CONFORMANCE_PAGE=1 in the environment the page is rewritten).
// Fails when the suite is not there.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "canonical.h"
#include "catalog.h"
#include "vrkxml.hpp"

namespace {

using conformance::TestCase;
namespace fs = std::filesystem;

// How many applicable cases strict mode may leave different from the suite.
constexpr int kMostStrictDifferences = 1;

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
    std::string kind;    // agrees, accepts (a not-wf document), rejects (a well-formed one), output
    std::string detail;  // the error of a rejection
};

// A parse's outcome: document null on failure, with the error's words.
Outcome judge(const TestCase &test, const vrkNode *document, const std::string &error) {
    const bool wellFormed = test.type != "not-wf";
    if (document == nullptr) return {wellFormed ? "rejects" : "agrees", wellFormed ? error : ""};
    if (!wellFormed) return {"accepts", ""};
    if (!test.output.empty() && conformance::canonicalForm(document) != readBytes(test.output)) return {"output", ""};
    return {"agrees", ""};
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
    int outputsCompared = 0;
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
        << "(`vrkxml::ParseOptions::strict`, `vrkxml check --strict`). The test\n"
        << "program `Tests/conformance` writes this page; a test fails when the\n"
        << "page, or any case's result in either mode, differs from what is\n"
        << "recorded here and in `Tests/conformance/expectations.txt`, or when\n"
        << "strict mode differs from the suite on more than " << kMostStrictDifferences << " case.\n\n"
        << "A case is applicable when it is XML 1.0, its document has no document\n"
        << "type declaration, and it is encoded in UTF-8 or UTF-16. Valid and\n"
        << "invalid documents must parse, not-well-formed ones must fail; a valid\n"
        << "document with a canonical output must also give that output (in the\n"
        << "2013 suite every valid document with such an output also has a document\n"
        << "type declaration, so none is compared). By default the library is\n"
        << "given the file's bytes; in strict mode the C++ layer reads them.\n\n"
        << "| | Default | Strict |\n|---|---:|---:|\n"
        << "| In the suite" << both(summary.total) << "| Applicable" << both(summary.applicable)
        << "| Agreeing with the suite | " << summary.agreeing[kDefault] << " | " << summary.agreeing[kStrict] << " |\n"
        << "| Canonical outputs compared" << both(summary.outputsCompared)
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
    if (argc != 4) {
        std::cerr << "usage: vrkxml_conformance SUITE_DIR EXPECTATIONS DOCS_PAGE\n";
        return 2;
    }
    const fs::path root = fs::path(argv[1]) / "xmlconf";
    if (!fs::exists(root / "xmlconf.xml")) {
        std::cout << "conformance suite not found under " << argv[1]
                  << " (the test suite unpacks Tests/conformance/xmlts20130923.zip there)\n";
        return 1;
    }
    const std::map<std::string, Expectation> expectations = readExpectations(argv[2]);
    std::map<std::string, bool> seen;  // every case of the suite, by id

    Summary summary;
    int surprises = 0;
    for (const TestCase &test : conformance::readCatalogues(root)) {
        ++summary.total;
        const std::string bytes = fs::exists(test.file) ? readBytes(test.file) : "";
        const std::string reason = notApplicable(test, bytes);
        const auto expected = expectations.find(test.id);
        seen[test.id] = true;
        if (!reason.empty()) {
            ++summary.notApplicableByReason[reason];
            if (expected != expectations.end()) {
                std::cout << "STALE " << test.id << ": listed as " << expected->second.kind[kDefault]
                          << " but not applicable ("
                          << reason << ")\n";
                ++surprises;
            }
            continue;
        }
        ++summary.applicable;
        if (test.type != "not-wf" && !test.output.empty()) ++summary.outputsCompared;
        const Outcome outcomes[kModes] = {runDefault(test, bytes), runStrict(test, bytes)};
        for (const Mode mode : {kDefault, kStrict}) {
            const Outcome &outcome = outcomes[mode];
            const std::string expectedKind = expected == expectations.end() ? "agrees" : expected->second.kind[mode];
            if (outcome.kind != expectedKind) {
                ++surprises;
                std::cout << "UNEXPECTED " << (mode == kStrict ? "(strict) " : "") << test.id << " (" << test.type
                          << ", " << test.file.string() << "): " << outcome.kind
                          << (outcome.detail.empty() ? "" : " " + outcome.detail) << ", expected " << expectedKind
                          << "\n    " << test.description << "\n";
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
        if (seen.count(id) == 0) {
            std::cout << "STALE " << id << ": listed, but no such case in the suite\n";
            ++surprises;
        }
    }

    if (differences(summary, kStrict) > kMostStrictDifferences) {
        std::cout << "STRICT MODE differs from the suite on " << differences(summary, kStrict) << " cases; at most "
                  << kMostStrictDifferences << " may differ\n";
        ++surprises;
    }
    const std::string written = page(summary);
    std::cout << written;
    if (std::getenv("VRKXML_WRITE_CONFORMANCE_PAGE") != nullptr) {
        std::ofstream(argv[3], std::ios::binary) << written;
    } else if (readBytes(argv[3]) != written) {
        std::cout << "\nPAGE OUT OF DATE: " << argv[3]
                  << " differs from this run; rerun with VRKXML_WRITE_CONFORMANCE_PAGE=1 to rewrite it\n";
        ++surprises;
    }
    if (surprises != 0) std::cout << "\n" << surprises << " case(s) differ from the expectations\n";
    return surprises == 0 ? 0 : 1;
}
