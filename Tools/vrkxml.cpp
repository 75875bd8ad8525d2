// vrkxml: the library's command-line tool.  `vrkxml --help` describes it.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "error_names.h"
#include "input_text.h"
#include "tree_report.h"
#include "vrkxml.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitNotWellFormed = 1;
constexpr int kExitTrouble = 2;

constexpr const char *kManual =
    "NAME\n"
    "    vrkxml - check, write back, outline and measure XML documents\n"
    "\n"
    "SYNOPSIS\n"
    "    vrkxml check FILE...\n"
    "    vrkxml cat [--utf16] FILE\n"
    "    vrkxml tree FILE\n"
    "    vrkxml stats FILE\n"
    "    vrkxml --help\n"
    "\n"
    "DESCRIPTION\n"
    "    Reads UTF-8 or UTF-16 documents (either byte order; the encoding is\n"
    "    detected from the first two bytes) with libvrkxml.  FILE may be - for\n"
    "    standard input.\n"
    "\n"
    "COMMANDS\n"
    "    check   Reports each FILE as well-formed, or as\n"
    "            FILE:LINE:COLUMN: error: NAME (code N) on standard error,\n"
    "            followed by the line and a caret under the column.\n"
    "    cat     Writes the document back out as UTF-8, or as UTF-16 in the\n"
    "            machine's byte order with --utf16.\n"
    "    tree    Prints an indented outline of the tree.\n"
    "    stats   Prints node counts by kind, the depth, and the parse time\n"
    "            and throughput.\n"
    "\n"
    "EXIT STATUS\n"
    "    0  success\n"
    "    1  a document is not well-formed\n"
    "    2  usage error, or a file could not be read or written\n";

int usage() {
    std::fprintf(stderr, "usage: vrkxml check FILE... | cat [--utf16] FILE | tree FILE | stats FILE | --help\n");
    return kExitTrouble;
}

void reportError(const std::string &path, const std::vector<char> &bytes, const vrkParseError &error) {
    const vrktool::Position where = vrktool::locate(bytes, error.offset);
    std::fprintf(stderr, "%s:%lld:%lld: error: %s (code %d)\n", path.c_str(), static_cast<long long>(where.line),
                 static_cast<long long>(where.column), vrktool::errorName(error.code), error.code);
    if (error.message != nullptr) std::fprintf(stderr, "  %s\n", error.message);
    std::fprintf(stderr, "%s\n%s\n", where.lineText.c_str(), where.caret.c_str());
}

// Parses one input; null after reporting why not.  seconds, when given,
// receives the time the parse alone took.
vrkNode *parseInput(const std::string &path, std::vector<char> &bytes, int &status, double *seconds = nullptr) {
    if (!vrktool::readInput(path, bytes)) {
        std::fprintf(stderr, "%s: cannot read\n", path.c_str());
        status = kExitTrouble;
        return nullptr;
    }
    vrkParseError error{};
    const auto started = std::chrono::steady_clock::now();
    vrkNode *document = vrkDOM_parse(bytes.data(), &error);
    if (seconds != nullptr) *seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (document == nullptr) {
        reportError(path, bytes, error);
        status = kExitNotWellFormed;
    }
    return document;
}

int check(const std::vector<std::string> &paths) {
    int worst = kExitOk;
    for (const std::string &path : paths) {
        std::vector<char> bytes;
        int status = kExitOk;
        vrkNode *document = parseInput(path, bytes, status);
        if (document != nullptr) {
            std::printf("%s: well-formed\n", path.c_str());
            vrkDOM_destroyNode(document, 1);
        }
        if (status > worst) worst = status;
    }
    return worst;
}

int writeToStdout(const void *data, uint32_t length, void *failed) {
    if (length != 0 && std::fwrite(data, 1, length, stdout) != length) *static_cast<bool *>(failed) = true;
    return 0;
}

int cat(const std::string &path, int32_t encoding) {
    std::vector<char> bytes;
    int status = kExitOk;
    vrkNode *document = parseInput(path, bytes, status);
    if (document == nullptr) return status;
    bool failed = false;
    const int32_t written = vrkDOM_serialize(document, encoding, writeToStdout, &failed);
    vrkDOM_destroyNode(document, 1);
    if (std::fflush(stdout) != 0) failed = true;
    if (written == 0 || failed) {
        std::fprintf(stderr, "%s: output failed\n", path.c_str());
        return kExitTrouble;
    }
    return kExitOk;
}

int tree(const std::string &path) {
    std::vector<char> bytes;
    int status = kExitOk;
    vrkNode *document = parseInput(path, bytes, status);
    if (document == nullptr) return status;
    vrktool::printOutline(document, stdout);
    vrkDOM_destroyNode(document, 1);
    return std::fflush(stdout) == 0 ? kExitOk : kExitTrouble;
}

int stats(const std::string &path) {
    std::vector<char> bytes;
    int status = kExitOk;
    double seconds = 0;
    vrkNode *document = parseInput(path, bytes, status, &seconds);
    if (document == nullptr) return status;
    const std::size_t size = bytes.size() - 4;  // readInput adds four zero bytes
    const vrktool::TreeCounts counts = vrktool::countTree(document);
    vrkDOM_destroyNode(document, 1);
    std::printf("%s\n  bytes           %zu\n  elements        %lld\n  attributes      %lld\n"
                "  text nodes      %lld\n  CDATA sections  %lld\n  instructions    %lld\n  depth           %lld\n"
                "  parse time      %.3f ms\n  throughput      %.1f MB/s\n",
                path.c_str(), size, counts.elements, counts.attributes, counts.texts, counts.cdataSections,
                counts.instructions, counts.maxDepth, seconds * 1e3, seconds > 0 ? static_cast<double>(size) / seconds / 1e6 : 0.0);
    return kExitOk;
}

}  // namespace

int main(int argc, char **argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) return usage();
    const std::string command = args.front();
    args.erase(args.begin());
    if (command == "--help" || command == "-h" || command == "help") {
        std::fputs(kManual, stdout);
        return kExitOk;
    }
    if (command == "check" && !args.empty()) return check(args);
    if (command == "tree" && args.size() == 1) return tree(args.front());
    if (command == "stats" && args.size() == 1) return stats(args.front());
    if (command == "cat") {
        int32_t encoding = ENCODING_UTF8;
        if (!args.empty() && args.front() == "--utf16") {
            encoding = ENCODING_UTF16;
            args.erase(args.begin());
        }
        if (args.size() == 1) return cat(args.front(), encoding);
    }
    return usage();
}
