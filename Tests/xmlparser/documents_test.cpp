// Whole documents: the tree each gives, or its error code and offset (in
// units), with no block left behind (outcome() appends " (leaked)"); start
// tags of many attributes, and every refused allocation.
#include <string>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/random.h"

using namespace vrktest;

const auto err = errorAt;  // short, for the tables

// The tree a document gives, or its error code and offset in units (the caret
// under the input marks it): CDATA and character references, a comment
// ended by one hyphen, an end tag naming the start of the element's name,
// "]]>" in text, a standalone declaration, processing instructions cut short
// or named xml.
TEST(Documents, TreesAndErrorOffsets) {
    const Case cases[] = {
        {"<?xml version='1.0' standalone='no'?><a>x<![CDATA[y]]>z</a>",
         R"(#document[a["x",C"y","z"]])"},
        {"<a><?XmL?><?xml-stylesheet href='s'?></a>",
         R"(#document[a[?XmL"",?xml-stylesheet"href='s'"]])"},
        {"<a><![CDATA[", err(ERR_UNTERMINATED, 12)},
        //            ^
        {"<a><!--x-", err(ERR_UNTERMINATED, 9)},
        //         ^
        {"<ab></a>", err(ERR_END_TAG, 8)},
        //        ^
        {"<a>x]]>y</a>", err(ERR_END_TAG, 4)},
        //    ^
        {"<a>&#65", err(ERR_CHAR_REF, 7)},
        //       ^
        {"<a><?t data", err(ERR_BAD_PI, 11)},
        //           ^
        {"<a><? t?></a>", err(ERR_BAD_PI, 5)},
        //     ^
        {"<a/><?xml\r?>", err(ERR_BAD_PI, 6)},
        //      ^
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

TEST(Documents, ManyAttributesKeepTheirOrderAndDuplicatesAreFound) {
    Random random(7);
    for (int round = 0; round < 20; ++round) {
        const int count = 1 + static_cast<int>(random.below(2000));
        std::string tag = "<e";
        std::string expected = "#document[e(";
        for (int i = 0; i < count; ++i) {  // names in no sorted order
            const std::string name = "a" + std::to_string((i * 7919) % 10007);
            const std::string value = std::to_string(i);
            tag += " " + name + "='" + value + "'";
            expected += (i == 0 ? "" : " ") + name + "=\"" + value + "\"";
        }
        EXPECT_EQ(outcome(tag + "/>"), expected + ")]");
        const uint32_t repeated = random.below(static_cast<std::size_t>(count));
        const std::string twice = tag + " a" + std::to_string((repeated * 7919) % 10007) + "='x'";
        EXPECT_EQ(outcome(twice + "/>"),
                  err(ERR_DUPLICATE_ATTRIBUTE, static_cast<int32_t>(twice.size())));
    }
}

TEST(Documents, ManyAttributesUnderEveryRefusedAllocation) {
    // More attributes than a start tag keeps without a block of its own.
    std::string text = "<e";
    for (int i = 0; i < 40; ++i) text += " a" + std::to_string(i) + "='" + std::to_string(i) + "'";
    text += "/>";
    forEachAllocationFailure([&](const AllocationRun &run) {
        const Parsed parsed = parseUtf8(text);
        const int32_t expected = run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
        EXPECT_EQ(parsed.document == nullptr, run.failed());
        if (run.failed()) {
            EXPECT_EQ(parsed.error.code, expected) << "allocation " << run.failingIndex();
        }
    });
}
