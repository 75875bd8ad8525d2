// libvrkxml C++ layer: the strict checks.  The library leaves some rules of
// XML 1.0 and Namespaces in XML unexamined (Docs/conformance.md lists them);
// those that can be checked on the text and the parsed tree are checked
// here, after the library has accepted a document:
//   - every character is one the Char production allows;
//   - only comments, processing instructions and white space follow the
//     root element;
//   - white space separates the attributes of a tag;
//   - no two attributes of a tag have the same namespace name and local name;
//   - xml and xmlns and their namespace names are used as reserved, and no
//     prefix is declared with an empty namespace name;
//   - a processing instruction's target is not xml in any case, holds no
//     colon, and white space separates it from its data;
//   - the declared encoding is the one the bytes are in, and UTF-16 without
//     a declaration of its byte order begins with a byte order mark.
#ifndef VRKXML_STRICT_HPP
#define VRKXML_STRICT_HPP

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "input.hpp"
#include "text.hpp"
#include "tree.hpp"

namespace vrkxml {

namespace detail {

// A broken rule at unit `at` of the library's buffer (mark included).
struct Violation {
    int32_t code = 0;
    std::size_t at = 0;
    std::string message;

    explicit operator bool() const noexcept { return code != 0; }
};

inline bool sameAsciiNoCase(std::u16string_view text, std::u16string_view ascii) noexcept {
    if (text.size() != ascii.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t a = text[i] >= 'A' && text[i] <= 'Z' ? char16_t(text[i] | 0x20) : text[i];
        if (a != (ascii[i] | 0x20) && a != ascii[i]) return false;
    }
    return true;
}

// A prefix the library takes for xml or xmlns, which it compares folding
// case, but which is not spelled as they are and so is bound to nothing.
inline bool misspeltReservedPrefix(std::u16string_view prefix) noexcept {
    return prefix != u"xml" && prefix != u"xmlns" &&
           (sameAsciiNoCase(prefix, u"xml") || sameAsciiNoCase(prefix, u"xmlns"));
}

inline Violation charViolation(std::u16string_view buffer) {
    for (std::size_t i = 1; i < buffer.size();) {
        const CodePoint c = codePointAt(buffer, i);
        const char32_t v = c.value;
        const bool allowed = v == 0x9 || v == 0xA || v == 0xD || (v >= 0x20 && v <= 0xD7FF) ||
                             (v >= 0xE000 && v <= 0xFFFD) || (v >= 0x10000 && v <= 0x10FFFF);
        if (!allowed) return {errNotACharacter, i, "U+" + hexOf(v) + " is not a character XML allows"};
        i += c.units;
    }
    return {};
}

// One walk over a text the library has accepted, in step with its tree: the
// n-th start tag of the text is the n-th element of the tree in document
// order, and its attributes are the element's in map order.
class StrictScan {
public:
    StrictScan(const Decoded &decoded, const vrkNode *document) noexcept
        : text_(decoded.buffer), decoded_(decoded), document_(document), node_(document) {}

    Violation run() {
        std::size_t i = 1;  // behind the mark
        Violation found;
        if (startsWith(i, u"<?xml") && isSpace(at(i + 5))) {
            found = declaration(i);
        } else {
            found = encodingViolation({}, i);
        }
        for (;;) {  // the prolog
            i = skipSpace(i);
            if (!found && startsWith(i, u"<!--")) {
                i = behind(i + 4, u"-->");
            } else if (!found && startsWith(i, u"<?")) {
                found = instruction(i);
            } else {
                break;
            }
        }
        for (int64_t depth = 0; !found && i < text_.size();) {  // the root element
            if (at(i) != u'<') {
                i = std::min(text_.find(u'<', i), text_.size());
            } else if (startsWith(i, u"<!--")) {
                i = behind(i + 4, u"-->");
            } else if (startsWith(i, u"<![CDATA[")) {
                i = behind(i, u"]]>");
            } else if (startsWith(i, u"<?")) {
                found = instruction(i);
            } else if (startsWith(i, u"</")) {
                i = behind(i, u">");
                --depth;
            } else {
                bool empty = false;
                found = startTag(i, empty);
                if (!empty) ++depth;
            }
            if (depth == 0) break;
        }
        while (!found && i < text_.size()) {  // after the root element
            i = skipSpace(i);
            if (i >= text_.size()) break;
            if (startsWith(i, u"<!--")) {
                i = behind(i + 4, u"-->");
            } else if (startsWith(i, u"<?")) {
                found = instruction(i);
            } else {
                found = {errContentAfterRoot, i, "content after the root element"};
            }
        }
        return found;
    }

private:
    char16_t at(std::size_t i) const noexcept { return i < text_.size() ? text_[i] : u'\0'; }
    bool startsWith(std::size_t i, std::u16string_view literal) const noexcept {
        return i <= text_.size() && text_.substr(i, literal.size()) == literal;
    }
    static bool isSpace(char16_t c) noexcept { return c == 0x20 || c == 0x9 || c == 0xD || c == 0xA; }
    std::size_t skipSpace(std::size_t i) const noexcept {
        while (i < text_.size() && isSpace(text_[i])) ++i;
        return i;
    }
    std::size_t behind(std::size_t i, std::u16string_view end) const noexcept {
        const std::size_t found = text_.find(end, i);
        return found == std::u16string_view::npos ? text_.size() : found + end.size();
    }
    // The end of the Name at i, by the library's own Name production, so
    // that these checks and the parser agree on names.
    std::size_t nameEnd(std::size_t i) const noexcept {
        auto *units = const_cast<UniChar *>(unitsOf(text_));
        ProduceContext context{};
        context.textStart = units;
        context.textEnd = units + text_.size() - 1;
        context.cursor = units + i;
        if (Produce_Name(&context) != PRODUCE_OK) return i;
        return static_cast<std::size_t>(context.cursor - units);
    }

