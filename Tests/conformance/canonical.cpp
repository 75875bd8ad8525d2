#include "canonical.h"

#include <algorithm>
#include <vector>

#include "vrkxml.hpp"

namespace conformance {

namespace {

std::string utf8(const UniChar *s) { return vrkxml::toUtf8(vrkxml::view(s)); }

std::string escaped(const UniChar *s) {
    std::string out;
    for (char c : utf8(s)) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\t': out += "&#9;"; break;
        case '\n': out += "&#10;"; break;
        case '\r': out += "&#13;"; break;
        default: out.push_back(c);
        }
    }
    return out;
}

// Attribute names in order of their 16-bit units, which is the order of
// code points for names (they hold no surrogates).
bool before(const vrkNode *a, const vrkNode *b) {
    const UniChar *x = a->name;
    const UniChar *y = b->name;
    while (*x != 0 && *x == *y) ++x, ++y;
    return *x < *y;
}

void write(std::string &out, const vrkNode *node);

void writeChildren(std::string &out, const vrkNode *node) {
    for (const vrkNode *child = node->firstChild; child != nullptr; child = child->next) write(out, child);
}

void write(std::string &out, const vrkNode *node) {
    switch (node->type) {
    case ELEMENT_NODE: {
        std::vector<const vrkNode *> attributes;
        for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next) attributes.push_back(a);
        std::sort(attributes.begin(), attributes.end(), before);
        out += '<';
        out += utf8(node->name);
        for (const vrkNode *a : attributes) {
            out += ' ';
            out += utf8(a->name);
            out += "=\"";
            out += escaped(a->value);
            out += '"';
        }
        out += '>';
        writeChildren(out, node);
        out += "</";
        out += utf8(node->name);
        out += '>';
        break;
    }
    case TEXT_NODE:
    case CDATA_SECTION_NODE:
        out += escaped(node->value);
        break;
    case PROCESSING_INSTRUCTION_NODE:
        out += "<?";
        out += utf8(node->name);
        out += ' ';
        out += utf8(node->value);
        out += "?>";
        break;
    case DOCUMENT_NODE:
        writeChildren(out, node);
        break;
    default:
        break;
    }
}

}  // namespace

std::string canonicalForm(const vrkNode *document) {
    std::string out;
    write(out, document);
    return out;
}

}  // namespace conformance
