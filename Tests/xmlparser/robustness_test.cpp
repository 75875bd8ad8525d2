// Hostile and large input: deep nesting on a small stack, every refused
// allocation, and generated documents checked against plain models.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/random.h"
#include "support/small_stack.h"
#include "support/tree_text.h"

using namespace vrktest;

namespace {

constexpr int32_t kDepth = 100000;
#define XMLNS "{http://www.w3.org/2000/xmlns/}"

std::string repeat(const std::string &piece, int32_t count) {
    std::string out;
    for (int32_t i = 0; i < count; ++i) out += piece;
    return out;
}

}  // namespace

TEST(Robustness, HundredThousandLevelsOnASmallStack) {
    // Every level but the innermost gets a sibling behind its end tag.
    const std::string text = "<a xmlns:p='u'>" + repeat("<a>", kDepth - 1) + "<p:t/>" + repeat("</a><b/>", kDepth);
    const int64_t liveBefore = liveAllocations();
    int32_t levels = 0, wellFormed = 0;
    std::string innermost;
    runOnSmallStack([&] {
        Parsed parsed = parseUtf8(text);
        if (parsed.document == nullptr) return;
        const vrkNode *e = parsed.document->firstChild;
        for (; e->firstChild && e->firstChild->type == ELEMENT_NODE && utf8(e->firstChild->name) == "a"; e = e->firstChild) {
            ++levels;
            wellFormed += utf8(e->lastChild->name) == "b" && e->firstChild->next == e->lastChild;
        }
        ++levels;
        innermost = describe(e);
        for (int32_t i = 0; i < kDepth && e != nullptr; ++i) e = e->parent;
        if (e != parsed.document.get()) innermost = "parent links broken";
    });  // the document is destroyed on the small stack too
    EXPECT_EQ(levels, kDepth);
    EXPECT_EQ(wellFormed, kDepth - 1);
    EXPECT_EQ(innermost, "a[{u}p:t]");
    EXPECT_EQ(liveAllocations(), liveBefore);

    const std::pair<std::string, std::string> failures[] = {
        {repeat("<a>", kDepth) + "</b>" + repeat("</a>", kDepth), errorAt(ERR_END_TAG, 3 * kDepth + 4)},
        {repeat("<a>", kDepth) + repeat("</a>", kDepth - 1) + "</b>", errorAt(ERR_END_TAG, 7 * kDepth)},
        {repeat("<a>", kDepth) + "x", errorAt(ERR_END_TAG, 3 * kDepth + 1)},
        // A declaration on every level: the lookup walks all, the cleanup frees all.
        {repeat("<a xmlns='k'>", kDepth) + "<q:x/></b>", errorAt(ERR_UNDECLARED_PREFIX, 13 * kDepth + 4)},
    };
    for (const auto &[failing, expected] : failures) {
        std::string got;
        runOnSmallStack([&, &failing = failing] { got = outcome(failing); });
        EXPECT_EQ(got, expected);
    }
}

TEST(Robustness, EveryRefusedAllocationFailsTheParseCleanly) {
    const std::string text =
        "<?xml version='1.0' standalone='no'?>\n<!-- c --><?p1 d?><p:r xmlns:p='u&amp;' xmlns='d' a='1&amp;2' "
        "p:b='&lt;x&#65;' c=''>t&lt;<![CDATA[c]]><e xmlns:q='v' q:f=''/><p:g>&#65;<?in x?></p:g> </p:r><?t1?>";
    const std::u16string text16(text.begin(), text.end());
    const std::string tree =
        "#document[?p1\"d\",{u&amp;}p:r(" XMLNS "xmlns:p=\"u&\" xmlns=\"d\" a=\"1&2\" {u&amp;}p:b=\"<xA\" c=\"\")"
        "[\"t\",\"<\",C\"c\",{d}e(" XMLNS "xmlns:q=\"v\" {v}q:f=\"\"),{u&amp;}p:g[\"A\",?in\"x\"],\" \"],?t1\"\"]";
    for (const bool wide : {false, true}) {
        const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
            Parsed parsed = wide ? parseUtf16(text16) : parseUtf8(text);
            if (!run.failed()) {
                EXPECT_EQ(describe(parsed.document.get()), tree);
                return;
            }
            EXPECT_EQ(describe(parsed.document.get()), "(null)") << "allocation " << run.failingIndex();
            // In UTF-8 the first allocation is the decoded copy.
            const int32_t code = !wide && run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
            EXPECT_EQ(parsed.error.code, code) << "allocation " << run.failingIndex();
        });
        EXPECT_GT(runs, 40) << (wide ? "UTF-16" : "UTF-8");
    }
    // Resolution copies the element's local and namespace names and reports
    // at the '>' (13); the declaration's stack entry is refused behind its
    // value (12); the pending error beats the mismatched end tag.
    int atTagEnd = 0, atValue = 0;
    forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed = parseUtf16(u"<a xmlns='u' ></b>");
        ASSERT_EQ(parsed.document, nullptr);
        const std::string got = errorAt(parsed.error.code, parsed.error.offset);
        if (!run.failed() || std::string_view(parsed.error.file) != "Source/xmlparser") {
            EXPECT_EQ(got, run.failed() ? errorAt(ERR_OUT_OF_MEMORY, 0) : errorAt(ERR_END_TAG, 18));
            return;
        }
        atTagEnd += got == errorAt(ERR_OUT_OF_MEMORY, 13);
        atValue += got == errorAt(ERR_OUT_OF_MEMORY, 12);
        EXPECT_TRUE(got == errorAt(ERR_OUT_OF_MEMORY, 13) || got == errorAt(ERR_OUT_OF_MEMORY, 12)) << got;
    });
    EXPECT_EQ(atTagEnd, 2);
    EXPECT_EQ(atValue, 1);
}

