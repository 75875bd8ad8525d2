// The parse entry: encoding detection, decoding, ownership of the caller's
// buffer, the failure records; tokens and the namespace stack.
#include <bit>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>
#include <gtest/gtest.h>
#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
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

void expectNoRoot(const Parsed &p, int32_t offset) {
    const vrkParseError &e = p.error;
    EXPECT_EQ(p.document, nullptr);
    EXPECT_EQ(e.code, ERR_NO_ROOT_ELEMENT);
    EXPECT_STREQ(e.file, "Source/xmlparser");
    EXPECT_TRUE(e.line > 0 && e.callerFile == nullptr && e.callerLine == 0 && e.message == nullptr);
    EXPECT_EQ(e.offset, offset);
}

void expectEntryFailure(const Parsed &p, int32_t code, const char *message) {
    const vrkParseError &e = p.error;
    EXPECT_EQ(p.document, nullptr);
    EXPECT_EQ(e.code, code);
    EXPECT_STREQ(e.message, message);
    EXPECT_STREQ(e.file, "Source/dom");
    EXPECT_STREQ(e.callerFile, "Source/dom");
    EXPECT_TRUE(e.line > 0 && e.callerLine == e.line && e.offset == 0);
}

}  // namespace

TEST(IdentifyCharacterEncoding, TableInStepOrder) {
    constexpr int32_t NO = ENCODING_UNKNOWN, U8 = ENCODING_UTF8, U16 = ENCODING_UTF16,
                      SW = ENCODING_UTF16_SWAPPED;
    const struct { unsigned char b0, b1; int32_t length, expected; } rows[] = {
        {0xFF, 0xFE, 1, NO}, {0x3C, 0x00, 0, NO}, {0x3C, 0x00, -1, NO}, {0xFE, 0xFF, 2, SW},
        {0xFF, 0xFE, 2, U16}, {0x00, 0x3C, 2, SW}, {0x3C, 0x00, 2, U16}, {0x00, 0x00, 2, U8},
        {'a', 0x00, 2, U8}, {0xFE, 0xFE, 2, U8}, {0x08, 0x00, 2, U8}, {0x0E, 0x00, 2, U8},
        {0xA0, 0x00, 2, U8}, {0x09, 0x00, 2, U16}, {0x0A, 0x00, 2, U16}, {0x0B, 0x00, 2, U16},
        {0x0C, 0x00, 2, U16}, {0x0D, 0x00, 2, U16}, {0x20, 0x00, 99, U16}, {0x20, 'a', 2, U8},
        {0x3C, 'a', 2, U8}};
    for (const auto &row : rows) {  // a block of two bytes, whatever length claims
        std::unique_ptr<unsigned char[]> bytes(new unsigned char[2]{row.b0, row.b1});
        EXPECT_EQ(IdentifyCharacterEncoding(bytes.get(), row.length), row.expected)
            << int{row.b0} << ' ' << int{row.b1} << " length " << row.length;
    }
}

TEST(ParseEntry, EntryFailuresFillTheRecordAndLeaveNothing) {
    const struct { std::string_view bytes; int32_t code; const char *message; } rows[] = {
        {"\0"sv, ERR_BAD_ENCODING, kBad},  {"\0<\0a\0/\0>\0\0"sv, ERR_BAD_ENCODING, kBad},
        {"a\xC3(\0"sv, ERR_ENCODING_DECL, kCorrupt}, {"\x80\0"sv, ERR_ENCODING_DECL, kCorrupt},
        {"\xEF\xBF\xBF\0"sv, ERR_ENCODING_DECL, kCorrupt},
        {"<\xF0\x9F\x98\x80/>\0"sv, ERR_ENCODING_DECL, kCorrupt},  // above U+FFFF
        {"<a>\xE2\x82\0"sv, ERR_ENCODING_DECL, kCorrupt}};
    for (const auto &row : rows) {
        const int64_t live = liveAllocations();
        std::string after;
        expectEntryFailure(parseBytes(row.bytes, &after), row.code, row.message);
        EXPECT_EQ(after, row.bytes);
        EXPECT_EQ(liveAllocations(), live);
    }
}

