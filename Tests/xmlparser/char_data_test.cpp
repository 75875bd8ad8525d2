// Runs of text and CDATA sections inside elements, in UTF-8 and UTF-16.
#include <string>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/outcome.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

TEST(CharacterData, KeepsTextAndSectionsAsWritten) {
    const Case cases[] = {
        {"<a>]</a>", "#document[a[\"]\"]]"},
        {"<a>]]</a>", "#document[a[\"]]\"]]"},
        {"<a>x]]y]>z></a>", "#document[a[\"x]]y]>z>\"]]"},
        {"<a>\r\n\t\x01</a>", "#document[a[\"\r\n\t\x01\"]]"},
        {"<a>&amp;&lt;&gt;&quot;&apos;&#65;&#x42;</a>",
         "#document[a[\"&\",\"<\",\">\",\"\\\"\",\"'\",\"A\",\"B\"]]"},
        {"<a><![CDATA[]]></a>", "#document[a[C\"\"]]"},
        {"<a><![CDATA[<![CDATA[x]]></a>", "#document[a[C\"<![CDATA[x\"]]"},
        {"<a><![CDATA[x]]]></a>", "#document[a[C\"x]\"]]"},
        {"<a><![CDATA[<b>&amp;]]]]></a>", "#document[a[C\"<b>&amp;]]\"]]"},
        {"<a>x<![CDATA[y]]>z</a>", "#document[a[\"x\",C\"y\",\"z\"]]"},
        // Failures.
        {"<a><![CDATA[", errorAt(ERR_UNTERMINATED, 12)},
        {"<a><![CDATA[x]]", errorAt(ERR_UNTERMINATED, 15)},
        {"<a><![CDATA[x</b>", errorAt(ERR_UNTERMINATED, 17)},
        {"<a><![CDATA[x]]></a", errorAt(ERR_TAG_END, 19)},
        {"<a><![CDATA x]]></a>", errorAt(ERR_END_TAG, 3)},
        {"<a>]]]></a>", errorAt(ERR_END_TAG, 4)},
        {"<a>t<![CDATA[x]]>]]></a>", errorAt(ERR_END_TAG, 17)},
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

TEST(CharacterData, Utf16GivesTheSameTreeAsUtf8) {
    const char *expected =
        "#document[{ü}é:中({http://www.w3.org/2000/xmlns/}xmlns:é=\"ü\")[\"ö €\",ÿ,C\"<é>\"]]";
    EXPECT_EQ(describe(parseUtf8("<é:中 xmlns:é='ü'>ö €<ÿ/><![CDATA[<é>]]></é:中>").document.get()), expected);

    const Utf16Options forms[] = {
        {Utf16Form::Native, false, false},
        {Utf16Form::Native, true, false},
        {Utf16Form::Native, false, true},
        {Utf16Form::Swapped, true, false},
        {Utf16Form::Swapped, true, true},
    };
    for (const Utf16Options &form : forms) {
        const std::string label = std::string(form.form == Utf16Form::Swapped ? "swapped" : "native") +
                                  (form.byteOrderMark ? " with mark" : "") + (form.oddAddress ? " odd" : "");
        Parsed parsed = parseUtf16(u"<é:中 xmlns:é='ü'>ö €<ÿ/><![CDATA[<é>]]></é:中>", form);
        EXPECT_EQ(describe(parsed.document.get()), expected) << label;

        // Offsets count units, the mark included.
        Parsed failed = parseUtf16(u"<é>中]]></é>", form);
        EXPECT_EQ(failed.error.code, ERR_END_TAG) << label;
        EXPECT_EQ(failed.error.offset, form.byteOrderMark ? 5 : 4) << label;
    }
    EXPECT_EQ(parseUtf8("<é>中]]></é>").error.offset, 4);
}

TEST(CharacterData, SurrogatePairsPassThroughUtf16) {
    Parsed parsed = parseUtf16(u"<a>\U0001F600<![CDATA[\U0001F601]]></a>");
    ASSERT_NE(parsed.document, nullptr);
    const vrkNode *text = parsed.document->firstChild->firstChild;
    ASSERT_TRUE(text != nullptr && text->next != nullptr);
    EXPECT_EQ(str(text->value), u"\xD83D\xDE00");
    EXPECT_EQ(str(text->next->value), u"\xD83D\xDE01");
}
