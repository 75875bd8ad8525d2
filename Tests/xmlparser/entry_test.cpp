// The parse entry: encoding detection, decoding, UTF-16 forms, ownership of
// the caller's buffer and the failure records.
#include <bit>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;
using namespace std::string_view_literals;
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr const char *kCorrupt = "Unable to process UTF-8 encoding, probably corrupt.";
constexpr const char *kBad = "Must be UTF-8 or UTF-16 encoding";

// Parses exactly these bytes (terminator included) from a block of that size.
Parsed parseBytes(std::string_view bytes, std::string *after = nullptr) {
    std::unique_ptr<char[]> buffer(new char[bytes.size()]);
    std::memcpy(buffer.get(), bytes.data(), bytes.size());
    Parsed parsed{nullptr, {}};
    std::memset(&parsed.error, 0x55, sizeof parsed.error);
    parsed.document.reset(vrkDOM_parse(buffer.get(), &parsed.error));
    if (after) after->assign(buffer.get(), bytes.size());
    return parsed;
}

// The failure record in one line: code, offset, file, caller file, message and
// how the two line numbers stand.
std::string record(const Parsed &p) {
    const vrkParseError &e = p.error;
    if (p.document != nullptr) return "a document";
    const auto text = [](const char *s) { return std::string(s ? s : "-"); };
    return "error " + std::to_string(e.code) + " at " + std::to_string(e.offset) + " " + text(e.file) + " " +
           text(e.callerFile) + " " + text(e.message) + (e.line <= 0 ? " no line" : "") +
           (e.callerLine == 0 ? "" : e.callerLine == e.line ? " same line" : " caller line");
}

std::string noRoot(int32_t offset) {
    return "error " + std::to_string(ERR_NO_ROOT_ELEMENT) + " at " + std::to_string(offset) + " Source/xmlparser - -";
}
void expectNoRoot(const Parsed &p, int32_t offset) { EXPECT_EQ(record(p), noRoot(offset)); }

std::string entryFailure(int32_t code, const char *message) {
    return "error " + std::to_string(code) + " at 0 Source/dom Source/dom " + message + " same line";
}

}  // namespace

TEST(ParseEntry, IdentifiesTheEncodingFromTwoBytes) {
    constexpr int32_t NO = ENCODING_UNKNOWN, U8 = ENCODING_UTF8, U16 = ENCODING_UTF16, SW = ENCODING_UTF16_SWAPPED;
    const struct { unsigned char b0, b1; int32_t length, expected; } rows[] = {
        {0xFF, 0xFE, 1, NO}, {0x3C, 0x00, 0, NO}, {0x3C, 0x00, -1, NO}, {0xFE, 0xFF, 2, SW}, {0xFF, 0xFE, 2, U16},
        {0x00, 0x3C, 2, SW}, {0x3C, 0x00, 2, U16}, {0x00, 0x00, 2, U8}, {'a', 0x00, 2, U8}, {0xFE, 0xFE, 2, U8},
        {0x08, 0x00, 2, U8}, {0x0E, 0x00, 2, U8}, {0xA0, 0x00, 2, U8}, {0x09, 0x00, 2, U16}, {0x0A, 0x00, 2, U16},
        {0x0B, 0x00, 2, U16}, {0x0C, 0x00, 2, U16}, {0x0D, 0x00, 2, U16}, {0x20, 0x00, 99, U16}, {0x20, 'a', 2, U8},
        {0x3C, 'a', 2, U8}};
    for (const auto &row : rows) {  // a block of two bytes, whatever length claims
        std::unique_ptr<unsigned char[]> bytes(new unsigned char[2]{row.b0, row.b1});
        EXPECT_EQ(IdentifyCharacterEncoding(bytes.get(), row.length), row.expected)
            << int{row.b0} << ' ' << int{row.b1} << " length " << row.length;
    }
}

TEST(ParseEntry, FailureRecordsAndOffsetsInUnits) {
    const struct { std::string_view bytes; int32_t code; const char *message; } rows[] = {
        {"\0"sv, ERR_BAD_ENCODING, kBad}, {"\0<\0a\0/\0>\0\0"sv, ERR_BAD_ENCODING, kBad},
        {"a\xC3(\0"sv, ERR_ENCODING_DECL, kCorrupt}, {"\x80\0"sv, ERR_ENCODING_DECL, kCorrupt},
        {"\xEF\xBF\xBF\0"sv, ERR_ENCODING_DECL, kCorrupt},
        {"<\xF0\x9F\x98\x80/>\0"sv, ERR_ENCODING_DECL, kCorrupt},  // above U+FFFF
        {"<a>\xE2\x82\0"sv, ERR_ENCODING_DECL, kCorrupt}};
    for (const auto &row : rows) {
        const int64_t live = liveAllocations();
        std::string after;
        EXPECT_EQ(record(parseBytes(row.bytes, &after)), entryFailure(row.code, row.message));
        EXPECT_EQ(after, row.bytes);
        EXPECT_EQ(liveAllocations(), live);
    }
    const std::string mark = "\xEF\xBB\xBF";  // one unit, not three bytes; one mark only
    for (const auto &[text, offset] : {std::pair<std::string, int32_t>{mark, 1}, {mark + "<!DOCTYPE \xE4\xB8\xAD><a/>", 1},
                                       {mark + mark, 1}, {"x", 0}, {"<!DOCTYPE a><a/>", 0}})
        expectNoRoot(parseUtf8(text), offset);
    expectNoRoot(parseBytes("a\0"sv), 0);      // one byte of UTF-8
    expectNoRoot(parseBytes("x\0\0\0"sv), 0);  // unmarked UTF-16 "x" is UTF-8 "x"
    expectNoRoot(parseBytes("<\0\0\0"sv), 0);  // one byte of the UTF-16 class: one unit
    expectNoRoot(parseBytes("\f\0\0\0"sv), 0);  // a space to the detection, none to XML
    for (Utf16Form form : {Utf16Form::Native, Utf16Form::Swapped})
        for (bool odd : {false, true}) {
            for (std::u16string_view text : {u""sv, u"x"sv, u"<!DOCTYPE \U0001F600\u0100><a/>"sv})
                expectNoRoot(parseUtf16(text, {form, true, odd}), 1);
            if (form == Utf16Form::Native) expectNoRoot(parseUtf16(u"<!DOCTYPE a><a/>", {form, false, odd}), 0);
        }
}

