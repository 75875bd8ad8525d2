// Membership of a 16-bit unit in the XML character classes, by one table
// lookup.  The table is built at compile time from the ranges.
#pragma once

#include <array>
#include <cstdint>

#include "vrkxml.h"
#include "xmlparser/char_class_ranges.h"

namespace vrk::charclass {

enum Bit : uint8_t {
    kBaseCharBit = 1,
    kIdeographicBit = 2,
    kCombiningCharBit = 4,
    kDigitBit = 8,
    kExtenderBit = 16,
    kNameStartBit = 32,  // may begin an NCName: a Letter or '_'
    kNameCharBit = 64,   // may continue an NCName: Letter, Digit, '-', '.', '_', CombiningChar, Extender
};

namespace detail {

template <std::size_t N>
constexpr void mark(std::array<uint8_t, 65536> &table, const Range (&ranges)[N], uint8_t bits) {
    for (const Range &range : ranges) {
        for (uint32_t unit = range.first; unit <= range.last; ++unit) table[unit] |= bits;
    }
}

constexpr std::array<uint8_t, 65536> buildTable() {
    std::array<uint8_t, 65536> table{};
    constexpr auto letter = static_cast<uint8_t>(kNameStartBit | kNameCharBit);
    mark(table, kBaseChar, static_cast<uint8_t>(kBaseCharBit | letter));
    mark(table, kIdeographic, static_cast<uint8_t>(kIdeographicBit | letter));
    mark(table, kCombiningChar, static_cast<uint8_t>(kCombiningCharBit | kNameCharBit));
    mark(table, kDigit, static_cast<uint8_t>(kDigitBit | kNameCharBit));
    mark(table, kExtender, static_cast<uint8_t>(kExtenderBit | kNameCharBit));
    table['_'] |= letter;
    table['-'] |= kNameCharBit;
    table['.'] |= kNameCharBit;
    return table;
}

}  // namespace detail

inline constexpr std::array<uint8_t, 65536> kTable = detail::buildTable();

inline bool has(UniChar unit, uint8_t bits) { return (kTable[unit] & bits) != 0; }

}  // namespace vrk::charclass
