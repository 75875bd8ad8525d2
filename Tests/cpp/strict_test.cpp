// The strict checks: well-formed documents pass them all (what each refuses
// is the tool's test and the conformance page's).
#include "vrkxml.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

vrkxml::Result<vrkxml::Document> strictly(std::string_view text) {
    vrkxml::ParseOptions options;
    options.strict = true;
    return vrkxml::parse(text, options);
}

TEST(CppStrict, PassesWellFormedDocuments) {
    using namespace std::string_literals;
    const std::string declaredLittleEndian =
        "<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0001\0.\0000\0'\0 \0"
        "e\0n\0c\0o\0d\0i\0n\0g\0=\0'\0U\0T\0F\0-\0001\0006\0L\0E\0'\0?\0>\0<\0a\0/\0>\0"s;
    const std::string documents[] = {
        "<?xml version='1.0' encoding='utf-8'?>\r\n<a xml:lang='en'>x</a>\n<!-- c --><?p d?>\n",
        "<p:a xmlns:p='urn:p' xmlns='urn:d' p:b='1' b='2'"
        " xmlns:xml='http://www.w3.org/XML/1998/namespace'/>",
        "<a xmlns:p='u' xmlns:q='v' p:x='' q:x=''>\xF0\x9F\x98\x80\t<?pi?><?pi data?></a>",
        "\xFF\xFE<\0a\0/\0>\0"s, declaredLittleEndian};
    for (const std::string &text : documents) {
        const auto parsed = strictly(text);
        EXPECT_TRUE(parsed.ok()) << text << ": " << (parsed ? "" : parsed.error().message);
    }
    // UTF-16 that neither begins with a mark nor declares its byte order.
    EXPECT_EQ(strictly("<\0a\0/\0>\0"s).error().code, vrkxml::errEncodingMismatch);
}

}  // namespace
