// The serializer: the calls of the write callback, the UTF-8 buffer, text
// written in place, unknown encodings, refused allocations and very deep
// trees.  Escapes, and that any tree comes back from what is written, are
// the round-trip oracle's.
#include <vector>

#include "dom_test.h"
#include "support/outcome.h"
#include "support/small_stack.h"
#include "support/written.h"

using namespace domtest;
using Calls = std::vector<std::string>;

namespace {

// The bytes of each call of the callback, and where they were.
struct Recorder {
    Calls calls;
    std::vector<const void *> data;
    static int write(const void *bytes, uint32_t length, void *user) {
        auto *self = static_cast<Recorder *>(user);
        self->calls.emplace_back(static_cast<const char *>(bytes), length);
        self->data.push_back(bytes);
        return 0;
    }
};

const std::string kHeader8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// The calls for node in UTF-8 between the header and the line feed, joined by |.
std::string pieces(const vrkNode *node) {
    Recorder out;
    EXPECT_EQ(vrkDOM_serialize(node, ENCODING_UTF8, Recorder::write, &out), 1);
    std::string joined;
    for (std::size_t i = 1; i + 1 < out.calls.size(); ++i)
        joined += (i > 1 ? "|" : "") + out.calls[i];
    EXPECT_EQ(out.calls.front(), kHeader8);
    EXPECT_EQ(out.calls.back(), "\n");
    return joined;
}

void setValue(vrkNode *node, std::u16string_view value) {
    vrkDOMException e{};
    ASSERT_EQ(vrkNodeReal_setNodeValue(kCaller, 0, node, units(value).data(), len(value), &e), 1);
}

}  // namespace

TEST(Serialize, Utf8UnitByUnitUtf16InPlaceAndUnknownEncodings) {
    Parsed parsed = parseUtf8("<a>t</a>");
    vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get());
    vrkNode *t = a->firstChild;
    setValue(t, u"\u00E9\u00E9\u00E9\u20AC\u20AC\u20AC\U0001F600");  // a run of 8+
    EXPECT_EQ(pieces(t),
              "\xC3\xA9\xC3\xA9\xC3\xA9\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC"
              "\xED\xA0\xBD\xED\xB8\x80")
        << "each half of a pair on its own";
    // 22 units (more than 64 / 3) fill the first buffer's 64 bytes exactly: no growth.
    setValue(t, std::u16string(21, u'\u20AC') + u"a");
    EXPECT_EQ(countAllocations([&] { pieces(t); }), 1);
    setValue(t, u"x<y");
    Recorder out;
    ASSERT_EQ(vrkDOM_serialize(a, ENCODING_UTF16, Recorder::write, &out), 1);
    ASSERT_EQ(out.calls.size(), 11u);
    EXPECT_EQ(out.calls[0].size(), 80u) << "the header, no byte order mark";
    EXPECT_EQ(out.data[2], a->name) << "names are written in place";
    EXPECT_EQ(out.data[6], t->value + 2) << "text is written in place";
    for (const int32_t encoding : {ENCODING_UTF16_SWAPPED, ENCODING_UNKNOWN, 1}) {
        int32_t result = -1;
        const int64_t made = countAllocations([&] { written(a, encoding, &result); });
        EXPECT_EQ(result, 0) << "encoding " << encoding;
        EXPECT_EQ(made, 0) << "encoding " << encoding;
    }
    SerializeBuffer none{nullptr, 0};  // the inner entry refuses them too, writing nothing
    EXPECT_EQ(DOM_serializeImpl(a, ENCODING_UNKNOWN, &none, Recorder::write, &out), 0);
    EXPECT_EQ(out.calls.size(), 11u) << "no call for an unknown encoding";
}

TEST(Serialize, ARefusedAllocationKeepsWhatWasWrittenAndStops) {
    const std::string big(100, 'B');
    Parsed parsed = parseUtf8("<r a='" + std::string(70, 'A') + "'><s>" + big + "</s></r>");
    const Calls full = [&] {
        Recorder out;
        vrkDOM_serialize(parsed.document.get(), ENCODING_UTF8, Recorder::write, &out);
        return out.calls;
    }();
    // First the buffer itself is refused (the header is out), then each growth.
    const std::size_t kept[] = {1, 6, 12};
    EXPECT_EQ(
        forEachAllocationFailure([&](const AllocationRun &run) {
            Recorder out;
            const int32_t result =
                vrkDOM_serialize(parsed.document.get(), ENCODING_UTF8, Recorder::write, &out);
            const auto k = static_cast<std::size_t>(run.failingIndex() - 1);
            EXPECT_EQ(result, run.failed() ? 0 : 1);
            const std::size_t calls = run.failed() ? kept[k] : full.size();
            EXPECT_EQ(out.calls, Calls(full.begin(), full.begin() + static_cast<long>(calls)));
        }),
        4);
}

// Parsed, written and released without a frame per level; a document cut
// short fails at its innermost level and its partial tree is released.
TEST(Serialize, HundredThousandLevelsOnASmallStack) {
    // Names cycle through the alphabet, so that an end tag written for a
    // wrong level shows; the long piece at the bottom needs a larger buffer.
    std::string open;
    std::string close;
    for (int i = 0; i < 100'000; ++i) {
        open +=
            std::string("<") + static_cast<char>('a' + i % 26) + (i % 1000 ? ">t" : " n=\"v\">t");
        close = "u</" + std::string(1, static_cast<char>('a' + i % 26)) + ">" + close;
    }
    const std::string body = open + std::string(100, 'z') + close;
    std::string out;
    int32_t result = 0;
    std::string cutShort;
    runOnSmallStack([&] {
        Parsed parsed = parseUtf8(body);
        if (parsed.document) out = written(parsed.document.get(), ENCODING_UTF8, &result);
        cutShort = outcome(open);
    });
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(out == kHeader8 + body + "\n") << "the deep document written otherwise";
    EXPECT_EQ(cutShort, errorAt(ERR_END_TAG, static_cast<int32_t>(open.size())));
}
