#include "catalog.h"

#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace conformance {

namespace {

std::string readText(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The catalogues are plain enough to be read with patterns: no part of
// them needs the general XML machinery (and the master uses a DTD).
std::string attribute(const std::string &attributes, const std::string &name) {
    const std::regex pattern("(?:^|\\s)" + name + "\\s*=\\s*(\"([^\"]*)\"|'([^']*)')");
    std::smatch match;
    if (!std::regex_search(attributes, match, pattern)) return "";
    return match[2].matched ? match[2].str() : match[3].str();
}

std::string collapseSpace(const std::string &text) {
    std::string out;
    bool space = false;
    for (char c : text) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            space = !out.empty();
            continue;
        }
        if (space) out.push_back(' ');
        space = false;
        out.push_back(c);
    }
    return out;
}

void readPart(const std::filesystem::path &part, std::vector<TestCase> &cases) {
    const std::string text = readText(part);
    const std::filesystem::path folder = part.parent_path();
    const std::regex test("<TEST\\b([^>]*)>([\\s\\S]*?)</TEST>");
    for (std::sregex_iterator it(text.begin(), text.end(), test), end; it != end; ++it) {
        const std::string attributes = (*it)[1].str();
        TestCase entry;
        entry.id = attribute(attributes, "ID");
        entry.type = attribute(attributes, "TYPE");
        entry.entities = attribute(attributes, "ENTITIES");
        entry.version = attribute(attributes, "VERSION");
        entry.recommendation = attribute(attributes, "RECOMMENDATION");
        entry.edition = attribute(attributes, "EDITION");
        entry.namespaces = attribute(attributes, "NAMESPACE");
        entry.file = folder / attribute(attributes, "URI");
        entry.description = collapseSpace((*it)[2].str());
        cases.push_back(entry);
    }
}

}  // namespace

std::vector<TestCase> readCatalogues(const std::filesystem::path &root) {
    const std::string master = readText(root / "xmlconf.xml");
    std::vector<std::pair<std::string, std::string>> parts;  // entity name, file
    const std::regex declaration("<!ENTITY\\s+(\\S+)\\s+SYSTEM\\s+\"([^\"]+)\"\\s*>");
    for (std::sregex_iterator it(master.begin(), master.end(), declaration), end; it != end; ++it) {
        parts.emplace_back((*it)[1].str(), (*it)[2].str());
    }
    // The parts in the order the master's body refers to them.
    const std::size_t body = master.find("<TESTSUITE");
    std::vector<TestCase> cases;
    const std::regex reference("&([A-Za-z0-9._-]+);");
    for (std::sregex_iterator it(master.begin() + static_cast<std::ptrdiff_t>(body), master.end(), reference), end;
         it != end; ++it) {
        for (const auto &[name, file] : parts) {
            if (name == (*it)[1].str()) readPart(root / file, cases);
        }
    }
    return cases;
}

}  // namespace conformance
