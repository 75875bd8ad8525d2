// The C++ layer: text helpers, serialize's refusal and error positions.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CppText, Utf8HelpersAndAnUnknownEncoding) {
    EXPECT_EQ(vrkxml::fromUtf8("\xE0\xA4\x85"), u"\u0905") << "a three-byte form led by E0";
    // A lone surrogate is shown as U+FFFD.
    EXPECT_EQ(vrkxml::toUtf8(std::u16string{u'a', char16_t(0xD800), u'b'}),
              "a\xEF\xBF\xBD"
              "b");
    auto result = vrkxml::parse("<a/>");
    ASSERT_TRUE(result.ok()) << result.error().message;
    auto refused = vrkxml::serialize(result.value().root(), static_cast<vrkxml::Encoding>(99));
    ASSERT_FALSE(refused.ok()) << "an unknown encoding";
    EXPECT_EQ(refused.error().code, ERR_BAD_ENCODING);
}

TEST(CppParse, ErrorsCarryLineAndColumnOfTheCallersText) {
    struct Case {
        vrkxml::Result<vrkxml::Document> result;
        int64_t offset;
        int64_t line;
        int64_t column;
    };
    // The end tag's error lies behind it; "\xC3\xA9" is one character of two bytes.
    for (const Case &c : {Case{vrkxml::parse("<a>\n  <b>\n  </c>\n</a>"), 16, 3, 7},
                          {vrkxml::parse("<a>\r\n<\xC3\xA9>\r\n  </c>\n</a>"), 17, 3, 7},
                          {vrkxml::parse(std::u16string_view(u"<a>\r<\U0001F600/>")), 4, 2, 1},
                          {vrkxml::parse("\xEF\xBB\xBFx"), 3, 1, 1},
                          {vrkxml::parse(""), 0, 1, 1},
                          {vrkxml::parse("<"), 0, 1, 1},
                          {vrkxml::parse(std::u16string_view()), 0, 1, 1}}) {
        ASSERT_FALSE(c.result.ok());
        const vrkxml::Error &error = c.result.error();
        EXPECT_FALSE(error.message.empty()) << error.code;
        EXPECT_EQ(error.offset, c.offset) << error.message;
        EXPECT_EQ(error.line, c.line) << error.message;
        EXPECT_EQ(error.column, c.column) << error.message;
    }
}

}  // namespace
