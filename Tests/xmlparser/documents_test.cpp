// Whole documents: the tree each gives, or its error code and offset (in
// units), with no block left behind (outcome() appends " (leaked)").
#include <gtest/gtest.h>

#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"

using namespace vrktest;

#define XMLNS_NS "{http://www.w3.org/2000/xmlns/}"
#define XML_NS "{http://www.w3.org/XML/1998/namespace}"

namespace {

const auto err = errorAt;

void expectOutcomes(std::initializer_list<Case> cases) {
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

}  // namespace

TEST(Documents, TagsAndWhatFollowsTheRoot) {
    expectOutcomes({
        {"<a \t\r\n/>", "#document[a]"}, {"<a><b></b>t<c/></a>", "#document[a[b,\"t\",c]]"},
        {"<a> <b/>\n</a>", "#document[a[\" \",b,\"\n\"]]"},
        {"<a.b-c_d\xC3\xA9></a.b-c_d\xC3\xA9>", "#document[a.b-c_d\xC3\xA9]"},
        // Nothing behind the root is examined.
        {"<a/>junk", "#document[a]"}, {"<a></a></b>", "#document[a]"}, {"<a/><![CDATA[", "#document[a]"},
        {"<a/>&bogus;< ]]>", "#document[a]"}, {"<a", err(ERR_TAG_END, 2)}, {"<a x='1' ?>", err(ERR_TAG_END, 9)},
        {"<a / >", err(ERR_TAG_END, 3)}, {"< a/>", err(ERR_NO_ROOT_ELEMENT, 0)},
        {"text<a/>", err(ERR_NO_ROOT_ELEMENT, 0)}, {"<![CDATA[x]]><a/>", err(ERR_NO_ROOT_ELEMENT, 0)},
        {"<a></ a>", err(ERR_ETAG_NAME, 5)}, {"<a></>", err(ERR_ETAG_NAME, 5)}, {"<a></a", err(ERR_TAG_END, 6)},
        {"<a></a b>", err(ERR_TAG_END, 7)},
        // End tag names compared exactly; the offset lies behind the >.
        {"<a></b>", err(ERR_END_TAG, 7)}, {"<a></A>", err(ERR_END_TAG, 7)}, {"<a></aa>", err(ERR_END_TAG, 8)},
        {"<a><b></a></b>", err(ERR_END_TAG, 10)}, {"<p:a xmlns:p='u' xmlns:q='u'></q:a>", err(ERR_END_TAG, 35)},
        // Content no end tag follows: where the content stopped.
        {"<a>", err(ERR_END_TAG, 3)}, {"<a>text", err(ERR_END_TAG, 7)}, {"<a><b/>", err(ERR_END_TAG, 7)},
        {"<a>x]]>y</a>", err(ERR_END_TAG, 4)}, {"<a>x&y;</a>", err(ERR_END_TAG, 4)},
        {"<a>&amp</a>", err(ERR_END_TAG, 3)}, {"<a>x< b/></a>", err(ERR_END_TAG, 4)},
    });
    // The record of a production's failure names the parser and no caller.
    Parsed parsed = parseUtf8("<a></b>");
    EXPECT_STREQ(parsed.error.file, "Source/xmlparser");
    EXPECT_EQ(parsed.error.callerFile, nullptr);
    EXPECT_EQ(parsed.error.message, nullptr);
}

TEST(Documents, TextSectionsAndReferencesInContent) {
    expectOutcomes({
        {"<a>]</a>", "#document[a[\"]\"]]"}, {"<a>x]]y]>z></a>", "#document[a[\"x]]y]>z>\"]]"},
        {"<a>a&amp;b&lt;&gt;&quot;&apos;&#65;&#x42;</a>",
         "#document[a[\"a\",\"&\",\"b\",\"<\",\">\",\"\\\"\",\"'\",\"A\",\"B\"]]"},
        {"<a>&#13;&#x100000041;</a>", "#document[a[\"\r\",\"A\"]]"}, {"<a><![CDATA[]]></a>", "#document[a[C\"\"]]"},
        {"<a><![CDATA[<![CDATA[x]]></a>", "#document[a[C\"<![CDATA[x\"]]"},
        {"<a><![CDATA[<b>&amp;]]]]></a>", "#document[a[C\"<b>&amp;]]\"]]"},
        {"<a>x<![CDATA[y]]>z</a>", "#document[a[\"x\",C\"y\",\"z\"]]"}, {"<a><![CDATA[", err(ERR_UNTERMINATED, 12)},
        {"<a><![CDATA[x]]", err(ERR_UNTERMINATED, 15)}, {"<a><![CDATA[x</b>", err(ERR_UNTERMINATED, 17)},
        {"<a><![CDATA[x]]></a", err(ERR_TAG_END, 19)}, {"<a><![CDATA x]]></a>", err(ERR_END_TAG, 3)},
        {"<a>]]]></a>", err(ERR_END_TAG, 4)}, {"<a>t<![CDATA[x]]>]]></a>", err(ERR_END_TAG, 17)},
        {"<a>&#1;</a>", err(ERR_CHAR_REF, 7)}, {"<a>\xC3\xA9&#1;</a>", err(ERR_CHAR_REF, 8)},
        {"<a>&#65", err(ERR_CHAR_REF, 7)}, {"<a>x&LT;</a>", err(ERR_END_TAG, 4)},
    });
}

TEST(Documents, CommentsProcessingInstructionsAndMisc) {
    expectOutcomes({
        {"<!--p--><a>x<!--c-->y</a><!--t-->", "#document[a[\"x\",\"y\"]]"},
        {"<a><!--<b>&nope;<![CDATA[ ]]>?>--></a>", "#document[a]"},
        // The four opening units are not reused for the closing.
        {"<!-->--><a/>", "#document[a]"}, {"<!--->--><a/>", "#document[a]"},
        {"<a><!-- x ---></a>", err(ERR_COMMENT_HYPHENS, 10)},
        {"<a><!--\xC3\xA9 -- --></a>", err(ERR_COMMENT_HYPHENS, 9)},
        {"<a/><!-- x -- y -->", err(ERR_COMMENT_HYPHENS, 11)}, {"<!--><a/>", err(ERR_UNTERMINATED, 9)},
        {"<!---><a/>", err(ERR_UNTERMINATED, 10)}, {"<a><!-- x", err(ERR_UNTERMINATED, 9)},
        {"<a><?t \t\r\n d  e \n?></a>", "#document[a[?t\"d  e \n\"]]"},
        {"<a><?t a?b? >?" "?></a>", "#document[a[?t\"a?b? >?\"]]"},
        {"<a><?p:q-1.x <x>?></a>", "#document[a[?p:q-1.x\"<x>\"]]"},
        // Only xml itself followed by white space is refused.
        {"<!----><?xml?><a/>", "#document[?xml\"\",a]"},
        {"<a><?XmL?><?xml-stylesheet href='s'?><?xmlx?></a>",
         "#document[a[?XmL\"\",?xml-stylesheet\"href='s'\",?xmlx\"\"]]"},
        {"<a><?t data", err(ERR_BAD_PI, 11)}, {"<a><? t?></a>", err(ERR_BAD_PI, 5)},
        {"<a><?" "?></a>", err(ERR_BAD_PI, 5)}, {"<a><?1x?></a>", err(ERR_BAD_PI, 5)},
        {"<a><?XML\td?></a>", err(ERR_BAD_PI, 5)}, {"<a/><?xml\r?>", err(ERR_BAD_PI, 6)},
        {"<?Xml version='1.0'?><a/>", err(ERR_BAD_PI, 2)},
        {"<?p1?><!--c-->\n<?p2 x?><a><?in?></a><?t1?> <!--c-->\t<?t2 y?>\n",
         "#document[?p1\"\",?p2\"x\",a[?in\"\"],?t1\"\",?t2\"y\"]"},
        // Parsing stops at the first unit that is no Misc.
        {"<a/><?t?>junk<?u?>", "#document[a,?t\"\"]"}, {"<a/> <b/><?u?>", "#document[a]"},
    });
}

TEST(Documents, XmlDeclaration) {
    expectOutcomes({
        {"<?xml version='2.0' ?><a/>", "#document[a]"}, {"<?xml version=\"abc_.:-Z9\"?><a/>", "#document[a]"},
        {"<?xml\tversion='1.0'\nencoding='Utf-8'\r\nstandalone=\"yes\"?><a/>", "#document[a]"},
        {"<?xml version='1.0' encoding=''?><a/>", "#document[a]"},
        // The detected encoding decides, whatever the declaration names.
        {"<?xml version='1.0' encoding='utf-16'?><a/>", "#document[a]"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a/>", "#document[a]"},
        {"<?xml?><a/>", err(ERR_XMLDECL_VERSION, 5)}, {"<?xmlversion='1.0'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml Version='1.0'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml-stylesheet href='s'?><a/>", err(ERR_XMLDECL_VERSION, 5)},
        {"<?xml version '1.0'?><a/>", err(ERR_EQ_MISSING, 13)}, {"<?xml version=1.0?><a/>", err(ERR_OPENING_QUOTE, 14)},
        {"<?xml version=''?><a/>", err(ERR_DECL_VALUE, 15)}, {"<?xml version='1.0\"?><a/>", err(ERR_CLOSING_QUOTE, 18)},
        {"<?xml version='1.0'  x?><a/>", err(ERR_XMLDECL_END, 21)},
        {"<?xml version='1.0'encoding='UTF-8'?><a/>", err(ERR_XMLDECL_END, 19)},
        {"<?xml version='1.0' encoding='UTF-8'standalone='no'?><a/>", err(ERR_XMLDECL_END, 36)},
        {"<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>", err(ERR_XMLDECL_END, 37)},
        {"<?xml version='1.0' ?", err(ERR_XMLDECL_END, 20)},
        {"<?xml version='1.0' encoding=UTF-8?><a/>", err(ERR_ENCODING_DECL, 29)},
        {"<?xml version='1.0' encoding='ASCII'?><a/>", err(ERR_BAD_ENCODING, 30)},
        {"<?xml version='1.0' encoding='UTF-8\"?><a/>", err(ERR_CLOSING_QUOTE, 35)},
        {"<?xml version='1.0' encoding='a:b'?><a/>", err(ERR_CLOSING_QUOTE, 31)},
        {"<?xml version='1.0' standalone=yes?><a/>", err(ERR_OPENING_QUOTE, 31)},
        {"<?xml version='1.0' standalone='Yes'?><a/>", err(ERR_DECL_VALUE, 32)},
        {"\xEF\xBB\xBF<?xml?><a/>", err(ERR_XMLDECL_VERSION, 6)},
        // Not at the very start it is a processing instruction with a refused target.
        {" <?xml version='1.0'?><a/>", err(ERR_BAD_PI, 3)}, {"<!----><?xml version='1.0'?><a/>", err(ERR_BAD_PI, 9)},
        // A pending declaration error wins unless there is no root.
        {"<?xml version='1.0' encoding?><!-- -- --><a/>", err(ERR_EQ_MISSING, 28)},
        {"<?xml version='1.0' encoding?><a></b>", err(ERR_EQ_MISSING, 28)},
        {"<?xml version='1.0' standalone?><a/>", err(ERR_EQ_MISSING, 30)},
        {"<?xml version='1.0' encoding?>", err(ERR_NO_ROOT_ELEMENT, 30)},
        {"<?xml version='1.0' encoding?> <!--c--> junk", err(ERR_NO_ROOT_ELEMENT, 40)},
    });
    // The mark counts as one unit in UTF-16 as well.
    Parsed wide = parseUtf16(u"<?xml version='1.0' encoding='ascii'?><a/>", {.byteOrderMark = true});
    EXPECT_EQ(errorAt(wide.error.code, wide.error.offset), err(ERR_BAD_ENCODING, 31));
}

TEST(Documents, Attributes) {
    expectOutcomes({
        {"<a x='\">' y=\"'>\"/>", R"(#document[a(x="\">" y="'>")])"},
        {"<a\n\tx\r\n=\n\t'v'\n/>", R"(#document[a(x="v")])"},
        {"<a x='\t\n\r\x01\x1F'/>", "#document[a(x=\"\t\n\r\x01\x1F\")]"},
        {"<a x='&#9;&#10;&#13;'/>", "#document[a(x=\"\t\n\r\")]"},
        {"<a x='&lt;&#65;&#x42;'/>", R"(#document[a(x="<AB")])"},
        {"<a x='&#38;amp;' y='&amp;lt;'/>", R"(#document[a(x="&amp;" y="&lt;")])"},
        {"<a x='&#x100000041;&quot;&apos;'/>", R"(#document[a(x="A\"'")])"},
        {"<a x='1'y='2'/>", R"(#document[a(x="1" y="2")])"}, {"<a A='1' a='2'/>", R"(#document[a(A="1" a="2")])"},
        {"<a xmlns:p='u' p:a='1' xmlns:q='u' q:a='2'/>",
         "#document[a(" XMLNS_NS R"(xmlns:p="u" {u}p:a="1" )" XMLNS_NS R"(xmlns:q="u" {u}q:a="2")])"},
        {"<a x='x&y'/>", err(ERR_ATTVALUE_END, 7)}, {"<a x='&nope;'/>", err(ERR_ATTVALUE_END, 6)},
        {"<a x='x<y'/>", err(ERR_ATTVALUE_END, 7)}, {"<a x='&#1;'/>", err(ERR_CHAR_REF, 10)},
        {"<a x='&#xD800;'/>", err(ERR_CHAR_REF, 14)}, {"<a x='&#65'/>", err(ERR_CHAR_REF, 10)},
        {"<a x='abc", err(ERR_ATTVALUE_END, 9)}, {"<a x='\xC3\xA9&#65", err(ERR_CHAR_REF, 11)},
        {"<a x=\"it's", err(ERR_ATTVALUE_END, 10)}, {"<a x=1/>", err(ERR_OPENING_QUOTE, 5)},
        {"<a x/>", err(ERR_EQ_MISSING, 4)}, {"<a x  'v'/>", err(ERR_EQ_MISSING, 4)},
        {"<a a:b:c='v'/>", err(ERR_EQ_MISSING, 6)}, {"<a a:='v'/>", err(ERR_TAG_END, 3)},
        {"<a xmlns:='v'/>", err(ERR_NSATT_NAME, 9)}, {"<a xmlns:a:b='v'/>", err(ERR_EQ_MISSING, 10)},
        {"<a xmlnsfoo='v'/>", err(ERR_EQ_MISSING, 8)},
        // Errors in the attribute list come before the namespaces are resolved.
        {"<a p:x='1' y='&#1;'/>", err(ERR_CHAR_REF, 18)},
        {"<a p:x='1' x='2' x='3'/>", err(ERR_DUPLICATE_ATTRIBUTE, 22)},
        {"<p:a x='1'>&#1;</p:a>", err(ERR_UNDECLARED_PREFIX, 10)},
        // Duplicates: the whole name, exactly; the offset is behind the second value.
        {"<a x='1' x='2'/>", err(ERR_DUPLICATE_ATTRIBUTE, 14)},
        {"<a x='1' y='' x='1'>", err(ERR_DUPLICATE_ATTRIBUTE, 19)},
        {"<a xmlns='u' xmlns='v'/>", err(ERR_DUPLICATE_ATTRIBUTE, 22)},
        {"<a xmlns:p='u' p:x='1' p:x='1'/>", err(ERR_DUPLICATE_ATTRIBUTE, 30)},
    });
    // Only the duplicate carries a message.
    EXPECT_STREQ(parseUtf8("<a x='1' x='1'/>").error.message, "Duplicate attribute name.");
    EXPECT_EQ(parseUtf8("<a x='&#1;' x='1'/>").error.message, nullptr);
    EXPECT_EQ(parseUtf8("<a x/>").error.message, nullptr);
}

