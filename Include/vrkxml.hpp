// libvrkxml: an optional C++17 layer over the C interface of vrkxml.h.
//
// Everything here is inline and lives in namespace vrkxml; the library
// exports nothing for it and the C interface is unchanged.  What it adds:
//   - Document, an owning, move-only handle of a parsed or created tree;
//   - std::u16string_view access to the strings of a node;
//   - toUtf8 / fromUtf8 between the library's 16-bit units and UTF-8;
//   - children() and attributes(), ranges for range-based for, and
//     walkDescendants(), a walk of a whole subtree without recursion;
//   - parse() and serialize() reporting through Result<T>, with an Error
//     that carries the line and column of a parse failure.
// Nothing here throws on its own: failures are values.  Only the standard
// containers may throw std::bad_alloc, and never across a call into the
// library.
#ifndef VRKXML_HPP
#define VRKXML_HPP

#include "vrkxml.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace vrkxml {

// ---------------------------------------------------------------------------
// Strings
// ---------------------------------------------------------------------------

// UniChar is uint16_t, a type distinct from char16_t.  Both are 16-bit
// unsigned integers with the same size, alignment and representation, so the
// units of a library string are read as char16_t in place.  The strings a
// tree holds are either blocks from malloc or static UniChar arrays, so they
// are suitably aligned for char16_t too.
static_assert(sizeof(UniChar) == sizeof(char16_t), "UniChar and char16_t differ in size");
static_assert(alignof(UniChar) == alignof(char16_t), "UniChar and char16_t differ in alignment");

// A view of the zero-terminated string s; empty for null.
inline std::u16string_view view(const UniChar *s) noexcept {
    if (s == nullptr) {
        return {};
    }
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

// UTF-8 form of text, unit by unit as the library writes it: a surrogate
// is encoded by itself (three bytes), never paired with its partner.
inline std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    char bytes[4];
    for (char16_t unit : text) {
        const int32_t n = vrkUniCharToUTF8(static_cast<UniChar>(unit), bytes);
        out.append(bytes, static_cast<std::size_t>(n));
    }
    return out;
}

// The 16-bit units of UTF-8 text, or nothing when it is malformed anywhere
// (as the library decodes: no sequence may yield a value above U+FFFE, a
// surrogate or an overlong form).
inline std::optional<std::u16string> fromUtf8(std::string_view utf8) {
    const std::string text(utf8);  // the decoder reads up to a zero byte
    const char *cursor = text.c_str();
    const char *const end = cursor + text.size();
    std::u16string out;
    out.reserve(text.size());
    while (cursor < end) {
        if (*cursor == '\0') {  // a zero byte is a unit of its own
            out.push_back(u'\0');
            ++cursor;
            continue;
        }
        const UniChar unit = vrkUTF8ToUniChar(&cursor);
        if (unit == 0xFFFF) {
            return std::nullopt;
        }
        out.push_back(static_cast<char16_t>(unit));
    }
    return out;
}

// ---------------------------------------------------------------------------
// Results
// ---------------------------------------------------------------------------

// A failure.  `offset` counts 16-bit units of the decoded text (a byte order
// mark is one unit); `line` and `column` locate that unit, both from 1,
// lines being ended by '\n' and columns counted in units.  For failures that
// have no position (serialization, creation) all three are 0.
struct Error {
    int32_t code = 0;
    std::string message;
    int32_t offset = 0;
    int64_t line = 0;
    int64_t column = 0;
};

// Either a value or an Error.  value() and error() require ok() and !ok().
template <class T>
class Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const noexcept { return state_.index() == 0; }
    explicit operator bool() const noexcept { return ok(); }

    T &value() & noexcept { return *std::get_if<0>(&state_); }
    const T &value() const & noexcept { return *std::get_if<0>(&state_); }
    T &&value() && noexcept { return std::move(*std::get_if<0>(&state_)); }
    const Error &error() const noexcept { return *std::get_if<1>(&state_); }

private:
    std::variant<T, Error> state_;
};

namespace detail {

inline Error fromException(const vrkDOMException &exception, const char *what) {
    Error error;
    error.code = exception.code;
    error.message = what;
    return error;
}

}  // namespace detail

// ---------------------------------------------------------------------------
// Document
// ---------------------------------------------------------------------------

// Owns a document node and its whole tree; releases them on destruction.
class Document {
public:
    Document() noexcept = default;
    // Takes over document (null allowed).
    explicit Document(vrkNode *document) noexcept : document_(document) {}
    ~Document() { vrkDOM_destroyNode(document_, 1); }

