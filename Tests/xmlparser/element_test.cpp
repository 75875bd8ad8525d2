// Start, empty-element and end tags, the content between them, and what the
// document production leaves unread behind the root.
#include <string>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/outcome.h"
#include "support/tree_text.h"

using namespace vrktest;

TEST(ElementProduction, BuildsTheTreeAsWritten) {
    const Case cases[] = {
        {"<a/>", "#document[a]"},
        {"<a></a>", "#document[a]"},
        {"<a \t\r\n/>", "#document[a]"},
        {"<a ></a\n>", "#document[a]"},
        {"<a><b/><c></c></a>", "#document[a[b,c]]"},
        {"<a><b></b>t<c/></a>", "#document[a[b,\"t\",c]]"},
        {"<a><b><c/></b><d>x</d></a>", "#document[a[b[c],d[\"x\"]]]"},
        {"<a><a><a/></a></a>", "#document[a[a[a]]]"},
        {"<a> <b/>\n</a>", "#document[a[\" \",b,\"\n\"]]"},
        {"<a x='1'y=\"2\"/>", "#document[a(x=\"1\" y=\"2\")]"},
        {"<a.b-c_d\xC3\xA9></a.b-c_d\xC3\xA9>", "#document[a.b-c_d\xC3\xA9]"},
        {"<p:a xmlns:p='u'></p:a>", "#document[{u}p:a({http://www.w3.org/2000/xmlns/}xmlns:p=\"u\")]"},
        // Nothing behind the root is examined.
        {"<a/>junk", "#document[a]"},
        {"<a/><b/>", "#document[a]"},
        {"<a></a></b>", "#document[a]"},
        {"<a/><![CDATA[", "#document[a]"},
        {"<a/>&bogus;< ]]>", "#document[a]"},
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

TEST(ElementProduction, ReportsTagErrorsAtTheirOffsets) {
    const Case cases[] = {
        // Start tags: white space may come before > and />, never behind <.
        {"<a", errorAt(ERR_TAG_END, 2)},
        {"<a x='1' ?>", errorAt(ERR_TAG_END, 9)},
        {"<a / >", errorAt(ERR_TAG_END, 3)},
        {"<a><b x='1'", errorAt(ERR_TAG_END, 11)},
        {"< a/>", errorAt(ERR_NO_ROOT_ELEMENT, 0)},
        {"<a:/>", errorAt(ERR_NO_ROOT_ELEMENT, 0)},
        {"text<a/>", errorAt(ERR_NO_ROOT_ELEMENT, 0)},
        {"<![CDATA[x]]><a/>", errorAt(ERR_NO_ROOT_ELEMENT, 0)},
        // End tags.
        {"<a></ a>", errorAt(ERR_ETAG_NAME, 5)},
        {"<a></>", errorAt(ERR_ETAG_NAME, 5)},
        {"<a></a", errorAt(ERR_TAG_END, 6)},
        {"<a></a b>", errorAt(ERR_TAG_END, 7)},
        {"<a></a/>", errorAt(ERR_TAG_END, 6)},
        // Names compared exactly as written; the offset lies behind the >.
        {"<a></b>", errorAt(ERR_END_TAG, 7)},
        {"<a></A>", errorAt(ERR_END_TAG, 7)},
        {"<a></aa>", errorAt(ERR_END_TAG, 8)},
        {"<aa></a>", errorAt(ERR_END_TAG, 8)},
        {"<a><b></a></b>", errorAt(ERR_END_TAG, 10)},
        {"<a><b></b></b>", errorAt(ERR_END_TAG, 14)},
        {"<p:a xmlns:p='u' xmlns:q='u'></q:a>", errorAt(ERR_END_TAG, 35)},
        // Content that no end tag follows: where the content stopped.
        {"<a>", errorAt(ERR_END_TAG, 3)},
        {"<a>text", errorAt(ERR_END_TAG, 7)},
        {"<a><b/>", errorAt(ERR_END_TAG, 7)},
        {"<a><b>", errorAt(ERR_END_TAG, 6)},
        {"<a>x]]>y</a>", errorAt(ERR_END_TAG, 4)},
        {"<a>]]></a>", errorAt(ERR_END_TAG, 3)},
        {"<a>x&y;</a>", errorAt(ERR_END_TAG, 4)},
        {"<a>&amp</a>", errorAt(ERR_END_TAG, 3)},
        {"<a>&</a>", errorAt(ERR_END_TAG, 3)},
        {"<a>x< b/></a>", errorAt(ERR_END_TAG, 4)},
        {"<a><b>t</b>< b/></a>", errorAt(ERR_END_TAG, 11)},
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;

    // The record of a production's failure names the parser and no caller.
    Parsed parsed = parseUtf8("<a></b>");
    ASSERT_EQ(parsed.document, nullptr);
    EXPECT_STREQ(parsed.error.file, "Source/xmlparser");
    EXPECT_EQ(parsed.error.callerFile, nullptr);
    EXPECT_EQ(parsed.error.message, nullptr);
}
