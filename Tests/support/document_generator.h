// Well-formed documents of many shapes for the round-trip and edit oracles:
// declarations, comments, processing instructions, namespaces, references,
// CDATA sections and text at varying depths.  The same seed gives the same
// document on every machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/random.h"

namespace vrktest {

class DocumentGenerator {
public:
    // With `wide`, characters beyond 16 bits stand in text and values.
    DocumentGenerator(uint64_t seed, bool wide) : random_(seed), wide_(wide) {}

    // A document whose declaration, if any, names UTF-16 or UTF-8.
    std::u16string document(bool utf16);

private:
    using Atoms = std::vector<std::u16string>;
    std::u16string run(const Atoms &atoms, uint32_t most);
    std::u16string pi(bool inContent);
    void misc(std::u16string &out);
    std::u16string value(char16_t quote);
    std::u16string qualified();
    void element(std::u16string &out, uint32_t depth);

    Random random_;
    bool wide_;
    uint32_t maxDepth_ = 1;
    Atoms inScope_;
};

}  // namespace vrktest