    Violation declaration(std::size_t &i) {
        const std::size_t end = behind(i, u"?>");
        std::size_t k = text_.substr(0, end).find(u"encoding", i);
        Violation found = encodingViolation({}, i);
        if (k != std::u16string_view::npos) {
            k = skipSpace(k + 8);
            k = skipSpace(at(k) == u'=' ? k + 1 : k);
            const char16_t quote = at(k);
            const std::size_t close = std::min(text_.find(quote, k + 1), end);
            found = encodingViolation(text_.substr(k + 1, close - k - 1), k + 1);
        }
        i = end;
        return found;
    }

    Violation encodingViolation(std::u16string_view declared, std::size_t where) const {
        const TextForm form = decoded_.form;
        if (form == TextForm::units) return {};  // units have no encoding to compare
        const std::string name = toUtf8(declared);
        if (form == TextForm::utf8) {
            if (declared.empty() || sameAsciiNoCase(declared, u"UTF-8")) return {};
            return {errEncodingMismatch, where, "the text declares " + name + " but is UTF-8"};
        }
        if (sameAsciiNoCase(declared, form == TextForm::utf16le ? u"UTF-16LE" : u"UTF-16BE")) return {};
        if (!declared.empty() && !sameAsciiNoCase(declared, u"UTF-16")) {
            return {errEncodingMismatch, where, "the text declares " + name + " but is UTF-16"};
        }
        if (decoded_.markAdded) {
            return {errEncodingMismatch, 1,
                    "UTF-16 text without a byte order mark that does not declare "
                    "UTF-16LE or UTF-16BE"};
        }
        return {};
    }

    Violation instruction(std::size_t &i) {
        const std::size_t start = i + 2;
        const std::size_t end = nameEnd(start);
        const std::u16string_view target = text_.substr(start, end - start);
        i = behind(end, u"?>");
        if (sameAsciiNoCase(target, u"xml")) {
            return {errPITarget, start,
                    "the target xml, in any case, is kept for the XML declaration at the "
                    "very beginning of the text"};
        }
        if (target.find(u':') != std::u16string_view::npos) {
            return {errPITarget, start + target.find(u':'),
                    "a processing instruction target holds no colon "
                    "where namespaces apply"};
        }
        if (!isSpace(at(end)) && !startsWith(end, u"?>")) {
            return {errPITarget, end, "white space must separate a processing instruction's target from its data"};
        }
        return {};
    }

    Violation startTag(std::size_t &i, bool &empty) {
        const std::size_t tag = i;
        const vrkNode *element = nextElement();
        std::size_t k = tag + 1;
        while (k < text_.size() && !isSpace(at(k)) && at(k) != u'/' && at(k) != u'>') ++k;
        std::vector<std::size_t> places;
        for (;;) {
            const std::size_t before = k;
            k = skipSpace(k);
            if (k >= text_.size() || at(k) == u'/' || at(k) == u'>') {
                empty = at(k) == u'/';
                k += empty ? 2 : 1;
                break;
            }
            if (k == before) {
                i = k;
                return {errAttributeSpace, k, "white space must separate the attributes of a tag"};
            }
            places.push_back(k);
            while (k < text_.size() && at(k) != u'=') ++k;
            k = skipSpace(k + 1);
            const std::size_t close = text_.find(at(k), k + 1);
            k = close == std::u16string_view::npos ? text_.size() : close + 1;
        }
        i = k;
        return element ? namespaceViolation(element, tag + 1, places) : Violation{};
    }