TEST(Robustness, ManyAttributesKeepTheirOrderAndDuplicatesAreFound) {
    Random random(7);
    for (int round = 0; round < 20; ++round) {
        const int count = 1 + static_cast<int>(random.below(2000));
        std::string tag = "<e", expected = "#document[e(";
        for (int i = 0; i < count; ++i) {  // names in no sorted order
            const std::string name = "a" + std::to_string((i * 7919) % 10007);
            tag += " " + name + "='" + std::to_string(i) + "'";
            expected += (i == 0 ? "" : " ") + name + "=\"" + std::to_string(i) + "\"";
        }
        EXPECT_EQ(outcome(tag + "/>"), expected + ")]");
        const int repeated = static_cast<int>(random.below(static_cast<std::size_t>(count)));
        const std::string twice = tag + " a" + std::to_string((repeated * 7919) % 10007) + "='x'";
        EXPECT_EQ(outcome(twice + "/>"), errorAt(ERR_DUPLICATE_ATTRIBUTE, static_cast<int32_t>(twice.size())));
    }
}

TEST(Robustness, NamespaceLookupsMatchTheNearestDeclaration) {
    // Six prefixes and the default declared and used at random; the model
    // keeps a stack of scopes.
    Random random(11);
    for (int round = 0; round < 30; ++round) {
        std::string text, modelled;  // "{uri}" of each element in document order
        std::vector<std::map<std::string, std::string>> scopes{{}};
        std::vector<std::string> open;
        for (int made = 0; made < 300 && (made == 0 || !open.empty());) {
            if (!open.empty() && (random.chance(40) || open.size() > 80)) {
                text += "</" + open.back() + ">";
                open.pop_back();
                scopes.pop_back();
                continue;
            }
            std::map<std::string, std::string> scope = scopes.back();
            std::string declarations;
            for (int d = static_cast<int>(random.below(3)); d > 0; --d) {
                const std::string prefix = random.chance(20) ? "" : "p" + std::to_string(random.below(6));
                const std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
                if (declarations.find(" " + attribute + "=") != std::string::npos) continue;
                const std::string uri = "u" + std::to_string(made) + "_" + std::to_string(d);
                declarations += " " + attribute + "='" + uri + "'";
                scope[prefix] = uri;
            }
            std::vector<std::string> usable{""};
            for (const auto &entry : scope)
                if (!entry.first.empty()) usable.push_back(entry.first);
            const std::string prefix = random.pick(usable);
            const std::string name = prefix.empty() ? "e" : prefix + ":e";
            modelled += "{" + (scope.count(prefix) != 0 ? scope[prefix] : std::string("(null)")) + "}";
            text += "<" + name + declarations + ">";
            open.push_back(name);
            scopes.push_back(scope);
            ++made;
        }
        while (!open.empty()) text += "</" + open.back() + ">", open.pop_back();
        Parsed parsed = parseUtf8(text);
        ASSERT_NE(parsed.document, nullptr) << text;
        std::string actual;
        for (const vrkNode *node = parsed.document->firstChild; node != nullptr;) {
            actual += "{" + utf8(node->namespaceURI) + "}";
            if (node->firstChild != nullptr) {
                node = node->firstChild;
                continue;
            }
            while (node != nullptr && node->next == nullptr) node = node->parent;
            if (node != nullptr) node = node->next;
        }
        EXPECT_EQ(actual, modelled) << text;
    }
}
