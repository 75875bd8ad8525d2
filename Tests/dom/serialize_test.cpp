// The serializer: the calls of the write callback in both encodings, the
// UTF-8 buffer, refused allocations and very deep trees.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/small_stack.h"
#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;
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
        if (encoding == ENCODING_UTF16) {
            out.append(reinterpret_cast<const char *>(&unit), 2);
        } else {
            out += static_cast<char>(unit);
        }
    }
    return out;
}

const std::string kHeader8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kHeader16 = encoded(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n", ENCODING_UTF16);

Calls serialized(const vrkNode *node, int32_t encoding) {
    Recorder out;
    EXPECT_EQ(vrkDOM_serialize(node, encoding, Recorder::write, &out), 1);
    return out.calls;
}

// Expects in both encodings the header, exactly these pieces, the line feed.
void expectCalls(const vrkNode *node, std::initializer_list<std::u16string_view> pieces) {
    for (const int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
        Calls expected{encoding == ENCODING_UTF8 ? kHeader8 : kHeader16};
        for (const std::u16string_view piece : pieces) expected.push_back(encoded(piece, encoding));
        expected.push_back(encoded(u"\n", encoding));
        EXPECT_EQ(serialized(node, encoding), expected) << "encoding " << encoding;
    }
}

DocumentPtr parsed(std::string_view text) {
    Parsed result = parseUtf8(text);
    EXPECT_NE(result.document, nullptr) << text << ": error " << result.error.code;
    return std::move(result.document);
}

vrkNode *root(const DocumentPtr &document) {
    return vrkDOM_getDocumentElement(document.get());
}

void setValue(vrkNode *node, std::u16string_view value) {
    vrkDOMException exception{};
    const Units copy = units(value);
    const auto length = static_cast<int32_t>(value.size());
    ASSERT_EQ(vrkNodeReal_setNodeValue(__FILE__, __LINE__, node, copy.data(), length, &exception), 1);
}

}  // namespace

TEST(SerializeCalls, TagsAttributesAndEscapedRuns) {
    DocumentPtr document = parsed("<a b='1&lt;2'>x</a>");
    setValue(root(document)->firstChild, u"x&y");  // one node: a parse splits text at each reference
    expectCalls(document.get(), {u"<", u"a", u" ", u"b", u"=\"", u"1", u"&lt;", u"2", u"\"", u">", u"x", u"&amp;", u"y",
                                 u"</", u"a", u">"});

    expectCalls(parsed("<a/>").get(), {u"<", u"a", u">", u"</", u"a", u">"});

    DocumentPtr other = parsed("<a e='' v='v'>t</a>");
    vrkNode *a = root(other);
    vrkNode *text = a->firstChild;
    setValue(text, u"<>");
    expectCalls(text, {u"", u"&lt;", u"", u"&gt;"});
    setValue(text, u"a<b>c&d'e\"f&&");
    expectCalls(text, {u"a", u"&lt;", u"b", u"&gt;", u"c", u"&amp;", u"d", u"&apos;", u"e", u"&quot;", u"f", u"&amp;",
                       u"", u"&amp;"});
    setValue(text, u"plain, \t\r\n and more");
    expectCalls(text, {u"plain, \t\r\n and more"});
    setValue(text, u"");
    expectCalls(text, {});

    // Attribute values escape the same five; empty and null values alike
    // give two quotes side by side.
    vrkNode *e = a->attributes.first;
    setValue(e->next, u"'q\"\t\n>&");
    vrkDOMException exception{};
    const Units name = units(u"n");
    vrkNode *unset = vrkDOMReal_createEANode(__FILE__, __LINE__, ATTRIBUTE_NODE, name.data(), 1, &exception);
    ASSERT_NE(unset, nullptr);
    ASSERT_EQ(unset->value, nullptr);
    vrkElementReal_setAttributeNode(__FILE__, __LINE__, a, unset, &exception);
    ASSERT_EQ(e->next->next, unset);
    expectCalls(e, {u" ",      u"e",    u"=\"",  u"\"", u" ",     u"v",  u"=\"", u"",  u"&apos;", u"q",
                    u"&quot;", u"\t\n", u"&gt;", u"",   u"&amp;", u"\"", u" ",   u"n", u"=\"",    u"\""});
}

