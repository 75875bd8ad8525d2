// The serializer: the calls of the write callback in both encodings, the
// UTF-8 buffer, refused allocations and very deep trees.
#include <algorithm>
#include <vector>

#include "dom_test.h"
#include "support/small_stack.h"

using namespace domtest;
using Calls = std::vector<std::string>;

namespace {

// Each call of the callback: the bytes it was handed, and where they were.
struct Recorder {
    Calls calls;
    std::vector<const void *> data;
    static int write(const void *bytes, uint32_t length, void *user) {
        auto *self = static_cast<Recorder *>(user);
        self->calls.push_back(length == 0 ? std::string() : std::string(static_cast<const char *>(bytes), length));
        self->data.push_back(bytes);
        return 0;
    }
};
int appendTo(const void *bytes, uint32_t length, void *user) {
    static_cast<std::string *>(user)->append(static_cast<const char *>(bytes), length);
    return 0;
}

// ASCII text as the serializer writes it: bytes, or units in machine order.
std::string encoded(std::u16string_view text, int32_t encoding) {
    std::string out;
    for (const char16_t c : text) {
        const auto unit = static_cast<uint16_t>(c);
        if (encoding == ENCODING_UTF16) out.append(reinterpret_cast<const char *>(&unit), 2);
        else out += static_cast<char>(unit);
    }
    return out;
}
const std::string kHeader8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kHeader16 = encoded(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n", ENCODING_UTF16);

Calls calls(const vrkNode *node, int32_t encoding) {
    Recorder out;
    EXPECT_EQ(vrkDOM_serialize(node, encoding, Recorder::write, &out), 1);
    return out.calls;
}
// Expects in both encodings the header, exactly these pieces (split at |), the line feed.
void expectCalls(const vrkNode *node, std::u16string_view pieces) {
    for (const int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
        Calls expected{encoding == ENCODING_UTF8 ? kHeader8 : kHeader16};
        for (std::size_t at = 0; !pieces.empty() && at <= pieces.size();) {
            const std::size_t end = std::min(pieces.find(u'|', at), pieces.size());
            expected.push_back(encoded(pieces.substr(at, end - at), encoding));
            at = end + 1;
        }
        expected.push_back(encoded(u"\n", encoding));
        EXPECT_EQ(calls(node, encoding), expected) << "encoding " << encoding;
    }
}
void setValue(vrkNode *node, std::u16string_view value) {
    vrkDOMException e{};
    ASSERT_EQ(vrkNodeReal_setNodeValue(kCaller, 0, node, units(value).data(), len(value), &e), 1);
}

}  // namespace

TEST(Serialize, CallsForEachKindEscapesAndStartNodes) {
    Parsed parsed = parseUtf8("<a b='1&lt;2' e='' v='v'><?p?><?q d ?><![CDATA[]]><![CDATA[x]]><c/>t<d>c</d></a>");
    vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get()), *cdata = a->firstChild->next->next->next;
    vrkNode *c = cdata->next, *t = c->next, *d = t->next, *attrs = a->attributes.first;
    setValue(cdata, u"<&]]>");  // written raw
    setValue(t, u"a<b>c&d'e\"f&&");
    setValue(attrs->next->next, u"'q\"\t\n>&");
    vrkDOMException e{};
    vrkElementReal_setAttributeNode(kCaller, 0, a, attr(u"n"), &e);  // a null value
    expectCalls(parsed.document.get(),
                u"<|a| |b|=\"|1|&lt;|2|\"| |e|=\"|\"| |v|=\"||&apos;|q|&quot;|\t\n|&gt;||&amp;|\"| |n|=\"|\"|>|"
                u"<?|p||?>|<?|q| |d |?>|<![CDATA[||]]>|<![CDATA[|<&]]>|]]>|<|c|>|</|c|>|"
                u"a|&lt;|b|&gt;|c|&amp;|d|&apos;|e|&quot;|f|&amp;||&amp;|<|d|>|c|</|d|>|</|a|>");
    // Siblings of the start node come along; its parent's end tag does not.
    expectCalls(d->firstChild, u"c");
    expectCalls(attrs, u" |b|=\"|1|&lt;|2|\"| |e|=\"|\"| |v|=\"||&apos;|q|&quot;|\t\n|&gt;||&amp;|\"| |n|=\"|\"");
    expectCalls(nullptr, u"");
    setValue(t, u"plain, \t\r\n and more");
    expectCalls(t, u"plain, \t\r\n and more|<|d|>|c|</|d|>");
    setValue(t, u"");  // no call at all
    expectCalls(t, u"<|d|>|c|</|d|>");
    setValue(t, u"t");
    // An unknown kind writes nothing, not even its children; the walk goes on behind it.
    c->type = d->type = 5;
    expectCalls(c, u"t");
    c->type = d->type = ELEMENT_NODE;
}

