// The test cases of the W3C XML conformance suite, read from its catalogues.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace conformance {

struct TestCase {
    std::string id;
    std::string type;            // valid, invalid, not-wf, error
    std::string entities;        // none, parameter, general, both
    std::string version;         // empty, or e.g. "1.0", "1.1"
    std::string recommendation;  // empty, or e.g. "XML1.0-errata4e", "NS1.0", "XML1.1"
    std::string edition;         // empty, or e.g. "1 2 3 4", "5"
    std::string namespaces;      // empty, "yes" or "no"
    std::filesystem::path file;
    std::string description;
};

// All cases of the suite whose master catalogue is xmlconf.xml in `root`,
// in catalogue order.  The master catalogue names its parts as external
// entities; each part's URIs are relative to the part's own folder.
std::vector<TestCase> readCatalogues(const std::filesystem::path &root);

}  // namespace conformance
