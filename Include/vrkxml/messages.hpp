// libvrkxml C++ layer: every error code's name and meaning in plain words,
// and a hint where a common cause can be recognised in the text.
#ifndef VRKXML_MESSAGES_HPP
#define VRKXML_MESSAGES_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "result.hpp"
#include "text.hpp"

namespace vrkxml {

namespace detail {

struct CodeText {
    int32_t code;
    const char *name;
    const char *description;
};

inline const CodeText *codeText(int32_t code) noexcept {
    static constexpr CodeText table[] = {
        {ERR_OUT_OF_MEMORY, "ERR_OUT_OF_MEMORY", "out of memory"},
        {ERR_XMLDECL_VERSION, "ERR_XMLDECL_VERSION", "the XML declaration has no version"},
        {ERR_BAD_ENCODING, "ERR_BAD_ENCODING", "the encoding is neither UTF-8 nor UTF-16"},
        {ERR_XMLDECL_END, "ERR_XMLDECL_END", "the XML declaration is not closed by ?>"},
        {ERR_UNTERMINATED, "ERR_UNTERMINATED", "a comment or CDATA section is not closed"},
        {ERR_COMMENT_HYPHENS, "ERR_COMMENT_HYPHENS", "two hyphens (--) inside a comment"},
        {ERR_CLOSING_QUOTE, "ERR_CLOSING_QUOTE", "a value of the XML declaration has no closing quote"},
        {ERR_ENCODING_DECL, "ERR_ENCODING_DECL",
         "the encoding declaration's value has no opening quote, or the text is not valid UTF-8"},
        {ERR_NO_ROOT_ELEMENT, "ERR_NO_ROOT_ELEMENT", "no root element where the document should begin"},
        {ERR_END_TAG, "ERR_END_TAG", "an end tag is missing here, or does not match its start tag"},
        {ERR_CHAR_REF, "ERR_CHAR_REF", "a malformed character reference"},
        {ERR_ATTVALUE_END, "ERR_ATTVALUE_END", "an attribute value is not closed"},
        {ERR_NSATT_NAME, "ERR_NSATT_NAME", "xmlns: is not followed by a prefix"},
        {ERR_EQ_MISSING, "ERR_EQ_MISSING", "the = behind a name is missing"},
        {ERR_OPENING_QUOTE, "ERR_OPENING_QUOTE", "a value does not begin with a quote"},
        {ERR_DECL_VALUE, "ERR_DECL_VALUE", "an invalid version or standalone value"},
        {ERR_TAG_END, "ERR_TAG_END", "a tag is not closed by > or />"},
        {ERR_ETAG_NAME, "ERR_ETAG_NAME", "an end tag without a valid name"},
        {ERR_UNDECLARED_PREFIX, "ERR_UNDECLARED_PREFIX", "a namespace prefix that is not declared"},
        {ERR_BAD_PI, "ERR_BAD_PI", "a malformed processing instruction"},
        {ERR_DUPLICATE_ATTRIBUTE, "ERR_DUPLICATE_ATTRIBUTE", "a start tag repeats an attribute name"},
        {ERR_HIERARCHY_REQUEST, "ERR_HIERARCHY_REQUEST", "the node may not be placed there"},
        {ERR_NOT_FOUND, "ERR_NOT_FOUND", "the node is not a child of that parent"},
        {ERR_NAMESPACE, "ERR_NAMESPACE", "a namespace name or a prefix is missing"},
        {ERR_TEXT_TOO_LONG, "ERR_TEXT_TOO_LONG", "the text has more than 2,147,483,647 UTF-16 units"},
        {errMalformedText, "ERR_MALFORMED_TEXT", "the bytes are not well-formed UTF-8 or UTF-16"},
        {errZeroCharacter, "ERR_ZERO_CHARACTER", "a zero character inside the text"},
        {errLoneSurrogate, "ERR_LONE_SURROGATE", "half of a surrogate pair, which has no UTF-8 form"},
        {errRead, "ERR_READ", "the input could not be read"},
        {errNotACharacter, "ERR_NOT_A_CHARACTER", "a character that XML does not allow"},
        {errContentAfterRoot, "ERR_CONTENT_AFTER_ROOT", "content after the root element"},
        {errAttributeSpace, "ERR_ATTRIBUTE_SPACE", "no white space between two attributes"},
        {errDuplicateExpandedName, "ERR_DUPLICATE_EXPANDED_NAME",
         "two attributes with the same namespace name and local name"},
        {errReservedName, "ERR_RESERVED_NAME", "a misuse of the reserved prefixes xml or xmlns"},
        {errEmptyNamespaceName, "ERR_EMPTY_NAMESPACE_NAME", "a prefix declared with an empty namespace name"},
        {errPITarget, "ERR_PI_TARGET", "a processing instruction target that XML does not allow"},
        {errEncodingMismatch, "ERR_ENCODING_MISMATCH", "the declared encoding is not the one the text is in"},
    };
    for (const CodeText &entry : table) {
        if (entry.code == code) return &entry;
    }
    return nullptr;
}

}  // namespace detail

// "ERR_END_TAG" for 14; "UNKNOWN_ERROR" for a number no one records.
inline const char *errorName(int32_t code) noexcept {
    const detail::CodeText *entry = detail::codeText(code);
    return entry ? entry->name : "UNKNOWN_ERROR";
}

// The meaning of a code in one line of plain words.
inline const char *describe(int32_t code) noexcept {
    const detail::CodeText *entry = detail::codeText(code);
    return entry ? entry->description : "unknown error";
}

namespace detail {

inline bool textAt(std::u16string_view text, std::size_t at, std::u16string_view literal) noexcept {
    return at <= text.size() && text.substr(at, literal.size()) == literal;
}

inline bool isAsciiNameChar(char32_t c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '.' || c == ':';
}

// The ASCII name at text[at], as UTF-8.
inline std::string asciiNameAt(std::u16string_view text, std::size_t at) {
    std::string name;
    while (at < text.size() && isAsciiNameChar(text[at]) && name.size() < 40) name.push_back(char(text[at++]));
    return name;
}

// A character outside ASCII that names may hold since the fifth edition of
// XML 1.0, whose tables are wider than the first four editions'.
inline bool isFifthEditionNameChar(char32_t c) noexcept {
    static constexpr char32_t ranges[][2] = {{0xB7, 0xB7},      {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x37D},
                                             {0x37F, 0x1FFF},   {0x200C, 0x200D}, {0x203F, 0x2040}, {0x2070, 0x218F},
                                             {0x2C00, 0x2FEF},  {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
                                             {0x10000, 0xEFFFF}};
    for (const auto &range : ranges) {
        if (c >= range[0] && c <= range[1]) return true;
    }
    return false;
}

// At least four hexadecimal digits, as in U+00E9 and U+1F600.
inline std::string hexOf(char32_t c) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    for (int shift = 20; shift >= 0; shift -= 4) {
        if (shift < 16 || (c >> shift) != 0) out.push_back(digits[(c >> shift) & 0xF]);
    }
    return out;
}

// At a & that the parser would not take: an unknown entity, or a bare &.
inline std::string ampersandHint(std::u16string_view text, std::size_t at) {
    const std::string name = asciiNameAt(text, at + 1);
    if (!name.empty() && textAt(text, at + 1 + name.size(), u";")) {
        std::string hint = "&" + name +
                           "; is not one of the five predefined entities (&lt; &gt; &amp; "
                           "&apos; &quot;) and there is no DTD: write the character itself or a "
                           "character reference";
        return name == "nbsp" ? hint + " (&#160; for &nbsp;)" : hint;
    }
    return "& must be written &amp; in text and in attribute values";
}

// The value of the character reference that ends just before `at`, or 0.
inline char32_t referenceBefore(std::u16string_view text, std::size_t at) noexcept {
    const std::size_t start = text.substr(0, at).rfind(u"&#");
    if (start == std::u16string_view::npos || at - start > 16) return 0;
    const bool hex = textAt(text, start + 2, u"x");
    char32_t value = 0;
    for (std::size_t k = start + (hex ? 3 : 2); k < text.size() && value <= 0x10FFFF; ++k) {
        const char32_t c = text[k];
        const bool digit = c >= '0' && c <= '9';
        const bool letter = hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'));
        if (!digit && !letter) break;
        value = value * (hex ? 16 : 10) + (digit ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    return value;
}

inline std::string nameCharHint(std::u16string_view text, std::size_t at) {
    std::size_t k = at;
    while (k < text.size() && k < at + 2 && (text[k] == '<' || text[k] == '/')) ++k;
    if (k >= text.size() || text[k] < 0x80) return "";
    const char32_t c = codePointAt(text, k).value;
    if (!isFifthEditionNameChar(c)) return "";
    return "U+" + hexOf(c) +
           " may stand in names since the fifth edition of XML 1.0; libvrkxml's names "
           "follow the character tables of the first four editions";
}

}  // namespace detail

// A likely cause of error `code` at unit `at` of the decoded text, and what
// to do; empty when none is recognised.
inline std::string hintFor(int32_t code, std::u16string_view text, std::size_t at) {
    using detail::textAt;
    const char16_t c = at < text.size() ? text[at] : u'\0';
    if (code == ERR_TAG_END || code == ERR_ETAG_NAME || code == ERR_END_TAG || code == ERR_NO_ROOT_ELEMENT ||
        code == ERR_EQ_MISSING || code == ERR_BAD_PI || code == ERR_NSATT_NAME) {
        std::string hint = detail::nameCharHint(text, at);
        if (!hint.empty()) return hint;
    }
    switch (code) {
    case ERR_NO_ROOT_ELEMENT:
        if (text.empty() || text == u"\uFEFF") return "the text is empty";
        if (textAt(text, at, u"<!DOCTYPE")) {
            return "document type declarations are not supported: libvrkxml reads no DTD (remove the "
                   "<!DOCTYPE ...> if the document needs nothing from it)";
        }
        if (c != u'<')
            return "a document begins with its root element's start tag, after an optional XML "
                   "declaration, comments and processing instructions";
        return "";
    case ERR_END_TAG: {
        const std::size_t endTag = text.substr(0, at).rfind(u"</");
        const bool behindEndTag = at > 0 && text[at - 1] == u'>' && endTag != std::u16string_view::npos &&
                                  text.substr(endTag, at - endTag).find(u'<', 1) == std::u16string_view::npos;
        if (behindEndTag) {
            return "the end tag " + toUtf8(text.substr(endTag, at - endTag)) +
                   " does not match the start tag of the element it would close";
        }
        if (at >= text.size()) return "the text ends before every element is closed";
        if (c == u'&') return detail::ampersandHint(text, at);
        if (textAt(text, at, u"]]>")) return "]]> must be written ]]&gt; in text";
        const char16_t next = at + 1 < text.size() ? text[at + 1] : u' ';
        if (c == u'<' && (next == u' ' || next == u'<' || next == u'=' || (next >= u'0' && next <= u'9'))) {
            return "< must be written &lt; in text";
        }
        return "";
    }
    case ERR_ATTVALUE_END:
        if (c == u'<') return "< must be written &lt; in attribute values";
        if (c == u'&') return detail::ampersandHint(text, at);
        return at >= text.size() ? "the value's closing quote is missing" : "";
    case ERR_OPENING_QUOTE: return "attribute values are quoted: name=\"value\"";
    case ERR_EQ_MISSING: return "every attribute has a quoted value: name=\"value\"";
    case ERR_CHAR_REF: {
        const char32_t value = detail::referenceBefore(text, at);
        if (value > 0xFFFF && value <= 0x10FFFF) {
            return "a character reference beyond U+FFFF is refused: write the character itself, which "
                   "the C++ layer reads from UTF-8 and UTF-16 alike";
        }
        return "a character reference is &#decimal; or &#xhex; and names a character XML allows";
    }
    case ERR_UNDECLARED_PREFIX:
        return "declare the prefix with xmlns:prefix=\"namespace name\" on this element or an ancestor";
    case ERR_DUPLICATE_ATTRIBUTE: return "each attribute name may appear only once in a start tag";
    case ERR_BAD_ENCODING:
        if (at == 0) return "";
        return "libvrkxml reads UTF-8 and UTF-16 only: convert the text, e.g. iconv -f " +
               detail::asciiNameAt(text, at) + " -t UTF-8, and declare encoding=\"UTF-8\"";
    case ERR_COMMENT_HYPHENS: return "-- may not stand inside a comment, and a comment may not end with --->";
    case ERR_BAD_PI:
        if (textAt(text, at, u"xml") || textAt(text, at, u"XML")) {
            return "the XML declaration <?xml ...?> may stand only at the very beginning of the text";
        }
        return "";
    case ERR_XMLDECL_VERSION: return "the XML declaration needs a version: <?xml version=\"1.0\"?>";
    case errMalformedText:
        return "is the text in another encoding, such as ISO-8859-1 or Windows-1252? Convert it to UTF-8";
    case errZeroCharacter: return "XML text holds no zero character: is the file binary, or UTF-16 read as UTF-8?";
    case errContentAfterRoot:
        return "a document has one root element; only comments, processing instructions and white space "
               "may follow it";
    case errNotACharacter:
        return "XML 1.0 allows no control character but tab, line feed and carriage return, and no "
               "U+FFFE, U+FFFF or unpaired surrogate";
    case errEncodingMismatch: return "declare the encoding the text is saved in, or convert the text";
    default: return "";
    }
}

}  // namespace vrkxml

#endif  // VRKXML_MESSAGES_HPP
