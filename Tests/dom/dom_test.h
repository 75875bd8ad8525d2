// Helpers of the DOM tests: nodes made by the factories, the exception
// record a refusal writes, and what the integrity check prints.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

namespace domtest {
using namespace vrktest;

inline constexpr char kCaller[] = "dom_test";  // one array: one address in every file

inline int32_t len(std::u16string_view s) { return static_cast<int32_t>(s.size()); }

// The record names the code, the library's file and the caller's line.
inline void expectRaised(const vrkDOMException &e, int32_t code, int32_t callerLine) {
    EXPECT_EQ(e.code, code);
    EXPECT_STREQ(e.file, "Source/dom");
    EXPECT_GT(e.line, 0) << "the library's line";
    EXPECT_EQ(e.callerFile, kCaller);
    EXPECT_EQ(e.callerLine, callerLine);
}

inline vrkNode *named(int32_t type, std::u16string_view name) {
    vrkDOMException e{};
    return vrkDOMReal_createEANode(kCaller, 0, type, units(name).data(), len(name), &e);
}
inline vrkNode *element(std::u16string_view name) { return named(ELEMENT_NODE, name); }
inline vrkNode *attr(std::u16string_view name) { return named(ATTRIBUTE_NODE, name); }
// prefix:local in the namespace uri (null: none).
inline vrkNode *nsNode(int32_t type, const char16_t *uri, std::u16string_view prefix,
                       std::u16string_view local) {
    vrkDOMException e{};
    const std::u16string_view u = uri ? uri : u"";
    const Units p = units(prefix);
    const Units l = units(local);
    return vrkDOMReal_createEANodeNSP(kCaller, 0, type, uri ? units(u).data() : nullptr, len(u),
                                      p.data(), len(prefix), l.data(), len(local), &e);
}
inline vrkNode *textNode(std::u16string_view value) {
    vrkDOMException e{};
    return vrkDOMReal_createTextNode(kCaller, 0, units(value).data(), len(value), &e);
}

// What the integrity check prints for the tree below node.
inline std::string integrity(const vrkNode *node) {
    testing::internal::CaptureStdout();
    DOM_checkIntegrity(node);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

}  // namespace domtest
