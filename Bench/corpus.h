// The documents the performance benchmark reads: generated shapes in a few
// sizes, and files named by the user.  Generated documents are the same
// bytes on every run and every machine.
#ifndef VRKXML_BENCH_CORPUS_H
#define VRKXML_BENCH_CORPUS_H

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace vrkperf {

// One input.  Its bytes are built (or read) on first use and kept.
class Document {
public:
    Document(std::string name, bool utf16, std::function<std::string()> build);

    const std::string &name() const { return name_; }
    // Native UTF-16 with a byte order mark, rather than UTF-8.
    bool utf16() const { return utf16_; }

    // The text, writable, followed by two zero bytes that size() leaves
    // out: enough to end UTF-8 and UTF-16 alike.
    char *data();
    std::size_t size();

private:
    void load();

    std::string name_;
    bool utf16_;
    std::function<std::string()> build_;
    std::string bytes_;
    bool loaded_ = false;
};

struct CorpusOptions {
    std::vector<int> sizesMB{1, 10};
    std::vector<std::string> files;
};

// Every generated shape in every size, then the files.  A deque, so that
// references to its documents stay valid.
std::deque<Document> makeCorpus(const CorpusOptions &options);

// Writes every document of the corpus to directory/NAME.xml.  Throws
// std::runtime_error when a file cannot be written.
void writeCorpus(std::deque<Document> &corpus, const std::string &directory);

}  // namespace vrkperf

#endif
