// The C++ layer's input and output: characters beyond U+FFFF, UTF-16 in
// either byte order, malformed bytes, unpaired surrogates.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

const std::string kWide =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<a x=\"\xF0\x9F\x98\x80\">\xF0\x9D\x84\x9E \xC3\xA9</a>\n";

std::string utf8Of(const vrkxml::Result<vrkxml::Document> &parsed) {
    if (!parsed) return "error: " + parsed.error().message;
    auto written = vrkxml::serialize(parsed.value().node(), vrkxml::Encoding::utf8);
    return written ? written.value() : "error: " + written.error().message;
}

// The bytes of units in one byte order, with or without a mark.
std::string utf16Bytes(std::u16string_view units, bool bigEndian, bool mark) {
    std::string bytes;
    for (char16_t unit : (mark ? u"\uFEFF" : u"") + std::u16string(units)) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

TEST(CppUnicode, CharactersBeyondFFFFRoundTripByteForByte) {
    auto parsed = vrkxml::parse(kWide);
    ASSERT_TRUE(parsed.ok()) << parsed.error().message;
    const vrkNode *root = parsed.value().root();
    EXPECT_EQ(vrkxml::value(root->firstChild), u"\U0001D11E \u00E9");
    EXPECT_EQ(vrkxml::attribute(root, "x"), u"\U0001F600");
    EXPECT_EQ(utf8Of(parsed), kWide);
}

TEST(CppUnicode, Utf16InEitherByteOrderWithOrWithoutAMark) {
    const std::u16string units = *vrkxml::fromUtf8(kWide);
    for (const bool bigEndian : {false, true}) {
        for (const bool mark : {false, true}) {
            const std::string bytes = utf16Bytes(units, bigEndian, mark);
            EXPECT_EQ(utf8Of(vrkxml::parse(bytes)), kWide)
                << "big-endian " << bigEndian << ", mark " << mark;
        }
    }
    const auto odd = vrkxml::parse(utf16Bytes(u"<a/>", true, true) + "\x01");
    EXPECT_EQ(odd.error().code, vrkxml::errMalformedText);
    EXPECT_EQ(odd.error().offset, 10);
    const auto late = vrkxml::parse(utf16Bytes(u"<a>\n <b></c></a>", false, false));
    EXPECT_EQ(late.error().offset, 24) << "bytes, not units";
    EXPECT_EQ(late.error().line, 2);
}

TEST(CppUnicode, MalformedBytesAreRefusedAtTheFirstBadOne) {
    struct Case {
        std::string text;
        int32_t code;
        int64_t offset;
        int64_t line;
        int64_t column;
    };
    for (const Case &c : {Case{"<a>\n\xC3(</a>", vrkxml::errMalformedText, 4, 2, 1},
                          {"<\xC3\xA9>\xE2\x82</\xC3\xA9>", vrkxml::errMalformedText, 4, 1, 4},
                          {"<a>\xED\xA0\x80</a>", vrkxml::errMalformedText, 3, 1, 4},
                          {"<a>\xF4\x90\x80\x80</a>", vrkxml::errMalformedText, 3, 1, 4},
                          {"<a>\xC0\xAF</a>", vrkxml::errMalformedText, 3, 1, 4},
                          {"<a>x\0</a>"s, vrkxml::errZeroCharacter, 4, 1, 5}}) {
        const auto parsed = vrkxml::parse(c.text);
        ASSERT_FALSE(parsed.ok()) << c.text;
        EXPECT_EQ(parsed.error().code, c.code) << c.text;
        EXPECT_EQ(parsed.error().offset, c.offset) << c.text;
        EXPECT_EQ(parsed.error().line, c.line) << c.text;
        EXPECT_EQ(parsed.error().column, c.column) << c.text;
    }
    EXPECT_EQ(vrkxml::parse(u"<a/>\0"s).error().code, vrkxml::errZeroCharacter);
}

TEST(CppUnicode, AnUnpairedSurrogateIsAnErrorInUtf8Only) {
    const std::u16string units = u"<a>x"s + char16_t(0xDC00) + u"</a>";
    auto parsed = vrkxml::parse(units);  // the library takes any unit in UTF-16
    ASSERT_TRUE(parsed.ok()) << parsed.error().message;
    const auto utf8 = vrkxml::serialize(parsed.value().node(), vrkxml::Encoding::utf8);
    EXPECT_EQ(utf8.ok() ? 0 : utf8.error().code, vrkxml::errLoneSurrogate);
    EXPECT_TRUE(vrkxml::serialize(parsed.value().node(), vrkxml::Encoding::utf16).ok());
    EXPECT_EQ(vrkxml::encodeUtf8(units).error().code, vrkxml::errLoneSurrogate);
    EXPECT_EQ(vrkxml::encodeUtf8(u"\U0001F600").value(), "\xF0\x9F\x98\x80");
}

}  // namespace