TEST(SerializeCalls, RawValuesStartNodesAndUnknownKinds) {
    DocumentPtr document = parsed("<r><?p?><?q d ?><![CDATA[]]><![CDATA[x]]><a x='1' y='2'/>t<b>c</b></r>");
    vrkNode *r = root(document);
    vrkNode *cdata = r->firstChild->next->next->next;
    setValue(cdata, u"<&]]>");
    vrkNode *a = cdata->next;
    vrkNode *b = a->next->next;
    // Siblings of the start node come along; its parent's end tag does not.
    expectCalls(r->firstChild, {u"<?", u"p",   u"",          u"?>",    u"<?",  u"q", u" ",  u"d ", u"?>", u"<![CDATA[",
                                u"",   u"]]>", u"<![CDATA[", u"<&]]>", u"]]>", u"<", u"a",  u" ",  u"x",  u"=\"",
                                u"1",  u"\"",  u" ",         u"y",     u"=\"", u"2", u"\"", u">",  u"</", u"a",
                                u">",  u"t",   u"<",         u"b",     u">",   u"c", u"</", u"b",  u">"});
    expectCalls(a->attributes.first, {u" ", u"x", u"=\"", u"1", u"\"", u" ", u"y", u"=\"", u"2", u"\""});
    expectCalls(nullptr, {});

    // An unknown kind writes nothing, not even its children, and the walk
    // goes on behind it.
    a->type = b->type = 5;
    expectCalls(a, {u"t"});
    a->type = b->type = ELEMENT_NODE;
}

TEST(SerializeEncodings, Utf8UnitByUnitAndUtf16InPlace) {
    DocumentPtr document = parsed("<a>t</a>");
    vrkNode *a = root(document);
    setValue(a->firstChild, u"\u00E9\u20AC");
    EXPECT_EQ(serialized(a->firstChild, ENCODING_UTF8), (Calls{kHeader8, "\xC3\xA9\xE2\x82\xAC", "\n"}));
    setValue(a->firstChild, u"\U0001F600");
    EXPECT_EQ(serialized(a->firstChild, ENCODING_UTF8), (Calls{kHeader8, "\xED\xA0\xBD\xED\xB8\x80", "\n"}));

    setValue(a->firstChild, u"x<y");
    Recorder out;
    ASSERT_EQ(vrkDOM_serialize(document.get(), ENCODING_UTF16, Recorder::write, &out), 1);
    ASSERT_EQ(out.calls.size(), 11u);
    EXPECT_EQ(out.calls[0].size(), 80u);  // no byte order mark ahead of it
    EXPECT_EQ(out.calls[0].substr(0, 2), encoded(u"<", ENCODING_UTF16));
    EXPECT_EQ(out.data[2], a->name);
    EXPECT_EQ(out.data[4], a->firstChild->value);
    EXPECT_EQ(out.data[6], a->firstChild->value + 2);
    EXPECT_EQ(out.data[8], a->name);

    for (const int32_t encoding : {ENCODING_UTF16_SWAPPED, ENCODING_UNKNOWN, 1}) {
        Recorder none;
        int32_t result = -1;
        EXPECT_EQ(countAllocations([&] { result = vrkDOM_serialize(a, encoding, Recorder::write, &none); }), 0);
        EXPECT_EQ(result, 0);
        EXPECT_TRUE(none.calls.empty()) << "encoding " << encoding;
    }
}

TEST(SerializeBuffer, GrowsOnlyForALargerPieceAndToExactlyItsSize) {
    DocumentPtr document = parsed("<a>t<b/>u</a>");
    vrkNode *t = root(document)->firstChild;
    SerializeBuffer buffer{static_cast<char *>(std::malloc(65)), 64};
    // Sizes count bytes, not units: 22 units of 64 bytes, 33 units of 65.
    const std::u16string fits = std::u16string(21, u'\u20AC') + u"a", over = std::u16string(32, u'\u00E9') + u"a";
    struct Step {
        std::u16string value;
        int64_t allocations;
        int32_t capacity;
    };
    for (const Step &step :
         {Step{fits, 0, 64}, Step{over, 1, 65}, Step{u"short", 0, 65}, Step{std::u16string(100, u'z'), 1, 100}}) {
        setValue(t->next->next, step.value);
        Recorder out;
        EXPECT_EQ(countAllocations([&] {
                      EXPECT_EQ(DOM_serializeImpl(t->next->next, ENCODING_UTF8, &buffer, Recorder::write, &out), 1);
                  }),
                  step.allocations);
        EXPECT_EQ(buffer.capacity, step.capacity);
        ASSERT_EQ(out.calls.size(), 1u);
        EXPECT_EQ(out.calls[0].size(), static_cast<std::size_t>(vrkUniCharToUTF8Len(t->next->next->value)));
    }
    std::free(buffer.data);

    // A whole call: the buffer, and one growth for a larger piece but none
    // for a shorter one behind it.  UTF-16 makes the buffer and never grows it.
    setValue(t, fits);
    setValue(t->next->next, u"short");
    EXPECT_EQ(countAllocations([&] { serialized(document.get(), ENCODING_UTF8); }), 1);
    setValue(t, over);
    EXPECT_EQ(countAllocations([&] { serialized(document.get(), ENCODING_UTF8); }), 2);
    EXPECT_EQ(countAllocations([&] { serialized(document.get(), ENCODING_UTF16); }), 1);
}

