// 16-bit text in tests: building UniChar strings from char16_t literals and
// reading library strings back as std::u16string for comparisons.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vrkxml.h"

namespace vrktest {

// A zero-terminated UniChar string owned by the test.
using Units = std::vector<UniChar>;

inline Units units(std::u16string_view text) {
    Units out(text.begin(), text.end());
    out.push_back(0);
    return out;
}

// The library string s up to its terminator; an empty string for null.
inline std::u16string str(const UniChar *s) {
    std::u16string out;
    if (s == nullptr) return out;
    for (; *s != 0; ++s) out.push_back(static_cast<char16_t>(*s));
    return out;
}

// Exactly n units at s.
inline std::u16string str(const UniChar *s, std::size_t n) {
    std::u16string out;
    for (std::size_t i = 0; i < n; ++i) out.push_back(static_cast<char16_t>(s[i]));
    return out;
}

}  // namespace vrktest