TEST(Documents, NamespaceScope) {
    expectOutcomes({
        // The default applies to elements only.
        {"<a xmlns='u' b='1'/>", "#document[{u}a(xmlns=\"u\" b=\"1\")]"},
        {"<a xmlns=''><b/></a>", "#document[{}a(xmlns=\"\")[{}b]]"},
        {"<a xmlns:p=''><p:b/></a>", "#document[a(" XMLNS_NS "xmlns:p=\"\")[{}p:b]]"},
        // Resolution comes after the last attribute of the tag.
        {"<x p:a='1' xmlns:p='u'/>", "#document[x({u}p:a=\"1\" " XMLNS_NS "xmlns:p=\"u\")]"},
        {"<p:a xmlns:p='1'><p:b xmlns:p='2'><p:c/></p:b><p:d/></p:a>",
         "#document[{1}p:a(" XMLNS_NS "xmlns:p=\"1\")[{2}p:b(" XMLNS_NS "xmlns:p=\"2\")[{2}p:c],{1}p:d]]"},
        {"<a xmlns='1'><b xmlns='2'/><c xmlns=''><d/></c><e/></a>",
         "#document[{1}a(xmlns=\"1\")[{2}b(xmlns=\"2\"),{}c(xmlns=\"\")[{}d],{1}e]]"},
        {"<r><a xmlns='1'><b/></a><c/></r>", "#document[r[{1}a(xmlns=\"1\")[{1}b],c]]"},
        // Reserved prefixes: no declaration needed, case folded, not rebindable.
        {"<a xml:lang='en'><b XML:lang='de'/></a>",
         "#document[a(" XML_NS "xml:lang=\"en\")[b(" XML_NS "XML:lang=\"de\")]]"},
        {"<xmlns:a XMLNS:b='1'/>", "#document[" XMLNS_NS "xmlns:a(" XMLNS_NS "XMLNS:b=\"1\")]"},
        {"<a xmlns:xml='u'><xml:b/></a>", "#document[a(" XMLNS_NS "xmlns:xml=\"u\")[" XML_NS "xml:b]]"},
        // The namespace name is the raw text; the attribute's value is resolved.
        {"<a xmlns='a&amp;b' xmlns:p='&#x75;'><p:b/></a>",
         "#document[{a&amp;b}a(xmlns=\"a&b\" " XMLNS_NS "xmlns:p=\"u\")[{&#x75;}p:b]]"},
        {"<p:a/>", err(ERR_UNDECLARED_PREFIX, 4)}, {"<a p:b='1'/>", err(ERR_UNDECLARED_PREFIX, 10)},
        {"<r><a xmlns:p='u'></a><p:b/></r>", err(ERR_UNDECLARED_PREFIX, 26)},
        {"<a xmlns:p='u'><P:b/></a>", err(ERR_UNDECLARED_PREFIX, 19)},
        {"<a xmlns:p='u'><pp:b/></a>", err(ERR_UNDECLARED_PREFIX, 20)},
        {"<a XMLNS:p='u'><p:b/></a>", err(ERR_UNDECLARED_PREFIX, 19)},
        // A pending failure wins over what goes wrong later.
        {"<p:a ?>", err(ERR_UNDECLARED_PREFIX, 5)}, {"<p:a>text", err(ERR_UNDECLARED_PREFIX, 4)},
        {"<a><p:b>x</p:b><c></d></a>", err(ERR_UNDECLARED_PREFIX, 7)},
        {"<q:a xmlns:p='1' xmlns:p='2'/>", err(ERR_DUPLICATE_ATTRIBUTE, 28)},
    });
    // prefix|localName|namespaceURI of every element and attribute.
    Parsed parsed = parseUtf8("<r><p:a xmlns:p='u' b='1' p:c='2'/><d xmlns='v'/><e xmlns=''/><f/></r>");
    EXPECT_EQ(namespaceFields(parsed.document.get()),
              "(null)|(null)|(null);p|a|u;xmlns|p|http://www.w3.org/2000/xmlns/;(null)|(null)|(null);p|c|u;"
              "(null)|d|v;(null)|(null)|(null);(null)|e|;(null)|(null)|(null);(null)|(null)|(null);");
}