    Document(const Document &) = delete;
    Document &operator=(const Document &) = delete;
    Document(Document &&other) noexcept : document_(other.release()) {}
    Document &operator=(Document &&other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }

    // A new, empty document.
    static Result<Document> create() {
        vrkDOMException exception{};
        vrkNode *document = vrkDOM_createDocument(&exception);
        if (document == nullptr) {
            return detail::fromException(exception, "Out of memory");
        }
        return Document(document);
    }

    // The document node, or null for an empty handle.
    vrkNode *node() const noexcept { return document_; }
    // The document element, or null.
    vrkNode *root() const noexcept {
        return document_ ? vrkDOM_getDocumentElement(document_) : nullptr;
    }
    explicit operator bool() const noexcept { return document_ != nullptr; }

    // Gives the tree up to the caller, who then destroys it.
    vrkNode *release() noexcept { return std::exchange(document_, nullptr); }
    // Destroys the tree held and takes over document (null allowed).
    void reset(vrkNode *document = nullptr) noexcept {
        vrkDOM_destroyNode(std::exchange(document_, document), 1);
    }

private:
    vrkNode *document_ = nullptr;
};

// ---------------------------------------------------------------------------
// Iteration
// ---------------------------------------------------------------------------

// Walks a chain of nodes through their `next` links.  The next node is read
// when advancing, so the current one may be removed from its list inside
// the loop (a removed node keeps its links) but not destroyed.
class NodeIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = vrkNode *;
    using difference_type = std::ptrdiff_t;
    using pointer = vrkNode *const *;
    using reference = vrkNode *;

    NodeIterator() noexcept = default;
    explicit NodeIterator(vrkNode *node) noexcept : node_(node) {}

    vrkNode *operator*() const noexcept { return node_; }
    NodeIterator &operator++() noexcept {
        node_ = node_->next;
        return *this;
    }
    NodeIterator operator++(int) noexcept {
        NodeIterator before = *this;
        node_ = node_->next;
        return before;
    }
    friend bool operator==(NodeIterator a, NodeIterator b) noexcept { return a.node_ == b.node_; }
    friend bool operator!=(NodeIterator a, NodeIterator b) noexcept { return a.node_ != b.node_; }

private:
    vrkNode *node_ = nullptr;
};

// A chain of nodes from its first one.
class NodeRange {
public:
    explicit NodeRange(vrkNode *first) noexcept : first_(first) {}
    NodeIterator begin() const noexcept { return NodeIterator(first_); }
    NodeIterator end() const noexcept { return NodeIterator(); }
    bool empty() const noexcept { return first_ == nullptr; }

private:
    vrkNode *first_;
};

// The children of node, of every kind, in order; empty for null.
inline NodeRange children(const vrkNode *node) noexcept {
    return NodeRange(node ? node->firstChild : nullptr);
}

// The attributes of element in map order; empty for null.
inline NodeRange attributes(const vrkNode *element) noexcept {
    return NodeRange(element ? element->attributes.first : nullptr);
}

// Walks the descendants of root in document order without recursion, so
// that a tree of any depth is safe: enter(node, depth) before a node's
// children, leave(node, depth) after them, with depth 1 for root's
// children.  Attributes are not visited (see attributes()).  Nothing may
// be linked or unlinked during the walk; null walks nothing.
template <class Enter, class Leave>
void walkDescendants(const vrkNode *root, Enter &&enter, Leave &&leave) {
    if (root == nullptr) return;
    const vrkNode *node = root->firstChild;
    std::int64_t depth = 1;
    while (node != nullptr) {
        enter(node, depth);
        if (node->firstChild != nullptr) {
            node = node->firstChild;
            ++depth;
            continue;
        }
        // Leave the node and every ancestor whose last child it is.
        for (;;) {
            leave(node, depth);
            if (node->next != nullptr) {
                node = node->next;
                break;
            }
            node = node->parent;
            --depth;
            if (node == root) return;
        }
    }
}

// The same walk with enter alone.
template <class Enter>
void walkDescendants(const vrkNode *root, Enter &&enter) {
    walkDescendants(root, enter, [](const vrkNode *, std::int64_t) {});
}

// ---------------------------------------------------------------------------
// Parsing
// ---------------------------------------------------------------------------

namespace detail {

// Line and column of the unit at offset in units [0, count).
inline void locate(const char16_t *units, std::size_t count, Error &error) {
    std::size_t offset = error.offset < 0 ? 0 : static_cast<std::size_t>(error.offset);
    if (offset > count) {
        offset = count;
    }
    int64_t line = 1;
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < offset; ++i) {
        if (units[i] == u'\n') {
            ++line;
            lineStart = i + 1;
        }
    }
    error.line = line;
    error.column = static_cast<int64_t>(offset - lineStart) + 1;
}

