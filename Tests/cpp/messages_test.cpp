// Error codes in plain words: the hints for causes that people meet often,
// and the excerpt of the line.
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(CppMessages, HintsNameTheCommonCauses) {
    struct Case {
        std::string_view text;
        std::string_view hint;
    };
    for (const Case &c :
         {Case{"", "the text is empty"},
          {"<!DOCTYPE html>\n<html/>", "document type declarations are not supported"},
          {"<p>a & b</p>", "& must be written &amp;"},
          {"<p>&copy;</p>", "&copy; is not one of the five predefined entities"},
          {"<p>a < b</p>", "< must be written &lt;"},
          {"<p x='a<b'/>", "< must be written &lt; in attribute values"},
          {"<a><b></a>", "the end tag </a> does not match"},
          {"<a>&#x1F600;</a>", "a character reference beyond U+FFFF is refused"},
          {"<a\xF0\x90\x80\x80/>", "U+10000 may stand in names since the fifth edition"},
          {"<?xml version='1.0' encoding='latin1'?><a/>", "iconv -f latin1 -t UTF-8"},
          {"<p>&nbspZ;</p>", "&nbspZ; is not one of the five predefined entities"},
          {"<p>1 <2</p>", "< must be written &lt;"},
          {"<?xml?><a/>", "the XML declaration needs a version"},
          {"<a x/>", "every attribute has a quoted value"}}) {
        const auto parsed = vrkxml::parse(c.text);
        ASSERT_FALSE(parsed.ok()) << c.text;
        EXPECT_NE(parsed.error().hint.find(c.hint), std::string::npos)
            << c.text << ": hint is '" << parsed.error().hint << "'";
    }
}

TEST(CppMessages, TheExcerptShowsTheLineAroundTheColumn) {
    const std::string line = std::string(200, ' ') + "<b>";
    const auto parsed = vrkxml::parse("<a>\n" + line);
    ASSERT_FALSE(parsed.ok());
    const vrkxml::Error &error = parsed.error();
    EXPECT_EQ(error.column, 204);
    EXPECT_EQ(error.excerpt, "..." + line.substr(143));
    EXPECT_EQ(error.excerptColumn, 64);
}

}  // namespace
