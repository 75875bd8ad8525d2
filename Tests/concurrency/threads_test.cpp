// Eight threads parse, edit, write and release their own documents at once;
// every thread must produce, seed for seed, exactly what a run on one thread
// produces.  The library keeps no global state, so under ThreadSanitizer this
// program must run without a report (the configure command is one line):
//
//   cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo
//         -DCMAKE_CXX_FLAGS="-fsanitize=thread -g -O1" -DCMAKE_C_FLAGS="-fsanitize=thread -g -O1"
//         -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread
//   cmake --build build-tsan --target vrkxml_concurrency_tests
//   TSAN_OPTIONS=halt_on_error=1 build-tsan/Tests/concurrency/vrkxml_concurrency_tests
//
// (Only this program is meant to be built that way: the other test programs
// wrap malloc, which the sanitizer's own allocator does not expect.)
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"
#include "vrkxml.h"

using vrktest::Random;

namespace {

constexpr std::size_t kThreads = 8, kIterations = 300;  // documents per thread
const char *const kCaller = "threads_test";

// The documents' own picks: a fixed array of atoms.
template <std::size_t N>
const char *pick(Random &random, const char *const (&atoms)[N]) {
    return atoms[random.below(N)];
}

const char *const kNames[] = {"a", "item", "p:c", "q:d", "x.y", "\xC3\xA9l", "\xE4\xB8\xAD"};
const char *const kText[] = {"text", " ", "\n", "&lt;", "&amp;", "&#x4E2D;", "\xC3\xA9t\xC3\xA9", "'\""};
const char *const kAttributes[] = {" k='v'", " p:w=\"1&amp;2\"", " q:z='&#65;'", " n=\"\xC3\xA9\""};

// A well-formed document whose shape (depth, width, kinds of content) the seed decides.
void element(Random &random, std::string &out, int depth) {
    const std::string name = pick(random, kNames);
    out += "<" + name;
    for (uint32_t n = random.below(3); n > 0; --n) out += kAttributes[2 * (n - 1) + random.below(2)];
    if (depth == 0 || random.below(5) == 0) {
        out += "/>";
        return;
    }
    out += ">";
    for (uint32_t n = random.below(6); n > 0; --n) {
        switch (random.below(6)) {
        case 0: out += "<![CDATA[<b>&amp;]]>"; break;
        case 1: out += "<?pi data?>"; break;
        case 2: out += "<!-- note -->"; break;
        case 3: element(random, out, depth - 1); break;
        default: out += pick(random, kText); break;
        }
    }
    out += "</" + name + ">";
}

std::string document(Random &random) {
    std::string out = random.below(2) == 0 ? "<?xml version='1.0'?>" : "";
    out += random.below(3) == 0 ? "<?head here?>\n" : "";
    out += "<r xmlns:p='urn:p' xmlns:q='urn:q'";
    out += random.below(2) == 0 ? " xmlns='urn:d'>" : ">";
    for (uint32_t n = 1 + random.below(4); n > 0; --n) element(random, out, static_cast<int>(1 + random.below(4)));
    return out + "</r>";
}

int append(const void *data, uint32_t length, void *user) {
    static_cast<std::string *>(user)->append(static_cast<const char *>(data), length);
    return 0;
}

void serialize(const vrkNode *document, std::string &out) {
    for (const int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
        out += vrkDOM_serialize(document, encoding, append, &out) == 1 ? "|" : "|!! serialize failed|";
    }
}

void collect(vrkNode *node, std::vector<vrkNode *> &elements) {
    if (node->type == ELEMENT_NODE) elements.push_back(node);
    for (vrkNode *child = node->firstChild; child != nullptr; child = child->next) collect(child, elements);
}

vrkNode *nthChild(Random &random, vrkNode *parent) {
    vrkNode *child = parent->firstChild;
    for (uint32_t i = random.below(static_cast<std::size_t>(vrkDOM_getNumberOfChildren(parent))); i > 0; --i) {
        child = child->next;
    }
    return child;
}

// One edit of a random kind on a random element of the document.
void edit(Random &random, vrkNode *document, vrkDOMException &e) {
    static const UniChar kN[] = {'n'}, kX[] = {'x'}, kPq[] = {'p', 'q', 0}, kUri[] = {'u', 'r', 'n', ':', 'p'};
    static const UniChar kPMade[] = {'p', ':', 'm', 'a', 'd', 'e', 0}, kValue[] = {'t', 0xE9, '&', '<'};
    std::vector<vrkNode *> elements;
    collect(document, elements);
    vrkNode *element = elements[random.below(elements.size())];
    vrkNode *child = element->firstChild == nullptr ? nullptr : nthChild(random, element);
    switch (random.below(9)) {
    case 0:
        vrkNodeReal_appendChild(kCaller, 1, element, vrkDOMReal_createEANode(kCaller, 2, ELEMENT_NODE, kN, 1, &e), &e);
        break;
    case 1: {
        vrkNode *text = vrkDOMReal_createCDATASection(kCaller, 3, kValue, 4, &e);
        if (child == nullptr) vrkNodeReal_appendChild(kCaller, 4, element, text, &e);
        else vrkNodeReal_insertBefore(kCaller, 5, element, text, child, &e);
        break;
    }
    case 2:
        if (child != nullptr) vrkDOM_destroyNode(vrkNodeReal_removeChild(kCaller, 6, element, child, &e), 1);
        break;
    case 3:
        if (child != nullptr) {
            vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 7, elements[random.below(elements.size())], 1, &e);
            vrkDOM_destroyNode(vrkNodeReal_replaceChild(kCaller, 8, element, copy, child, &e), 1);
        }
        break;
    case 4:
        if (element->namespaceURI != nullptr) {
            const int32_t length = static_cast<int32_t>(random.below(3));
            vrkNodeReal_setPrefix(kCaller, 9, element, length == 0 ? nullptr : kPq + 2 - length, length, &e);
        }
        break;
    case 5:
        for (int i = 0; i < 3; ++i) {
            vrkNodeReal_appendChild(kCaller, 10, element, vrkDOMReal_createTextNode(kCaller, 11, kValue, 2 + i, &e), &e);
        }
        vrkNodeReal_normalize(kCaller, 12, random.below(2) == 0 ? document : element, &e);
        break;
    case 6: {
        vrkNode *attribute = vrkDOMReal_createEANode(kCaller, 13, ATTRIBUTE_NODE, random.below(2) ? kX : kN, 1, &e);
        vrkNodeReal_setNodeValue(kCaller, 14, attribute, kValue, 4, &e);
        vrkDOM_destroyNode(vrkElementReal_setAttributeNode(kCaller, 15, element, attribute, &e), 1);
        break;
    }
    case 7:
        vrkNodeReal_appendChild(
            kCaller, 16, element, vrkDOMReal_createEANodeNS(kCaller, 17, ELEMENT_NODE, kUri, 5, kPMade, 6, &e), &e);
        break;
    default: {
        vrkNode *attribute = vrkDOMReal_createEANodeNS(kCaller, 18, ATTRIBUTE_NODE, kUri, 5, kPMade, 6, &e);
        vrkNodeReal_setNodeValue(kCaller, 19, attribute, kValue, 1, &e);
        vrkDOM_destroyNode(vrkElementReal_setAttributeNodeNS(kCaller, 20, element, attribute, &e), 1);
        break;
    }
    }
}