    // The next element of the tree in document order, or null.
    const vrkNode *nextElement() noexcept {
        const vrkNode *node = node_;
        do {
            node = nextInDocumentOrder(node, document_);
        } while (node != nullptr && node->type != ELEMENT_NODE);
        if (node != nullptr) node_ = node;
        return node;
    }

    Violation namespaceViolation(const vrkNode *element, std::size_t nameAt, const std::vector<std::size_t> &places) {
        std::vector<const vrkNode *> attributes;
        for (const vrkNode *attribute : vrkxml::attributes(element)) attributes.push_back(attribute);
        if (attributes.size() != places.size()) return {};  // never, for a text the library accepted
        if (prefix(element) == u"xmlns") {
            return {errReservedName, nameAt, "the prefix xmlns is for namespace declarations, not element names"};
        }
        if (misspeltReservedPrefix(prefix(element))) return misspelt(prefix(element), nameAt);
        const std::u16string_view xmlName = view(XML10_NAMESPACE);
        const std::u16string_view xmlnsName = view(XMLNS_URI);
        for (std::size_t k = 0; k < attributes.size(); ++k) {
            const vrkNode *attribute = attributes[k];
            const std::u16string_view bound = value(attribute);
            const bool reservedName = bound == xmlName || bound == xmlnsName;
            if (name(attribute) == u"xmlns" && reservedName) {
                return {errReservedName, places[k], toUtf8(bound) + " may not be the default namespace"};
            }
            if (prefix(attribute) != u"xmlns") {
                if (misspeltReservedPrefix(prefix(attribute))) return misspelt(prefix(attribute), places[k]);
                continue;
            }
            const std::u16string_view declared = localPart(attribute);
            if (declared == u"xmlns") return {errReservedName, places[k], "the prefix xmlns may not be declared"};
            if (declared == u"xml" && bound != xmlName) {
                return {errReservedName, places[k], "the prefix xml is bound to " + toUtf8(xmlName) + " alone"};
            }
            if (declared != u"xml" && reservedName) {
                return {errReservedName, places[k], toUtf8(bound) + " is reserved and may not be declared"};
            }
            if (bound.empty()) {
                return {errEmptyNamespaceName, places[k], "a prefix cannot be undeclared in Namespaces 1.0"};
            }
        }
        return duplicateViolation(attributes, places);
    }

    static Violation misspelt(std::u16string_view prefix, std::size_t where) {
        return {errReservedName, where,
                "the prefix " + toUtf8(prefix) +
                    " is not declared: only xml and xmlns, "
                    "in lower case, are reserved, but libvrkxml takes it for one of them"};
    }

    static Violation duplicateViolation(const std::vector<const vrkNode *> &attributes,
                                        const std::vector<std::size_t> &places) {
        std::vector<std::size_t> named;  // indices of the attributes in a namespace
        for (std::size_t k = 0; k < attributes.size(); ++k) {
            if (attributes[k]->namespaceURI != nullptr) named.push_back(k);
        }
        const auto key = [&](std::size_t k) {
            return std::make_pair(namespaceURI(attributes[k]), localPart(attributes[k]));
        };
        std::sort(named.begin(), named.end(),
                  [&](std::size_t a, std::size_t b) { return key(a) != key(b) ? key(a) < key(b) : a < b; });
        Violation found;
        for (std::size_t n = 1; n < named.size(); ++n) {
            const std::size_t second = named[n];
            if (key(named[n - 1]) == key(second) && (!found || places[second] < found.at)) {
                std::string message(1, '{');
                message += toUtf8(key(second).first);
                message += '}';
                message += toUtf8(key(second).second);
                message += " is already an attribute of this tag, under another prefix";
                found = {errDuplicateExpandedName, places[second], message};
            }
        }
        return found;
    }

    std::u16string_view text_;
    const Decoded &decoded_;
    const vrkNode *document_;
    const vrkNode *node_;
};

// The first broken rule in the text, or none.
inline Violation strictViolation(const Decoded &decoded, const vrkNode *document) {
    Violation chars = charViolation(decoded.buffer);
    Violation scanned = StrictScan(decoded, document).run();
    if (chars && (!scanned || chars.at <= scanned.at)) return chars;
    return scanned;
}

}  // namespace detail

}  // namespace vrkxml

#endif  // VRKXML_STRICT_HPP
