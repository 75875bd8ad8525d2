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
    while (count-- > 0) out += piece;
    return out;
}

}  // namespace

TEST(Robustness, HundredThousandLevelsOnASmallStack) {
    // Every level but the innermost gets a sibling behind its end tag.
    const std::string text = "<a xmlns:p='u'>" + repeat("<a>", kDepth - 1) + "<p:t/>" + repeat("</a><b/>", kDepth);
    const int64_t liveBefore = liveAllocations();
    int32_t levels = 1, wellFormed = 0;
    std::string innermost;
    runOnSmallStack([&] {  // the document is destroyed on the small stack too
        Parsed parsed = parseUtf8(text);
        const vrkNode *e = parsed.document ? parsed.document->firstChild : nullptr;
        for (; e && e->firstChild && e->firstChild->type == ELEMENT_NODE && utf8(e->firstChild->name) == "a"; ++levels) {
            wellFormed += utf8(e->lastChild->name) == "b" && e->firstChild->next == e->lastChild;
            e = e->firstChild;
        }
        innermost = describe(e);
        for (int32_t i = 0; i < kDepth && e != nullptr; ++i) e = e->parent;
        if (e != parsed.document.get()) innermost += " with broken parent links";
    });
    EXPECT_EQ(std::to_string(levels) + " " + std::to_string(wellFormed) + " " + innermost,
              std::to_string(kDepth) + " " + std::to_string(kDepth - 1) + " a[{u}p:t]");
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
            // In UTF-8 the first allocation is the decoded copy.
            const int32_t code = !wide && run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
            EXPECT_EQ(parsed.document ? describe(parsed.document.get()) : "error " + std::to_string(parsed.error.code),
                      run.failed() ? "error " + std::to_string(code) : tree) << "allocation " << run.failingIndex();
        });
        EXPECT_GT(runs, 40) << (wide ? "UTF-16" : "UTF-8");
    }
    // Resolution copies the element's local and namespace names and reports
    // at the '>' (13); the declaration's stack entry is refused behind its
    // value (12); the pending error beats the mismatched end tag.
    std::map<std::string, int> inParser;  // failures the parser reports, by outcome
    forEachAllocationFailure([&](const AllocationRun &run) {
        const std::string got = outcome("<a xmlns='u' ></b>");
        if (!run.failed() || got != errorAt(ERR_OUT_OF_MEMORY, 0)) ++inParser[(run.failed() ? "" : "done ") + got];
    });
    EXPECT_EQ(inParser, (std::map<std::string, int>{{"done " + errorAt(ERR_END_TAG, 18), 1},
                                                    {errorAt(ERR_ENCODING_DECL, 0), 1},  // the decoded copy
                                                    {errorAt(ERR_OUT_OF_MEMORY, 12), 1},
                                                    {errorAt(ERR_OUT_OF_MEMORY, 13), 2}}));
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
    // Six prefixes and the default declared and used at random, against a
    // model that keeps a stack of scopes.
    Random random(11);
    for (int round = 0; round < 30; ++round) {
        std::string text, modelled;  // "{uri}" of each element in document order
        std::vector<std::map<std::string, std::string>> scopes{{}};
        std::vector<std::string> open;
        for (int made = 0; made < 300 && (made == 0 || !open.empty());) {
            if (!open.empty() && (random.chance(40) || open.size() > 80)) {
                text += "</" + open.back() + ">";
                open.pop_back(), scopes.pop_back();
                continue;
            }
            auto scope = scopes.back();
            std::string declarations;
            for (int d = static_cast<int>(random.below(3)); d > 0; --d) {
                const std::string prefix = random.chance(20) ? "" : "p" + std::to_string(random.below(6));
                const std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
                if (declarations.find(" " + attribute + "=") != std::string::npos) continue;
                scope[prefix] = "u" + std::to_string(made) + "_" + std::to_string(d);
                declarations += " " + attribute + "='" + scope[prefix] + "'";
            }
            std::vector<std::string> usable{""};
            for (const auto &entry : scope)
                if (!entry.first.empty()) usable.push_back(entry.first);
            const std::string prefix = random.pick(usable), name = prefix.empty() ? "e" : prefix + ":e";
            modelled += "{" + (scope.count(prefix) != 0 ? scope[prefix] : std::string("(null)")) + "}";
            text += "<" + name + declarations + ">";
            open.push_back(name), scopes.push_back(scope), ++made;
        }
        while (!open.empty()) text += "</" + open.back() + ">", open.pop_back();
        Parsed parsed = parseUtf8(text);
        ASSERT_NE(parsed.document, nullptr) << text;
        std::string actual;
        for (const vrkNode *node = parsed.document->firstChild; node != nullptr;) {
            actual += "{" + utf8(node->namespaceURI) + "}";
            if (node->firstChild == nullptr) {
                while (node != nullptr && node->next == nullptr) node = node->parent;
                if (node != nullptr) node = node->next;
            } else {
                node = node->firstChild;
            }
        }
        EXPECT_EQ(actual, modelled) << text;
    }
}