TEST(ParseEntry, NoRootRecordWithOffsetsInUnits) {
    const std::string mark = "\xEF\xBB\xBF";  // one unit, not three bytes; one mark only
    const std::pair<std::string, int32_t> utf8[] = {
        {mark, 1}, {mark + "<!DOCTYPE \xE4\xB8\xAD><a/>", 1}, {mark + mark, 1}, {"x", 0},
        {"<!DOCTYPE a><a/>", 0}};
    for (const auto &[text, offset] : utf8) expectNoRoot(parseUtf8(text), offset);
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

TEST(ParseEntry, BufferSwappedOnlyWhenBigEndianAndUtf16NeverCopied) {
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
}

TEST(ParseEntry, AllocationFailuresLeakNothing) {
    EXPECT_EQ(forEachAllocationFailure([](const AllocationRun &run) {
                  Parsed p = parseBytes("\xEF\xBB\xBFx\0"sv);
                  if (!run.failed()) return expectNoRoot(p, 1);
                  if (run.failingIndex() == 1) return expectEntryFailure(p, ERR_ENCODING_DECL, kCorrupt);
                  EXPECT_EQ(p.error.code, ERR_OUT_OF_MEMORY);
                  EXPECT_STREQ(p.error.file, "Source/dom");
                  EXPECT_STREQ(p.error.callerFile, "Source/xmlparser");
                  EXPECT_TRUE(p.error.callerLine > 0 && p.error.offset == 0 && p.error.message == nullptr);
              }),
              3);
}

TEST(TokenToString, CopiesTheUnitsFromAnOddAddress) {
    const std::u16string_view text = u"ab\u4E2Dcd\u00FFxy";
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[17]);  // no terminator behind
    for (std::size_t i = 0; i < 16; ++i) bytes[1 + i] = static_cast<unsigned char>(text[i / 2] >> (i % 2 * 8));
    auto *odd = reinterpret_cast<UniChar *>(bytes.get() + 1);
    for (std::size_t first : {0u, 3u, 7u})
        EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                      const Token token{odd + first, odd + 7};
                      UniChar *copy = tokenToString(&token);
                      EXPECT_EQ(str(copy), run.failed() ? std::u16string_view{} : text.substr(first));
                      std::free(copy);
                  }),
                  2);
}

TEST(NameSpaceStack, PushRecordsDepthAndLengthsPopTakesDepthsAtOrAbove) {
    UniChar text[] = {'p', 'u', 'r', 'i', 0};
    ProduceContext context{};
    const Token prefix{text, text}, uri{text + 1, text + 3}, none{nullptr, text + 3}, empty{text + 1, text};
    for (int32_t depth : {0, 1, 1, 2}) {
        context.depth = depth;
        ASSERT_EQ(pushNameSpaceStack(&context, depth == 1 ? &none : &prefix, depth == 2 ? &empty : &uri), 1);
    }
    const NameSpaceStackEntry *top = context.nameSpaceStack, *below = top->next;
    EXPECT_TRUE(top->depth == 2 && top->prefix == text && top->prefixLength == 1 &&
                top->uri == text + 1 && top->uriLength == 0);
    EXPECT_TRUE(below->depth == 1 && below->prefix == nullptr && below->prefixLength == 0 &&
                below->uriLength == 3);
    const std::pair<int32_t, int32_t> pops[] = {{3, 4}, {2, 3}, {2, 3}, {1, 1}, {-1, 0}};
    for (const auto &[depth, left] : pops) {
        context.depth = depth;
        popNameSpaceStack(&context);
        int32_t count = 0;
        for (const NameSpaceStackEntry *e = context.nameSpaceStack; e; e = e->next) ++count;
        EXPECT_EQ(count, left) << "depth " << depth;
    }
    EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                  const int32_t pushed = pushNameSpaceStack(&context, &prefix, &uri);
                  EXPECT_EQ(pushed, run.failed() ? 0 : 1);
                  EXPECT_EQ(context.nameSpaceStack == nullptr, run.failed());
                  popNameSpaceStack(&context);  // depth -1 takes all
              }),
              2);
}