TEST(ParseEntry, Utf16FormsGiveTheUtf8Tree) {
    const char *expected = "#document[{ü}é:中({http://www.w3.org/2000/xmlns/}xmlns:é=\"ü\")[\"ö €\",ÿ,C\"<é>\"]]";
    EXPECT_EQ(describe(parseUtf8("<é:中 xmlns:é='ü'>ö €<ÿ/><![CDATA[<é>]]></é:中>").document.get()), expected);
    for (const Utf16Options &form : {Utf16Options{Utf16Form::Native, false, false}, {Utf16Form::Native, true, false},
                                     {Utf16Form::Native, false, true}, {Utf16Form::Swapped, true, false},
                                     {Utf16Form::Swapped, true, true}}) {
        const int label = static_cast<int>(form.form) * 4 + form.byteOrderMark * 2 + form.oddAddress;
        EXPECT_EQ(describe(parseUtf16(u"<é:中 xmlns:é='ü'>ö €<ÿ/><![CDATA[<é>]]></é:中>", form).document.get()), expected)
            << label;
        Parsed failed = parseUtf16(u"<é>中]]></é>", form);  // offsets count units, the mark included
        EXPECT_EQ(errorAt(failed.error.code, failed.error.offset), errorAt(ERR_END_TAG, form.byteOrderMark ? 5 : 4)) << label;
    }
    // Surrogate pairs pass through.
    Parsed pairs = parseUtf16(u"<a>\U0001F600<![CDATA[\U0001F601]]></a>");
    const vrkNode *text = pairs.document ? pairs.document->firstChild->firstChild : nullptr;
    ASSERT_TRUE(text != nullptr && text->next != nullptr);
    EXPECT_EQ(str(text->value) + str(text->next->value), u"\xD83D\xDE00\xD83D\xDE01");
}

TEST(ParseEntry, BufferSwappedInPlaceAndNeverCopiedForUtf16) {
    for (bool odd : {false, true}) {
        std::vector<unsigned char> native, after;
        const std::u16string_view text = u"<!DOCTYPE \u0100\u4E2D\u00FF><a/>";
        expectNoRoot(parseUtf16Buffer(text, {Utf16Form::Native, true, odd}, native), 1);
        expectNoRoot(parseUtf16Buffer(text, {Utf16Form::Swapped, true, odd}, after), 1);
        EXPECT_EQ(after, native);  // every unit swapped, the mark too, and left so
        vrkParseError error{};
        EXPECT_EQ(vrkDOM_parse(after.data(), &error), nullptr);  // now read in place
        EXPECT_EQ(error.offset, 1);
        EXPECT_EQ(after, native);
    }
    std::string after;
    expectNoRoot(parseBytes("\xEF\xBB\xBFx\0"sv, &after), 1);
    EXPECT_EQ(after, "\xEF\xBB\xBFx\0"sv);
    // The document record only; UTF-8 adds the decoded copy, freed again.
    EXPECT_EQ(countAllocations([] { parseUtf16(u"x", {Utf16Form::Native, true, false}); }), 1);
    EXPECT_EQ(countAllocations([] { parseUtf16(u"x", {Utf16Form::Swapped, true, true}); }), 1);
    EXPECT_EQ(countAllocations([] { parseBytes("\xEF\xBB\xBFx\0"sv); }), 2);
    EXPECT_EQ(forEachAllocationFailure([](const AllocationRun &run) {
                  Parsed p = parseBytes("\xEF\xBB\xBFx\0"sv);
                  const std::string outOfMemory =
                      "error " + std::to_string(ERR_OUT_OF_MEMORY) + " at 0 Source/dom Source/xmlparser - caller line";
                  EXPECT_EQ(record(p), !run.failed()              ? noRoot(1)
                                       : run.failingIndex() == 1 ? entryFailure(ERR_ENCODING_DECL, kCorrupt)
                                                                  : outOfMemory);
              }),
              3);
}
