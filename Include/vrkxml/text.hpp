// libvrkxml C++ layer: the library's 16-bit strings as views, and standard
// UTF-8 to and from them (a character beyond U+FFFF is a surrogate pair in
// the tree and one four-byte form in UTF-8).
#ifndef VRKXML_TEXT_HPP
#define VRKXML_TEXT_HPP

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "../vrkxml.h"

namespace vrkxml {

// UniChar is uint16_t, a type distinct from char16_t.  Both are 16-bit
// unsigned integers with the same size, alignment and representation, so the
// units of a library string are read as char16_t in place.  The strings a
// tree holds (in their node's block, in blocks of their own, or static
// UniChar arrays) all begin on a UniChar boundary, so they are suitably
// aligned for char16_t too.
static_assert(sizeof(UniChar) == sizeof(char16_t), "UniChar and char16_t differ in size");
static_assert(alignof(UniChar) == alignof(char16_t), "UniChar and char16_t differ in alignment");

// A view of the zero-terminated string s; empty for null.
inline std::u16string_view view(const UniChar *s) noexcept {
    if (s == nullptr) return {};
    return {reinterpret_cast<const char16_t *>(s), static_cast<std::size_t>(vrkunistrlen(s))};
}

// The units of text as the C interface takes them (the reverse of view()).
inline const UniChar *unitsOf(std::u16string_view text) noexcept {
    return reinterpret_cast<const UniChar *>(text.data());
}

// The length of text as the C interface takes it.  The library's lengths are
// 32-bit: a longer text is cut to INT32_MAX units.
inline int32_t unitCount(std::u16string_view text) noexcept {
    constexpr auto limit = static_cast<std::size_t>(std::numeric_limits<int32_t>::max());
    return static_cast<int32_t>(text.size() < limit ? text.size() : limit);
}

// The strings of a node; each is empty for a null node or a null field.
inline std::u16string_view name(const vrkNode *node) noexcept {
    return node ? view(node->name) : std::u16string_view{};
}
inline std::u16string_view value(const vrkNode *node) noexcept {
    return node ? view(node->value) : std::u16string_view{};
}
inline std::u16string_view namespaceURI(const vrkNode *node) noexcept {
    return node ? view(node->namespaceURI) : std::u16string_view{};
}
inline std::u16string_view prefix(const vrkNode *node) noexcept {
    return node ? view(node->prefix) : std::u16string_view{};
}
inline std::u16string_view localName(const vrkNode *node) noexcept {
    return node ? view(node->localName) : std::u16string_view{};
}
// The local part of an element's or attribute's name: localName where the
// parser or a namespace-aware factory set it, else the whole name (a node
// of no namespace has a null localName).
inline std::u16string_view localPart(const vrkNode *node) noexcept {
    if (node == nullptr) return {};
    return node->localName ? view(node->localName) : view(node->name);
}

namespace detail {

constexpr bool isSurrogate(char32_t c) noexcept { return c >= 0xD800 && c <= 0xDFFF; }
constexpr bool isHighSurrogate(char32_t c) noexcept { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool isLowSurrogate(char32_t c) noexcept { return c >= 0xDC00 && c <= 0xDFFF; }

// The character at text[i]: a surrogate pair read as one, anything else
// (a lone surrogate too) as the unit itself; `units` is 1 or 2.
struct CodePoint {
    char32_t value;
    std::size_t units;
};
inline CodePoint codePointAt(std::u16string_view text, std::size_t i) noexcept {
    const char32_t first = text[i];
    if (isHighSurrogate(first) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
        return {0x10000 + ((first - 0xD800) << 10) + (char32_t(text[i + 1]) - 0xDC00), 2};
    }
    return {first, 1};
}

// Bytes of the UTF-8 form of c (a surrogate by itself takes three).
constexpr std::size_t utf8Length(char32_t c) noexcept { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

// Writes the UTF-8 form of c to bytes and returns its length.
inline std::size_t encodeUtf8(char32_t c, char *bytes) noexcept {
    const std::size_t n = utf8Length(c);
    constexpr unsigned char lead[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (std::size_t k = n - 1; k > 0; --k) {
        bytes[k] = static_cast<char>(0x80 | (c & 0x3F));
        c >>= 6;
    }
    bytes[0] = static_cast<char>(lead[n] | c);
    return n;
}

inline void appendUtf8(std::string &out, char32_t c) {
    char bytes[4];
    out.append(bytes, encodeUtf8(c, bytes));
}

inline void appendUtf16(std::u16string &out, char32_t c) {
    if (c < 0x10000) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    }
}

// One character of standard UTF-8 at bytes[i]: its value and length in
// bytes, or length 0 when the bytes there are no well-formed sequence
// (overlong, a surrogate, above U+10FFFF, a missing continuation byte).
struct Utf8Step {
    char32_t value;
    std::size_t length;
};
inline Utf8Step decodeUtf8At(std::string_view bytes, std::size_t i) noexcept {
    const auto byteAt = [&](std::size_t k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = byteAt(i);
    if (lead < 0x80) return {lead, 1};
    // Lead bytes C0, C1 and F5 to FF begin no well-formed sequence.
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0) return {0, 0};
    constexpr char32_t leastOf[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t value = lead & (0x7Fu >> length);
    if (bytes.size() - i < length) return {0, 0};
    for (std::size_t k = 1; k < length; ++k) {
        const unsigned char next = byteAt(i + k);
        if ((next & 0xC0) != 0x80) return {0, 0};
        value = (value << 6) | (next & 0x3Fu);
    }
    if (value < leastOf[length] || value > 0x10FFFF || isSurrogate(value)) return {0, 0};
    return {value, length};
}

// Appends the standard UTF-8 form of text.  A lone surrogate has none: it
// is written as U+FFFD when `replace`, else the conversion stops there.
// Returns the index of the first lone surrogate, or npos.
inline std::size_t appendText(std::string &out, std::u16string_view text, bool replace) {
    std::size_t lone = std::u16string_view::npos;
    for (std::size_t i = 0; i < text.size();) {
        const CodePoint c = codePointAt(text, i);
        if (isSurrogate(c.value)) {
            if (lone == std::u16string_view::npos) lone = i;
            if (!replace) return lone;
            appendUtf8(out, 0xFFFD);
        } else {
            appendUtf8(out, c.value);
        }
        i += c.units;
    }
    return lone;
}

}  // namespace detail

// The standard UTF-8 form of text: a surrogate pair becomes one four-byte
// form.  A lone surrogate, which has no UTF-8 form, is shown as U+FFFD
// (encodeUtf8 in vrkxml/write.hpp refuses it instead).
inline std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    detail::appendText(out, text, true);
    return out;
}

// The 16-bit units of standard UTF-8 text (a character beyond U+FFFF
// becomes a surrogate pair; a zero byte a zero unit), or nothing when it is
// malformed anywhere.
inline std::optional<std::u16string> fromUtf8(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const detail::Utf8Step step = detail::decodeUtf8At(utf8, i);
        if (step.length == 0) return std::nullopt;
        detail::appendUtf16(out, step.value);
        i += step.length;
    }
    return out;
}

// Whether the units and the UTF-8 text hold the same characters; nothing is
// allocated, and malformed UTF-8 equals nothing.
inline bool sameText(std::u16string_view units, std::string_view utf8) noexcept {
    std::size_t u = 0;
    for (std::size_t i = 0; i < utf8.size();) {
        const detail::Utf8Step step = detail::decodeUtf8At(utf8, i);
        if (step.length == 0 || u >= units.size()) return false;
        const detail::CodePoint c = detail::codePointAt(units, u);
        if (c.value != step.value) return false;
        u += c.units;
        i += step.length;
    }
    return u == units.size();
}
inline bool sameText(std::u16string_view a, std::u16string_view b) noexcept { return a == b; }

}  // namespace vrkxml

#endif  // VRKXML_TEXT_HPP
