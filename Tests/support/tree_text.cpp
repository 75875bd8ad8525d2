#include "support/tree_text.h"

#include <cstdlib>

namespace vrktest {

std::string utf8(const UniChar *s) {
    if (s == nullptr) return "(null)";
    std::string out;
    char bytes[3];
    for (; *s != 0; ++s) out.append(bytes, static_cast<std::size_t>(vrkUniCharToUTF8(*s, bytes)));
    return out;
}

namespace {

std::string namespaceName(const vrkNode *node, Names names) {
    if (names == Names::raw || node->namespaceURI == nullptr) return utf8(node->namespaceURI);
    UniChar *copy = vrkunistrdup(node->namespaceURI);
    UniChar *resolved = copy == nullptr ? nullptr : AttrValueRefResolve(copy);
    if (resolved == nullptr) std::abort();  // the tests never run out of memory here
    std::string out = utf8(resolved);
    std::free(resolved);
    return out;
}

std::string quoted(const UniChar *s) {
    std::string out(1, '"');
    for (char c : utf8(s)) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

std::string qualified(const vrkNode *node, Names names) {
    const std::string uri =
        node->namespaceURI == nullptr ? "" : "{" + namespaceName(node, names) + "}";
    return uri + utf8(node->name);
}

// A kind whose name is fixed shows its name only when it is another.
std::string unlessNamed(const vrkNode *node, const char *fixed) {
    const std::string name = utf8(node->name);
    return name == fixed ? "" : "!" + name;
}

void append(std::string &out, const vrkNode *node, Names names) {
    switch (node->type) {
    case DOCUMENT_NODE: out += "#document" + unlessNamed(node, "#document"); break;
    case ELEMENT_NODE: out += qualified(node, names); break;
    case TEXT_NODE: out += unlessNamed(node, "#text") + quoted(node->value); break;
    case CDATA_SECTION_NODE:
        out += 'C' + unlessNamed(node, "#cdata-section") + quoted(node->value);
        break;
    case PROCESSING_INSTRUCTION_NODE: out += '?' + utf8(node->name) + quoted(node->value); break;
    default: out += "#type" + std::to_string(node->type); break;
    }
    if (node->type == ELEMENT_NODE && node->attributes.first != nullptr) {
        const char *separator = "(";
        for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next) {
            out += separator + qualified(a, names) + '=' + quoted(a->value);
            separator = " ";
        }
        out += ")";
    }
    const bool hasChildren = node->type == ELEMENT_NODE || node->type == DOCUMENT_NODE;
    if (!hasChildren || node->firstChild == nullptr)
        return;  // a stray child of a leaf is not shown
    const char *separator = "[";
    for (const vrkNode *child = node->firstChild; child != nullptr; child = child->next) {
        out += separator;
        append(out, child, names);
        separator = ",";
    }
    out += "]";
}

}  // namespace

std::string describe(const vrkNode *node, Names names) {
    if (node == nullptr) return "(null)";
    std::string out;
    append(out, node, names);
    return out;
}

std::string namespaceFields(const vrkNode *node, Names names) {
    std::string out;
    if (node->type == ELEMENT_NODE || node->type == ATTRIBUTE_NODE) {
        out += utf8(node->prefix) + '|' + utf8(node->localName) + '|' +
               namespaceName(node, names) + ';';
    }
    for (const vrkNode *a = node->attributes.first; a != nullptr; a = a->next)
        out += namespaceFields(a, names);
    for (const vrkNode *c = node->firstChild; c != nullptr; c = c->next)
        out += namespaceFields(c, names);
    return out;
}

}  // namespace vrktest
