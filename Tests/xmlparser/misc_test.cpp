// Comments, processing instructions and what may stand around the root.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "support/parse_helpers.h"
#include "support/tree_text.h"

using namespace vrktest;

namespace {

struct TreeCase {
    std::string_view text;
    std::string tree;
};

struct ErrorCase {
    std::string_view text;
    int32_t code;
    int32_t offset;
};

void expectTrees(std::initializer_list<TreeCase> cases) {
    for (const TreeCase &c : cases) {
        Parsed parsed = parseUtf8(c.text);
        EXPECT_EQ(describe(parsed.document.get()), c.tree) << c.text << " code " << parsed.error.code;
    }
}

void expectErrors(std::initializer_list<ErrorCase> cases) {
    for (const ErrorCase &c : cases) {
        Parsed parsed = parseUtf8(c.text);
        EXPECT_EQ(parsed.document, nullptr) << c.text;
        EXPECT_EQ(parsed.error.code, c.code) << c.text;
        EXPECT_EQ(parsed.error.offset, c.offset) << c.text;
        EXPECT_STREQ(parsed.error.file, "Source/xmlparser") << c.text;
        EXPECT_EQ(parsed.error.callerFile, nullptr) << c.text;
        EXPECT_EQ(parsed.error.message, nullptr) << c.text;
    }
}

}  // namespace

TEST(Comment, LeavesNoNodeAnywhere) {
    expectTrees({
        {"<!--p--><a>x<!--c-->y</a><!--t-->", "#document[a[\"x\",\"y\"]]"},
        {"<a><!----></a>", "#document[a]"},
        {"<a><!--a-b- c - -></a>--></a>", "#document[a]"},
        {"<a><!--<b>&nope;<![CDATA[ ]]>?>--></a>", "#document[a]"},
        // The four opening units are not reused for the closing.
        {"<!-->--><a/>", "#document[a]"},
        {"<!--->--><a/>", "#document[a]"},
    });
}

TEST(Comment, MalformedFailsAtTheFirstBadUnit) {
    expectErrors({
        {"<a><!-- x ---></a>", ERR_COMMENT_HYPHENS, 10},
        {"<a><!-- a -- b --></a>", ERR_COMMENT_HYPHENS, 10},
        {"<a><!--\xC3\xA9 -- --></a>", ERR_COMMENT_HYPHENS, 9},  // offsets count units, not bytes
        {"<a/><!-- x -- y -->", ERR_COMMENT_HYPHENS, 11},       // behind the root too
        {"<a/><!--x--", ERR_COMMENT_HYPHENS, 9},
        {"<!--><a/>", ERR_UNTERMINATED, 9},
        {"<!---><a/>", ERR_UNTERMINATED, 10},
        {"<a><!-- x", ERR_UNTERMINATED, 9},
        {"<a/><!-- -", ERR_UNTERMINATED, 10},
        {"<a/><!--", ERR_UNTERMINATED, 8},
    });
}

TEST(ProcessingInstruction, TargetAndData) {
    expectTrees({
        {"<a><?t?></a>", "#document[a[?t\"\"]]"},
        {"<a><?t d?></a>", "#document[a[?t\"d\"]]"},
        {"<a><?t \t\r\n d  e \n?></a>", "#document[a[?t\"d  e \n\"]]"},
        {"<a><?t!x?></a>", "#document[a[?t\"!x\"]]"},
        {"<a><?t a?b? >?" "?></a>", "#document[a[?t\"a?b? >?\"]]"},
        {"<a><?p:q-1.x <x>?></a>", "#document[a[?p:q-1.x\"<x>\"]]"},
        {"<a>x<?t?>y</a>", "#document[a[\"x\",?t\"\",\"y\"]]"},
        // Only xml itself followed by white space is refused.
        {"<!----><?xml?><a/>", "#document[?xml\"\",a]"},
        {"<a><?XmL?><?xml-stylesheet href='s'?><?xmlx?></a>",
         "#document[a[?XmL\"\",?xml-stylesheet\"href='s'\",?xmlx\"\"]]"},
        {" <?xml-stylesheet x?><a/>", "#document[?xml-stylesheet\"x\",a]"},
    });
}

TEST(ProcessingInstruction, MalformedFailsWithBadPI) {
    expectErrors({
        {"<a><?t data", ERR_BAD_PI, 11},
        {"<a><?t d?", ERR_BAD_PI, 9},
        {"<a><?t", ERR_BAD_PI, 6},
        {"<a/><?t", ERR_BAD_PI, 7},
        {"<a><? t?></a>", ERR_BAD_PI, 5},
        {"<a><?" "?></a>", ERR_BAD_PI, 5},
        {"<a><?1x?></a>", ERR_BAD_PI, 5},
        {"<a><?xml d?></a>", ERR_BAD_PI, 5},
        {"<a><?XML\td?></a>", ERR_BAD_PI, 5},
        {"<a><?xMl\nd?></a>", ERR_BAD_PI, 5},
        {"<a/><?xml\r?>", ERR_BAD_PI, 6},
        {"<?XML version='1.0'?><a/>", ERR_BAD_PI, 2},
        {"<?Xml version='1.0'?><a/>", ERR_BAD_PI, 2},
    });
}

TEST(Misc, AroundTheRootInTextOrder) {
    expectTrees({
        {"<?p1?><!--c-->\n<?p2 x?><a><?in?></a><?t1?> <!--c-->\t<?t2 y?>\n",
         "#document[?p1\"\",?p2\"x\",a[?in\"\"],?t1\"\",?t2\"y\"]"},
        // Parsing stops at the first unit that is no Misc; the rest is not read.
        {"<a/><?t?>junk<?u?>", "#document[a,?t\"\"]"},
        {"<a/> <b/><?u?>", "#document[a]"},
        {"<a/><!-- x --> <?u ?>", "#document[a,?u\"\"]"},
    });
}