TEST(Serialize, Utf8UnitByUnitUtf16InPlaceAndUnknownEncodings) {
    Parsed parsed = parseUtf8("<a>t</a>");
    vrkNode *a = vrkDOM_getDocumentElement(parsed.document.get()), *t = a->firstChild;
    setValue(t, u"\u00E9\u00E9\u00E9\u20AC\u20AC\u20AC\U0001F600");  // each half of a pair on its own; a run of 8+
    EXPECT_EQ(calls(t, ENCODING_UTF8), (Calls{kHeader8, "\xC3\xA9\xC3\xA9\xC3\xA9\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xED\xA0\xBD\xED\xB8\x80", "\n"}));
    // 22 units, measured (more than 64 / 3), fill the first buffer's 64 bytes exactly: no growth.
    setValue(t, std::u16string(21, u'\u20AC') + u"a");
    EXPECT_EQ(countAllocations([&] { EXPECT_EQ(calls(t, ENCODING_UTF8)[1].size(), 64u); }), 1);
    setValue(t, u"x<y");
    Recorder out;
    ASSERT_EQ(vrkDOM_serialize(parsed.document.get(), ENCODING_UTF16, Recorder::write, &out), 1);
    ASSERT_EQ(out.calls.size(), 11u);
    EXPECT_EQ(out.calls[0], kHeader16);  // no byte order mark ahead of it
    EXPECT_TRUE(out.data[2] == a->name && out.data[4] == t->value && out.data[6] == t->value + 2 && out.data[8] == a->name);
    for (const int32_t encoding : {ENCODING_UTF16_SWAPPED, ENCODING_UNKNOWN, 1}) {
        Recorder none;
        int32_t result = -1;
        EXPECT_EQ(countAllocations([&] { result = vrkDOM_serialize(a, encoding, Recorder::write, &none); }), 0);
        EXPECT_TRUE(result == 0 && none.calls.empty()) << "encoding " << encoding;
    }
}

TEST(Serialize, RefusedAllocationKeepsWhatWasWrittenAndStops) {
    Parsed parsed = parseUtf8("<r a='" + std::string(70, 'A') + "'><s>" + std::string(100, 'B') + "<t><?p " +
                              std::string(150, 'C') + "?></t></s><u>x</u></r>");
    const vrkNode *document = parsed.document.get();
    const std::string before = describe(document);
    const Calls full = calls(document, ENCODING_UTF8);
    // The pieces that need a larger buffer (64 bytes at first), in turn.
    std::vector<std::ptrdiff_t> growing;
    for (std::size_t i = 1, capacity = 64; i + 1 < full.size(); capacity = std::max(capacity, full[i++].size()))
        if (full[i].size() > capacity) growing.push_back(static_cast<std::ptrdiff_t>(i));
    ASSERT_EQ(growing.size(), 3u);
    EXPECT_EQ(countAllocations([&] { calls(document, ENCODING_UTF16); }), 1);  // the buffer, never grown
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  Recorder out;
                  const int32_t result = vrkDOM_serialize(document, ENCODING_UTF8, Recorder::write, &out);
                  // First the buffer itself is refused (the header is out), then each growth.
                  auto written = static_cast<std::ptrdiff_t>(full.size());
                  if (run.failed()) written = run.failingIndex() == 1 ? 1 : growing.at(static_cast<std::size_t>(run.failingIndex() - 2));
                  EXPECT_EQ(result, run.failed() ? 0 : 1);
                  EXPECT_EQ(out.calls, Calls(full.begin(), full.begin() + written)) << "refused " << run.failingIndex();
                  EXPECT_EQ(describe(document), before);
              }),
              5);
    std::string full16;
    vrkDOM_serialize(document, ENCODING_UTF16, appendTo, &full16);
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  std::string out;
                  const int32_t result = vrkDOM_serialize(document, ENCODING_UTF16, appendTo, &out);
                  EXPECT_TRUE(result == (run.failed() ? 0 : 1) && out == (run.failed() ? kHeader16 : full16));
              }),
              2);
}

TEST(Serialize, HundredThousandLevelsOnASmallStack) {
    // Names cycle through the alphabet, so that an end tag written for a
    // wrong level shows; the long piece at the bottom needs a larger buffer.
    std::string open, close;
    for (int i = 0; i < 100'000; ++i) open += std::string("<") + static_cast<char>('a' + i % 26) + (i % 1000 ? ">t" : " n=\"v\">t");
    for (int i = 100'000 - 1; i >= 0; --i) close += std::string("u</") + static_cast<char>('a' + i % 26) + ">";
    const std::string body = open + std::string(100, 'z') + close;
    Parsed parsed = parseUtf8(body);
    ASSERT_NE(parsed.document, nullptr);
    std::string out8, out16, cut;
    runOnSmallStack([&] {
        EXPECT_EQ(vrkDOM_serialize(parsed.document.get(), ENCODING_UTF8, appendTo, &out8), 1);
        EXPECT_EQ(vrkDOM_serialize(parsed.document.get(), ENCODING_UTF16, appendTo, &out16), 1);
        // A refused growth at the bottom ends every open level at once.
        forEachAllocationFailure([&](const AllocationRun &run) {
            std::string out;
            const int32_t result = vrkDOM_serialize(parsed.document.get(), ENCODING_UTF8, appendTo, &out);
            if (run.failingIndex() == 2) cut = std::to_string(result) + out;
        });
    });
    EXPECT_TRUE(out8 == kHeader8 + body + "\n");
    EXPECT_TRUE(out16 == kHeader16 + encoded(std::u16string(body.begin(), body.end()) + u"\n", ENCODING_UTF16));
    EXPECT_TRUE(cut == "0" + kHeader8 + open.substr(0, open.size() - 1));  // the last "t" begins the long piece
}
