// 16-bit literals of the grammar, written as char16_t strings in the code.
#pragma once

#include <cstddef>

#include "vrkxml.h"
#include "xmlparser/scan.h"

namespace vrk {

template <std::size_t N>
struct Literal {
    UniChar units[N];  // with the terminator
    static constexpr int32_t length = static_cast<int32_t>(N - 1);

    constexpr Literal(const char16_t (&text)[N]) : units{} {  // NOLINT: implicit by design
        for (std::size_t i = 0; i < N; ++i) units[i] = static_cast<UniChar>(text[i]);
    }
};

// Whether the text at p goes on with the literal.
template <std::size_t N>
inline bool startsWith(const UniChar *p, const Literal<N> &literal) {
    return startsWith(p, literal.units, Literal<N>::length);
}

}  // namespace vrk
