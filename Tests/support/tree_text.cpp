#include "support/tree_text.h"

#include "vrkxml.h"

namespace vrktest {

// The library's own UTF-8, unit by unit (each half of a surrogate pair in a
// three-byte form), which the tests compare with what it writes.
std::string utf8(const UniChar *s) {
    if (s == nullptr) return "(null)";
    std::string out;
    char bytes[3];
    for (; *s != 0; ++s) out.append(bytes, static_cast<std::size_t>(vrkUniCharToUTF8(*s, bytes)));
    return out;
}

namespace {

std::string quoted(const UniChar *s) {
    std::string out(1, '"');
    for (char c : utf8(s)) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

std::string qualified(const vrkNode *node) {
    std::string out;
    if (node->namespaceURI != nullptr) {
        out += '{';
        out += utf8(node->namespaceURI);
        out += '}';
    }
    out += utf8(node->name);
    return out;
}

void append(std::string &out, const vrkNode *node);

void appendChildren(std::string &out, const vrkNode *node) {
    if (node->firstChild == nullptr) return;
    out += "[";
    for (const vrkNode *child = node->firstChild; child != nullptr; child = child->next) {
        if (child != node->firstChild) out += ",";
        append(out, child);
    }
    out += "]";
}

void append(std::string &out, const vrkNode *node) {
    switch (node->type) {
    case DOCUMENT_NODE:
        out += "#document";
        appendChildren(out, node);
        break;
    case ELEMENT_NODE:
        out += qualified(node);
        if (node->attributes.first != nullptr) {
            out += "(";
            for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next) {
                if (a != node->attributes.first) out += " ";
                out += qualified(a);
                out += '=';
                out += quoted(a->value);
            }
            out += ")";
        }
        appendChildren(out, node);
        break;
    case TEXT_NODE:
        out += quoted(node->value);
        break;
    case CDATA_SECTION_NODE:
        out += 'C';
        out += quoted(node->value);
        break;
    case PROCESSING_INSTRUCTION_NODE:
        out += '?';
        out += utf8(node->name);
        out += quoted(node->value);
        break;
    default:
        out += "#type" + std::to_string(node->type);
        break;
    }
}

}  // namespace

std::string describe(const vrkNode *node) {
    if (node == nullptr) return "(null)";
    std::string out;
    append(out, node);
    return out;
}

std::string namespaceFields(const vrkNode *node) {
    std::string out;
    if (node->type == ELEMENT_NODE || node->type == ATTRIBUTE_NODE) {
        out += utf8(node->prefix);
        out += '|';
        out += utf8(node->localName);
        out += '|';
        out += utf8(node->namespaceURI);
        out += ';';
    }
    for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next) out += namespaceFields(a);
    for (const vrkNode *c = node->firstChild; c != nullptr; c = c->next) out += namespaceFields(c);
    return out;
}

}  // namespace vrktest