inline Error fromParseError(const vrkParseError &result) {
    Error error;
    error.code = result.code;
    error.message = result.message ? result.message : "Parse error";
    error.offset = result.offset;
    return error;
}

}  // namespace detail

// Parses UTF-8 text (or UTF-16 when its first two bytes say so).  The text
// is read up to its first zero byte; the input itself is not modified.
inline Result<Document> parse(std::string_view utf8) {
    // The parser wants a writable, zero-terminated copy.  Three zero bytes
    // follow the text: one ends UTF-8, and a one-byte text of '<' or white
    // space, which the detection takes for UTF-16, needs a whole zero unit
    // behind its first one.
    std::string buffer;
    buffer.reserve(utf8.size() + 3);
    buffer.append(utf8);
    buffer.append(3, '\0');

    vrkParseError result{};
    vrkNode *document = vrkDOM_parse(buffer.data(), &result);
    if (document != nullptr) {
        return Document(document);
    }
    Error error = detail::fromParseError(result);
    // The offset counts units of the decoded text: decode up to it.  A byte
    // that does not decode counts as one unit and the walk goes on behind it.
    const int32_t encoding = IdentifyCharacterEncoding(buffer.data(), 2);
    if (encoding != ENCODING_UTF16 && encoding != ENCODING_UTF16_SWAPPED) {
        std::u16string decoded;
        const char *cursor = buffer.c_str();
        const auto wanted = static_cast<std::size_t>(error.offset < 0 ? 0 : error.offset);
        while (*cursor != '\0' && decoded.size() < wanted) {
            const char *before = cursor;
            const UniChar unit = vrkUTF8ToUniChar(&cursor);
            if (cursor == before) {
                ++cursor;
            }
            decoded.push_back(static_cast<char16_t>(unit));
        }
        detail::locate(decoded.data(), decoded.size(), error);
    } else {
        // Read as 16-bit units (swapped in place when they were in the
        // opposite order); count them up to the first zero unit.
        std::u16string units(buffer.size() / 2, u'\0');
        std::char_traits<char>::copy(reinterpret_cast<char *>(units.data()), buffer.data(),
                                     units.size() * 2);
        detail::locate(units.data(), std::char_traits<char16_t>::length(units.c_str()), error);
    }
    return error;
}

// Parses UTF-16 text in either byte order (detected from its first two
// bytes).  The text is read up to its first zero unit; the input itself is
// not modified.
inline Result<Document> parse(std::u16string_view utf16) {
    std::u16string buffer(utf16);  // writable, a zero unit behind it
    vrkParseError result{};
    vrkNode *document = vrkDOM_parse(buffer.data(), &result);
    if (document != nullptr) {
        return Document(document);
    }
    Error error = detail::fromParseError(result);
    // Text in the opposite byte order is now swapped into the machine's.
    detail::locate(buffer.data(), std::char_traits<char16_t>::length(buffer.c_str()), error);
    return error;
}

// ---------------------------------------------------------------------------
// Serialization
// ---------------------------------------------------------------------------

enum class Encoding : int32_t {
    utf8 = ENCODING_UTF8,
    utf16 = ENCODING_UTF16,  // machine byte order, no byte order mark
};

// The bytes of node and its following siblings, with the header and a
// closing line feed, as vrkDOM_serialize writes them.  Pass a document to
// write the whole of it.  node must not be null.
inline Result<std::string> serialize(const vrkNode *node, Encoding encoding) {
    struct Sink {
        std::string bytes;
        bool failed = false;
    } sink;
    // The library is C: nothing may be thrown across it.
    auto write = [](const void *data, uint32_t length, void *userData) noexcept -> int {
        auto *target = static_cast<Sink *>(userData);
        if (target->failed) {
            return 0;
        }
        try {
            target->bytes.append(static_cast<const char *>(data), length);
        } catch (...) {
            target->failed = true;
            return 0;
        }
        return 1;
    };
    const int32_t written =
        vrkDOM_serialize(node, static_cast<int32_t>(encoding), write, &sink);
    if (written == 0 || sink.failed) {
        Error error;
        error.code = ERR_OUT_OF_MEMORY;
        error.message = "Serialization failed: out of memory or output too large";
        return error;
    }
    return std::move(sink.bytes);
}

}  // namespace vrkxml

#endif  // VRKXML_HPP