TEST(SerializeFailure, RefusedAllocationKeepsWhatWasWrittenAndStops) {
    DocumentPtr document = parsed("<r a='" + std::string(70, 'A') + "'><s>" + std::string(100, 'B') + "<t><?p " +
                                  std::string(150, 'C') + "?></t></s><u>x</u></r>");
    const std::string before = describe(document.get());
    const Calls full = serialized(document.get(), ENCODING_UTF8);
    // The pieces that need a larger buffer, in turn.
    std::vector<std::ptrdiff_t> growing;
    std::size_t capacity = 64;
    for (std::size_t i = 1; i + 1 < full.size(); ++i) {
        if (full[i].size() > capacity) growing.push_back(static_cast<std::ptrdiff_t>(i));
        capacity = std::max(capacity, full[i].size());
    }
    ASSERT_EQ(growing.size(), 3u);

    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  Recorder out;
                  const int32_t result = vrkDOM_serialize(document.get(), ENCODING_UTF8, Recorder::write, &out);
                  // First the buffer itself is refused (the header is out), then each growth.
                  auto written = static_cast<std::ptrdiff_t>(full.size());
                  if (run.failed()) {
                      written =
                          run.failingIndex() == 1 ? 1 : growing.at(static_cast<std::size_t>(run.failingIndex() - 2));
                  }
                  EXPECT_EQ(result, run.failed() ? 0 : 1);
                  EXPECT_EQ(out.calls, Calls(full.begin(), full.begin() + written)) << "refused " << run.failingIndex();
                  EXPECT_EQ(describe(document.get()), before);
              }),
              5);

    // UTF-16 needs the buffer alone, and nothing after it can fail.
    std::string full16;
    vrkDOM_serialize(document.get(), ENCODING_UTF16, appendTo, &full16);
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  std::string out;
                  const int32_t result = vrkDOM_serialize(document.get(), ENCODING_UTF16, appendTo, &out);
                  EXPECT_EQ(result, run.failed() ? 0 : 1);
                  EXPECT_TRUE(out == (run.failed() ? kHeader16 : full16));
              }),
              2);
}

TEST(SerializeDeep, HundredThousandLevelsOnASmallStack) {
    // Names cycle through the alphabet, so that an end tag written for a
    // wrong level shows; the long piece at the bottom needs a larger buffer.
    std::string open, close;
    for (int i = 0; i < 100'000; ++i) {
        open += std::string("<") + static_cast<char>('a' + i % 26) + (i % 1000 == 0 ? " n=\"v\">t" : ">t");
    }
    for (int i = 100'000 - 1; i >= 0; --i) close += std::string("u</") + static_cast<char>('a' + i % 26) + ">";
    const std::string body = open + std::string(100, 'z') + close;
    DocumentPtr document = parsed(body);
    ASSERT_NE(document, nullptr);

    std::string out8, out16;
    std::function<void()> work = [&] {
        EXPECT_EQ(vrkDOM_serialize(document.get(), ENCODING_UTF8, appendTo, &out8), 1);
        EXPECT_EQ(vrkDOM_serialize(document.get(), ENCODING_UTF16, appendTo, &out16), 1);
        // A refused growth at the bottom ends every open level at once.  (The
        // last "t" begins the long piece.)
        forEachAllocationFailure([&](const AllocationRun &run) {
            std::string out;
            const int32_t result = vrkDOM_serialize(document.get(), ENCODING_UTF8, appendTo, &out);
            if (run.failingIndex() == 2) {
                EXPECT_TRUE(result == 0 && out == kHeader8 + open.substr(0, open.size() - 1)) << out.size();
            }
        });
    };
    runOnSmallStack(work);

    EXPECT_TRUE(out8 == kHeader8 + body + "\n");
    EXPECT_TRUE(out16 == kHeader16 + encoded(std::u16string(body.begin(), body.end()) + u"\n", ENCODING_UTF16));
}
