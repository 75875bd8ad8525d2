// The list of benchmark documents and their lazy construction.
#include "corpus.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "shapes.h"

namespace vrkperf {

Document::Document(std::string name, bool utf16, std::function<std::string()> build)
    : name_(std::move(name)), utf16_(utf16), build_(std::move(build)) {}

void Document::load() {
    if (loaded_) return;
    bytes_ = build_();
    bytes_.append(2, '\0');
    build_ = nullptr;
    loaded_ = true;
}

char *Document::data() {
    load();
    return bytes_.data();
}

std::size_t Document::size() {
    load();
    return bytes_.size() - 2;
}

namespace {

std::string readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// UTF-16 by a byte order mark, or by a '<' or blank next to a zero byte.
bool looksUtf16(const std::string &bytes) {
    if (bytes.size() < 2) return false;
    const auto b0 = static_cast<unsigned char>(bytes[0]);
    const auto b1 = static_cast<unsigned char>(bytes[1]);
    return (b0 == 0xFF && b1 == 0xFE) || (b0 == 0xFE && b1 == 0xFF) || b0 == 0 || b1 == 0;
}

std::string baseName(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::deque<Document> makeCorpus(const CorpusOptions &options) {
    std::deque<Document> corpus;
    for (const int mb : options.sizesMB) {
        const std::size_t target = static_cast<std::size_t>(mb) * 1'000'000;
        std::string suffix = "_";
        suffix += std::to_string(mb);
        suffix += "MB";
        corpus.emplace_back("records" + suffix, false, [target] { return recordsDocument(target); });
        corpus.emplace_back("attributes" + suffix, false, [target] { return attributesDocument(target); });
        corpus.emplace_back("prose" + suffix, false, [target] { return proseDocument(target); });
        corpus.emplace_back("deep" + suffix, false, [target] { return deepDocument(target); });
        corpus.emplace_back("nonascii" + suffix, false, [target] { return nonAsciiDocument(target); });
        // The same records as the UTF-8 document of this size, so about twice the bytes.
        corpus.emplace_back("utf16" + suffix, true,
                            [target] { return toNativeUtf16(recordsDocument(target, "UTF-16")); });
    }
    for (const std::string &path : options.files) {
        std::string bytes = readFile(path);
        const bool utf16 = looksUtf16(bytes);
        std::string name = "file-";
        name += baseName(path);
        corpus.emplace_back(std::move(name), utf16,
                            [shared = std::move(bytes)]() mutable { return std::move(shared); });
    }
    return corpus;
}

void writeCorpus(std::deque<Document> &corpus, const std::string &directory) {
    for (Document &document : corpus) {
        const std::string path = directory + "/" + document.name() + ".xml";
        std::ofstream out(path, std::ios::binary);
        out.write(document.data(), static_cast<std::streamsize>(document.size()));
        if (!out) throw std::runtime_error("cannot write " + path);
        std::printf("%s\n", path.c_str());
    }
}

}  // namespace vrkperf
