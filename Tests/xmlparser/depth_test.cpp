// Running out of resources during a parse: deep nesting must not use stack
// per level, and exhausted memory anywhere fails the parse without leaks.

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "support/small_stack.h"
#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"

using namespace vrktest;

namespace {

constexpr int32_t kDepth = 100000;

std::string repeat(const std::string &piece, int32_t count) {
    std::string out;
    out.reserve(piece.size() * static_cast<std::size_t>(count));
    for (int32_t i = 0; i < count; ++i) out += piece;
    return out;
}

}  // namespace

TEST(NestingDepth, HundredThousandLevelsParseAndDestroyOnASmallStack) {
    // Every level but the innermost gets a sibling behind its end tag; the
    // root's sibling lies behind the root and is ignored.
    const std::string text =
        "<a xmlns:p='u'>" + repeat("<a>", kDepth - 1) + "<p:t/>" + repeat("</a><b/>", kDepth);
    const int64_t liveBefore = liveAllocations();
    int32_t levels = 0;
    int32_t wellFormedLevels = 0;
    std::string innermost;
    runOnSmallStack([&] {
        Parsed parsed = parseUtf8(text);
        if (parsed.document == nullptr) {
            innermost = "error " + std::to_string(parsed.error.code);
            return;
        }
        const auto holdsA = [](const vrkNode *node) {
            const vrkNode *child = node->firstChild;
            return child != nullptr && child->type == ELEMENT_NODE && utf8(child->name) == "a";
        };
        const vrkNode *element = parsed.document->firstChild;
        for (; holdsA(element); element = element->firstChild) {
            ++levels;
            if (utf8(element->lastChild->name) == "b" && element->firstChild->next == element->lastChild) {
                ++wellFormedLevels;
            }
        }
        ++levels;
        innermost = describe(element);
        const vrkNode *up = element;
        for (int32_t i = 0; i < kDepth && up != nullptr; ++i) up = up->parent;
        if (up != parsed.document.get()) innermost = "parent links broken";
        // The document is destroyed here, still on the small stack.
    });
    EXPECT_EQ(levels, kDepth);
    EXPECT_EQ(wellFormedLevels, kDepth - 1);
    EXPECT_EQ(innermost, "a[{u}p:t]");
    EXPECT_EQ(liveAllocations(), liveBefore);
}

TEST(NestingDepth, FailuresAtTheInnermostLevelUnwindCleanly) {
    const struct {
        std::string text;
        int32_t code;
        int32_t offset;
    } cases[] = {
        {repeat("<a>", kDepth) + "</b>" + repeat("</a>", kDepth), ERR_END_TAG, 3 * kDepth + 4},
        {repeat("<a>", kDepth) + repeat("</a>", kDepth - 1) + "</b>", ERR_END_TAG, 7 * kDepth},
        {repeat("<a>", kDepth) + "x", ERR_END_TAG, 3 * kDepth + 1},
        // Every level pushes a declaration: the lookup walks all of them, and
        // the failed end tag leaves them all but one for the cleanup.
        {repeat("<a xmlns='k'>", kDepth) + "<q:x/></b>", ERR_UNDECLARED_PREFIX, 13 * kDepth + 4},
    };
    for (const auto &c : cases) {
        const int64_t liveBefore = liveAllocations();
        int32_t code = -1;
        int32_t offset = -1;
        runOnSmallStack([&] {
            Parsed parsed = parseUtf8(c.text);
            code = parsed.document == nullptr ? parsed.error.code : 0;
            offset = parsed.error.offset;
        });
        EXPECT_EQ(code, c.code) << c.text.substr(c.text.size() - 20);
        EXPECT_EQ(offset, c.offset) << c.text.substr(c.text.size() - 20);
        EXPECT_EQ(liveAllocations(), liveBefore);
    }
}

TEST(ParseMemory, EveryRefusedAllocationFailsTheParse) {
    const std::string text = "<p:r xmlns:p='u' xmlns='d' a='1&amp;2' p:b='x'>t&lt;<![CDATA[c]]>"
                             "<e xmlns:q='v' q:f=''/><p:g>&#65;</p:g> </p:r>";
    const std::u16string text16(text.begin(), text.end());
    const std::string tree =
        "#document[{u}p:r({http://www.w3.org/2000/xmlns/}xmlns:p=\"u\" xmlns=\"d\" a=\"1&2\" {u}p:b=\"x\")"
        "[\"t\",\"<\",C\"c\",{d}e({http://www.w3.org/2000/xmlns/}xmlns:q=\"v\" {v}q:f=\"\"),{u}p:g[\"A\"],\" \"]]";
    for (const bool wide : {false, true}) {
        const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
            Parsed parsed = wide ? parseUtf16(text16) : parseUtf8(text);
            if (!run.failed()) {
                EXPECT_EQ(describe(parsed.document.get()), tree);
                return;
            }
            EXPECT_EQ(describe(parsed.document.get()), "(null)") << "allocation " << run.failingIndex();
            // Without 16-bit input the first allocation is the decoded copy.
            const int32_t code = !wide && run.failingIndex() == 1 ? ERR_ENCODING_DECL : ERR_OUT_OF_MEMORY;
            EXPECT_EQ(parsed.error.code, code) << "allocation " << run.failingIndex();
        });
        EXPECT_GT(runs, 30) << (wide ? "UTF-16" : "UTF-8");
    }
}
