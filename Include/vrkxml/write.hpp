// libvrkxml C++ layer: writing.  serialize() hands back what the library's
// serializer writes, in standard UTF-8: the library writes each half of a
// surrogate pair as a three-byte form of its own, which the layer joins into
// the character's one four-byte form.  indent() lays a tree out for reading
// before it is written.
#ifndef VRKXML_WRITE_HPP
#define VRKXML_WRITE_HPP

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "edit.hpp"
#include "messages.hpp"
#include "result.hpp"
#include "text.hpp"
#include "tree.hpp"

namespace vrkxml {

enum class Encoding : int32_t {
    utf8 = ENCODING_UTF8,
    utf16 = ENCODING_UTF16,  // machine byte order, no byte order mark
};

namespace detail {

inline Error loneSurrogate(char32_t unit) {
    return failure(errLoneSurrogate, "the tree holds U+" + hexOf(unit) + ", half of a surrogate pair, alone");
}

// The surrogate whose three-byte form begins at bytes[k], or 0.
inline char32_t surrogateAt(const std::string &bytes, std::size_t k) noexcept {
    const auto byte = [&](std::size_t n) { return static_cast<unsigned char>(bytes[n]); };
    if (k + 3 > bytes.size() || byte(k) != 0xED || byte(k + 1) < 0xA0) return 0;
    return 0xD000u | ((byte(k + 1) & 0x3Fu) << 6) | (byte(k + 2) & 0x3Fu);
}

// Joins, in place, every pair of three-byte surrogate forms into the
// four-byte form of its character.  Returns a lone surrogate, or 0.
inline char32_t joinSurrogatePairs(std::string &bytes) noexcept {
    std::size_t out = 0;
    for (std::size_t in = 0; in < bytes.size();) {
        const char32_t high = surrogateAt(bytes, in);
        if (high == 0) {
            bytes[out++] = bytes[in++];
            continue;
        }
        const char32_t low = surrogateAt(bytes, in + 3);
        if (!isHighSurrogate(high) || !isLowSurrogate(low)) return high;
        out += encodeUtf8(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00), &bytes[out]);
        in += 6;
    }
    bytes.resize(out);
    return 0;
}

}  // namespace detail

// The standard UTF-8 form of text; a lone surrogate is ERR_LONE_SURROGATE.
inline Result<std::string> encodeUtf8(std::u16string_view text) noexcept {
    return detail::guarded([&]() -> Result<std::string> {
        std::string out;
        const std::size_t lone = detail::appendText(out, text, false);
        if (lone != std::u16string_view::npos) return detail::loneSurrogate(text[lone]);
        return out;
    });
}

// The bytes of node and its following siblings, with the header and a
// closing line feed, as vrkDOM_serialize writes them; in UTF-8 a surrogate
// pair is one four-byte form and a lone surrogate is ERR_LONE_SURROGATE.
// Pass a document to write the whole of it.  node must not be null.
inline Result<std::string> serialize(const vrkNode *node, Encoding encoding) noexcept {
    return detail::guarded([&]() -> Result<std::string> {
        if (encoding != Encoding::utf8 && encoding != Encoding::utf16) {
            return detail::failure(ERR_BAD_ENCODING, "serialize writes UTF-8 or UTF-16");
        }
        struct Sink {
            std::string bytes;
            bool failed = false;
        } sink;
        // The library is C: nothing may be thrown across it.
        auto write = [](const void *data, uint32_t length, void *userData) noexcept -> int {
            auto *target = static_cast<Sink *>(userData);
            if (target->failed) return 0;
            try {
                target->bytes.append(static_cast<const char *>(data), length);
            } catch (...) {
                target->failed = true;
            }
            return 0;
        };
        const int32_t written = vrkDOM_serialize(node, static_cast<int32_t>(encoding), write, &sink);
        if (written == 0 || sink.failed) return detail::outOfMemory();
        if (encoding == Encoding::utf8) {
            const char32_t lone = detail::joinSurrogatePairs(sink.bytes);
            if (lone != 0) return detail::loneSurrogate(lone);
        }
        return std::move(sink.bytes);
    });
}

namespace detail {

inline bool isBlank(std::u16string_view text) noexcept {
    return text.find_first_not_of(u" \t\r\n") == std::u16string_view::npos;
}

// Content of elements and processing instructions, and white space only.
inline bool elementOnly(const vrkNode *element) noexcept {
    bool tags = false;
    for (const vrkNode *child : children(element)) {
        if (child->type == TEXT_NODE && isBlank(value(child))) continue;
        if (child->type != ELEMENT_NODE && child->type != PROCESSING_INSTRUCTION_NODE) return false;
        tags = true;
    }
    return tags;
}

// Puts a line break and the indentation of `depth` levels ahead of `before`,
// or at the end without it.
inline Status breakLine(vrkNode *element, vrkNode *before, std::u16string &line, std::size_t depth, std::size_t width) {
    constexpr std::size_t kDeepest = 64;  // deeper levels are indented as this one
    line.assign(1, u'\n');
    line.append(width * std::min(depth, kDeepest), u' ');
    Result<Node> text = makeText(std::u16string_view(line));
    if (!text) return text.error();
    vrkDOMException exception{};
    if (before != nullptr) {
        vrkNode_insertBefore(element, text.value().get(), before, &exception);
    } else {
        vrkNode_appendChild(element, text.value().get(), &exception);
    }
    if (exception.code != 0) return fromException(exception);
    text.value().release();
    return {};
}

inline Status indentChildren(vrkNode *element, std::size_t depth, std::size_t width) {
    vrkDOMException exception{};
    for (vrkNode *child = element->firstChild; child != nullptr;) {
        vrkNode *next = child->next;
        if (child->type == TEXT_NODE) vrkDOM_destroyNode(vrkNode_removeChild(element, child, &exception), 1);
        child = next;
    }
    std::u16string line;
    for (vrkNode *child = element->firstChild; child != nullptr; child = child->next) {
        Status placed = breakLine(element, child, line, depth + 1, width);
        if (!placed) return placed;
    }
    return breakLine(element, nullptr, line, depth, width);
}

}  // namespace detail

// Lays the tree below top out for reading: every element whose content is
// elements and processing instructions (and white space) gets each child on
// a line of its own, indented by `width` blanks a level; the white space it
// had is dropped.  Elements with text keep their content as it is.  Failure
// (exhausted memory) leaves a sound tree, laid out in part.
inline Status indent(vrkNode *top, std::size_t width) noexcept {
    return detail::guarded([&]() -> Status {
        std::vector<std::pair<vrkNode *, std::size_t>> elements;
        if (top->type == ELEMENT_NODE) elements.emplace_back(top, 0);
        walkDescendants(top, [&](const vrkNode *node, int64_t depth) {
            if (node->type == ELEMENT_NODE) elements.emplace_back(const_cast<vrkNode *>(node), std::size_t(depth));
        });
        const std::size_t base = top->type == ELEMENT_NODE ? 0 : 1;  // a document's root is not indented
        for (const auto &[element, depth] : elements) {
            if (!detail::elementOnly(element)) continue;
            Status done = detail::indentChildren(element, depth - base, width);
            if (!done) return done;
        }
        return {};
    });
}

}  // namespace vrkxml

#endif  // VRKXML_WRITE_HPP