// Parses the seed's document in the encoding the seed picks, writes it, edits
// it, writes it again and releases it; returns everything that was written.
std::string run(uint64_t seed) {
    Random random(seed);
    const std::string text = document(random);
    std::vector<unsigned char> buffer;
    const uint32_t form = random.below(4);  // UTF-8, UTF-16 native, native at an odd address, swapped with a mark
    if (form == 0) {
        buffer.assign(text.begin(), text.end());
        buffer.push_back(0);
    } else {
        UniChar *units = vrkUTF8ToUniCharString(text.c_str(), nullptr);
        if (units == nullptr) return "!! decoding failed";
        const std::size_t length = static_cast<std::size_t>(vrkunistrlen(units)) + 1, shift = form == 2 ? 1 : 0;
        buffer.assign(shift, 0xAA);
        if (form == 3) buffer.insert(buffer.end(), {0xFE, 0xFF});
        for (std::size_t i = 0; i < length; ++i) {
            const auto low = static_cast<unsigned char>(units[i] & 0xFF), high = static_cast<unsigned char>(units[i] >> 8);
            buffer.push_back(form == 3 ? high : low);
            buffer.push_back(form == 3 ? low : high);
        }
        std::free(units);
    }
    vrkParseError error{};
    vrkNode *parsed = vrkDOM_parse(buffer.data() + (form == 2 ? 1 : 0), &error);
    if (parsed == nullptr) return "!! parse error " + std::to_string(error.code) + " in " + text;
    std::string out;
    serialize(parsed, out);
    vrkDOMException e{};
    for (uint32_t n = 4 + random.below(12); n > 0 && e.code == 0; --n) edit(random, parsed, e);
    if (e.code != 0) out += "!! edit failed with " + std::to_string(e.code) + " at line " + std::to_string(e.callerLine);
    serialize(parsed, out);
    vrkDOM_destroyNode(parsed, 1);
    return out;
}

TEST(Concurrency, ThreadsGiveTheSingleThreadedResults) {
    std::vector<std::string> expected;
    for (std::size_t seed = 0; seed < kThreads * kIterations; ++seed) {
        expected.push_back(run(seed));
        ASSERT_EQ(expected.back().find("!!"), std::string::npos) << "seed " << seed << ": " << expected.back();
    }

    std::vector<std::size_t> mismatches(kThreads), firstMismatch(kThreads);
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (std::size_t seed = t * kIterations; seed < (t + 1) * kIterations; ++seed) {
                if (run(seed) != expected[seed] && mismatches[t]++ == 0) firstMismatch[t] = seed;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    for (std::size_t t = 0; t < kThreads; ++t) {
        EXPECT_EQ(mismatches[t], 0u) << "thread " << t << ", first at seed " << firstMismatch[t];
    }
}

}  // namespace
