// Namespace scope during a parse: which declaration a prefix finds, the
// reserved prefixes, and what an unresolved prefix or a failed copy reports.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/outcome.h"
#include "support/tree_text.h"

using namespace vrktest;

// How describe() shows the two reserved namespace names.
#define XMLNS_NS "{http://www.w3.org/2000/xmlns/}"
#define XML_NS "{http://www.w3.org/XML/1998/namespace}"

TEST(NamespaceScope, ResolvesElementsAndAttributes) {
    const Case cases[] = {
        // The default applies to elements only, never to attributes.
        {"<a xmlns='u' b='1'/>", "#document[{u}a(xmlns=\"u\" b=\"1\")]"},
        {"<a xmlns=''><b/></a>", "#document[{}a(xmlns=\"\")[{}b]]"},
        {"<a xmlns:p=''><p:b/></a>", "#document[a(" XMLNS_NS "xmlns:p=\"\")[{}p:b]]"},
        // Resolution comes after the last attribute of the tag.
        {"<x xmlns:p='u' p:a='1'/>", "#document[x(" XMLNS_NS "xmlns:p=\"u\" {u}p:a=\"1\")]"},
        {"<x p:a='1' xmlns:p='u'/>", "#document[x({u}p:a=\"1\" " XMLNS_NS "xmlns:p=\"u\")]"},
        {"<p:x xmlns:p='u'/>", "#document[{u}p:x(" XMLNS_NS "xmlns:p=\"u\")]"},
        // Shadowing, and the outer binding in force again behind the inner element.
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
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

TEST(NamespaceScope, FillsPrefixLocalNameAndNamespaceName) {
    Parsed parsed = parseUtf8("<r><p:a xmlns:p='u' b='1' p:c='2'/><d xmlns='v'/><e xmlns=''/><f/></r>");
    ASSERT_EQ(describe(parsed.document.get()),
              "#document[r[{u}p:a(" XMLNS_NS "xmlns:p=\"u\" b=\"1\" {u}p:c=\"2\"),"
              "{v}d(xmlns=\"v\"),{}e(xmlns=\"\"),f]]");
    const vrkNode *a = parsed.document->firstChild->firstChild;
    const vrkNode *declaration = a->attributes.first;
    const vrkNode *b = declaration->next;
    const vrkNode *d = a->next;
    const struct {
        const vrkNode *node;
        const char *prefix, *localName, *namespaceURI;
    } cases[] = {
        {a, "p", "a", "u"},
        {declaration, "xmlns", "p", "http://www.w3.org/2000/xmlns/"},
        {b, "(null)", "(null)", "(null)"},
        {b->next, "p", "c", "u"},
        {d, "(null)", "d", "v"},
        {d->next, "(null)", "e", ""},
        {d->next->next, "(null)", "(null)", "(null)"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(utf8(c.node->prefix), c.prefix) << utf8(c.node->name);
        EXPECT_EQ(utf8(c.node->localName), c.localName) << utf8(c.node->name);
        EXPECT_EQ(utf8(c.node->namespaceURI), c.namespaceURI) << utf8(c.node->name);
    }
}

TEST(NamespaceScope, UndeclaredPrefixFailsAtTheEndOfItsTag) {
    const Case cases[] = {
        {"<p:a/>", errorAt(ERR_UNDECLARED_PREFIX, 4)},
        {"<p:a ></p:a>", errorAt(ERR_UNDECLARED_PREFIX, 5)},
        {"<a p:b='1'/>", errorAt(ERR_UNDECLARED_PREFIX, 10)},
        {"<r><a xmlns:p='u'/><p:b/></r>", errorAt(ERR_UNDECLARED_PREFIX, 23)},
        {"<r><a xmlns:p='u'></a><p:b/></r>", errorAt(ERR_UNDECLARED_PREFIX, 26)},
        {"<a xmlns:p='u'><P:b/></a>", errorAt(ERR_UNDECLARED_PREFIX, 19)},
        {"<a xmlns:p='u'><pp:b/></a>", errorAt(ERR_UNDECLARED_PREFIX, 20)},
        {"<a xmlns:pp='u'><p:b/></a>", errorAt(ERR_UNDECLARED_PREFIX, 20)},
        {"<a XMLNS:p='u'><p:b/></a>", errorAt(ERR_UNDECLARED_PREFIX, 19)},
        // A pending failure wins over what goes wrong later.
        {"<p:a ?>", errorAt(ERR_UNDECLARED_PREFIX, 5)},
        {"<p:a></b>", errorAt(ERR_UNDECLARED_PREFIX, 4)},
        {"<p:a>text", errorAt(ERR_UNDECLARED_PREFIX, 4)},
        {"<a><p:b>x</p:b><c></d></a>", errorAt(ERR_UNDECLARED_PREFIX, 7)},
        // Errors among the attributes come before any resolution.
        {"<q:a xmlns:p='1' xmlns:p='2'/>", errorAt(ERR_DUPLICATE_ATTRIBUTE, 28)},
        {"<q:a x=1/>", errorAt(ERR_OPENING_QUOTE, 7)},
    };
    for (const Case &c : cases) EXPECT_EQ(outcome(c.text), c.expected) << c.text;
}

TEST(NamespaceScope, RefusedCopyInResolutionIsReportedAtTheTagEnd) {
    // Resolving the element copies its local name and its namespace name and
    // reports at the cursor on '>' (13); the stack entry of the declaration
    // is refused behind its value (12).  The pending error beats the
    // mismatched end tag.
    int resolutionFailures = 0;
    int pushFailures = 0;
    forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed = parseUtf16(u"<a xmlns='u' ></b>");
        ASSERT_EQ(describe(parsed.document.get()), "(null)") << "allocation " << run.failingIndex();
        if (!run.failed()) {
            EXPECT_EQ(parsed.error.code, ERR_END_TAG);
            EXPECT_EQ(parsed.error.offset, 18);
            return;
        }
        EXPECT_EQ(parsed.error.code, ERR_OUT_OF_MEMORY) << "allocation " << run.failingIndex();
        if (std::string_view(parsed.error.file) != "Source/xmlparser") {
            EXPECT_EQ(parsed.error.offset, 0);
        } else if (parsed.error.offset == 13) {
            ++resolutionFailures;
        } else {
            EXPECT_EQ(parsed.error.offset, 12) << "allocation " << run.failingIndex();
            ++pushFailures;
        }
    });
    EXPECT_EQ(resolutionFailures, 2);
    EXPECT_EQ(pushFailures, 1);
}
