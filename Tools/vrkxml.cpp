// vrkxml: the library's command-line tool.
//
//   vrkxml check FILE...       reports each file as well-formed, or where it is not
//   vrkxml cat [--utf16] FILE  parses FILE and writes it back out
//
// FILE may be "-" for standard input.  Exit status: 0 success, 1 a document
// is not well-formed, 2 usage or input/output trouble.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "error_names.h"
#include "input_text.h"
#include "vrkxml.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitNotWellFormed = 1;
constexpr int kExitTrouble = 2;

int usage() {
    std::fprintf(stderr,
                 "usage: vrkxml check FILE...\n"
                 "       vrkxml cat [--utf16] FILE\n"
                 "FILE may be - for standard input.\n");
    return kExitTrouble;
}

void reportError(const std::string &path, const std::vector<char> &bytes, const vrkParseError &error) {
    const vrktool::Position where = vrktool::locate(bytes, error.offset);
    std::fprintf(stderr, "%s:%lld:%lld: error: %s (code %d)\n", path.c_str(), static_cast<long long>(where.line),
                 static_cast<long long>(where.column), vrktool::errorName(error.code), error.code);
    if (error.message != nullptr) std::fprintf(stderr, "  %s\n", error.message);
    std::fprintf(stderr, "%s\n%s\n", where.lineText.c_str(), where.caret.c_str());
}

// Parses one input; null after reporting why not.
vrkNode *parseInput(const std::string &path, std::vector<char> &bytes, int &status) {
    if (!vrktool::readInput(path, bytes)) {
        std::fprintf(stderr, "%s: cannot read\n", path.c_str());
        status = kExitTrouble;
        return nullptr;
    }
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(bytes.data(), &error);
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

}  // namespace

int main(int argc, char **argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) return usage();
    const std::string command = args.front();
    args.erase(args.begin());
    if (command == "check" && !args.empty()) return check(args);
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
