// libvrkxml C++ layer: parsing text with a length.  Bytes are read as UTF-8
// or UTF-16 (either byte order, with or without a mark) and handed to the
// library as UTF-16, so that characters beyond U+FFFF, which the library
// refuses in UTF-8, parse from UTF-8 too.  Every Error's place is in the
// caller's own text.
#ifndef VRKXML_PARSE_HPP
#define VRKXML_PARSE_HPP

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#if __cplusplus >= 202002L && __has_include(<span>)
#include <span>
#endif

#include "input.hpp"
#include "messages.hpp"
#include "result.hpp"
#include "strict.hpp"
#include "tree.hpp"

namespace vrkxml {

struct ParseOptions {
    // How bytes are read; ignored for 16-bit units.
    InputEncoding encoding = InputEncoding::detect;
    // Also apply the rules of XML 1.0 and Namespaces that the library does
    // not examine (vrkxml/strict.hpp lists them); a broken one fails the
    // parse with its own code.
    bool strict = false;
};

namespace detail {

inline Result<Document> parseDecoded(Result<Decoded> read, const ParseOptions &options) {
    if (!read) return read.error();
    Decoded &decoded = read.value();
    if (decoded.text().empty()) return errorAt(ERR_NO_ROOT_ELEMENT, describe(ERR_NO_ROOT_ELEMENT), decoded, 0);
    const std::size_t added = decoded.markAdded ? 1 : 0;
    vrkParseError result{};
    vrkNode *node = vrkDOM_parse(decoded.buffer.data(), &result);
    if (node == nullptr) {
        const auto at = static_cast<std::size_t>(result.offset > 0 ? result.offset : 0);
        return errorAt(result.code, describe(result.code), decoded, at > added ? at - added : 0);
    }
    Document document(node);
    if (options.strict) {
        const Violation violation = strictViolation(decoded, node);
        if (violation) return errorAt(violation.code, violation.message, decoded, violation.at - added);
    }
    return document;
}

}  // namespace detail

// Parses bytes: UTF-8, or UTF-16 in either byte order (options.encoding, or
// detected).  Malformed bytes fail with ERR_MALFORMED_TEXT at the first bad
// one, a zero character with ERR_ZERO_CHARACTER; an empty text is a
// document without a root (ERR_NO_ROOT_ELEMENT).  The text is not modified.
inline Result<Document> parse(std::string_view bytes, const ParseOptions &options = {}) noexcept {
    return detail::guarded([&]() -> Result<Document> {
        return detail::parseDecoded(detail::decodeBytes(bytes, options.encoding), options);
    });
}

inline Result<Document> parse(const void *data, std::size_t size, const ParseOptions &options = {}) noexcept {
    return parse(std::string_view(static_cast<const char *>(data), size), options);
}

#if __cplusplus >= 202002L && __has_include(<span>)
inline Result<Document> parse(std::span<const std::byte> bytes, const ParseOptions &options = {}) noexcept {
    return parse(bytes.data(), bytes.size(), options);
}
#endif

// Parses 16-bit units in the machine's order (a mark allowed); places are
// counted in units.
inline Result<Document> parse(std::u16string_view units, const ParseOptions &options = {}) noexcept {
    return detail::guarded(
        [&]() -> Result<Document> { return detail::parseDecoded(detail::decodeUnits(units), options); });
}

// Parses the file at path as bytes; a file that cannot be read fails with
// ERR_READ and the system's reason.
inline Result<Document> parseFile(const std::filesystem::path &path, const ParseOptions &options = {}) noexcept {
    return detail::guarded([&]() -> Result<Document> {
        Result<std::string> bytes = readFile(path);
        if (!bytes) return bytes.error();
        return parse(bytes.value(), options);
    });
}

}  // namespace vrkxml

#endif  // VRKXML_PARSE_HPP
