// Threads parse, edit, write and destroy documents of their own at once and
// must write what one thread writes.  The library keeps no global state:
// under ThreadSanitizer (scripts/tsan.sh) no report.
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "vrkxml.h"

namespace {

constexpr std::size_t kThreads = 8;
constexpr std::size_t kRounds = 120;
const char *const kDocuments[] = {
    "<?xml version='1.0'?><r xmlns:p='urn:p'><p:a k='v' p:w='1&amp;2'>t&lt;<![CDATA[<b>]]><?pi "
    "d?><!--c--></p:a></r>",
    "<r xmlns='urn:d'><\xC3\xA9l "
    "n='\xC3\xA9'>\xE4\xB8\xAD&#x4E2D;<x.y/></\xC3\xA9l><item>text</item></r>",
    "<r><a><a><a q='&#65;'>deep</a></a>' \"</a><b/><c>\n</c><d/></r>",
};

int append(const void *data, uint32_t length, void *out) {
    static_cast<std::string *>(out)->append(static_cast<const char *>(data), length);
    return 1;
}

// Parses the round's document (UTF-16 in odd rounds), writes it before and after each edit round.
std::string run(std::size_t round) {
    const char *text = kDocuments[round % std::size(kDocuments)];
    UniChar *units = round % 2 == 0 ? nullptr : vrkUTF8ToUniCharString(text, nullptr);
    std::string input = std::string(text) + '\0';
    std::string out;
    vrkParseError error{};
    vrkDOMException e{};
    vrkNode *document =
        vrkDOM_parse(units != nullptr ? static_cast<void *>(units) : input.data(), &error);
    if (document == nullptr) return "!! parse error " + std::to_string(error.code);
    vrkNode *root = vrkDOM_getDocumentElement(document);
    static const UniChar kN[] = {'n'};
    static const UniChar kValue[] = {'t', 0xE9, '&', '<'};
    for (std::size_t i = 0;; ++i) {
        for (int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
            out += vrkDOM_serialize(document, encoding, append, &out) == 1 ? "|"
                                                                           : "!! serialize failed";
        }
        if (i > round % 4 || e.code != 0) break;
        vrkNode_insertBefore(root, vrkDOM_createEANode(ELEMENT_NODE, kN, 1, &e), root->firstChild,
                             &e);
        vrkNode_appendChild(root->firstChild,
                            vrkDOM_createTextNode(kValue, 1 + static_cast<int32_t>(i), &e), &e);
        vrkNode_appendChild(root->firstChild, vrkDOM_createTextNode(kValue, 4, &e), &e);
        vrkNode *attribute = vrkDOM_createEANode(ATTRIBUTE_NODE, kN, 1, &e);
        vrkNode_setNodeValue(attribute, kValue, static_cast<int32_t>(i), &e);
        vrkDOM_destroyNode(vrkElement_setAttributeNode(root->lastChild, attribute, &e), 1);
        vrkNode_appendChild(root, vrkNode_cloneNode(root->firstChild->next, 1, &e), &e);
        vrkDOM_destroyNode(vrkNode_removeChild(root, root->firstChild->next, &e), 1);
        vrkNode_normalize(document, &e);
    }
    out += e.code == 0 ? "" : "!! edit failed with " + std::to_string(e.code);
    vrkDOM_destroyNode(document, 1);
    std::free(units);
    return out;
}

TEST(Concurrency, ThreadsWriteWhatOneThreadWrites) {
    std::vector<std::string> expected;
    for (std::size_t round = 0; round < kRounds; ++round) {
        expected.push_back(run(round));
        ASSERT_EQ(expected.back().find("!!"), std::string::npos)
            << "round " << round << ": " << expected.back();
    }
    std::vector<std::size_t> mismatches(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (std::size_t i = t; i < t + kRounds; ++i)
                mismatches[t] += run(i % kRounds) != expected[i % kRounds];
        });
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(mismatches, std::vector<std::size_t>(kThreads, 0));
}

}  // namespace
