// vrkxml FILE: parses FILE and prints the name of its document element, or
// the error code, its name and the offset.  Exit status 0 on success, 1 on a
// parse error, 2 when the file cannot be read.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "error_names.h"
#include "vrkxml.h"

namespace {

// The whole file, followed by four zero bytes: enough to terminate it in
// every encoding the detection may choose.
bool readFile(const char *path, std::vector<char> &text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    text.insert(text.end(), 4, '\0');
    return !in.bad();
}

std::string toUTF8(const UniChar *s) {
    std::string out(static_cast<std::size_t>(vrkUniCharToUTF8Len(s)) + 1, '\0');
    vrkUniCharStringToUTF8(s, out.data());
    out.pop_back();
    return out;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: vrkxml FILE\n");
        return 2;
    }
    std::vector<char> text;
    if (!readFile(argv[1], text)) {
        std::fprintf(stderr, "vrkxml: cannot read %s\n", argv[1]);
        return 2;
    }
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(text.data(), &error);
    if (document == nullptr) {
        std::printf("%s: error %d %s at offset %d\n", argv[1], error.code,
                    vrktool::errorName(error.code), error.offset);
        return 1;
    }
    std::printf("%s\n", toUTF8(vrkDOM_getDocumentElement(document)->name).c_str());
    vrkDOM_destroyNode(document, 1);
    return 0;
}
