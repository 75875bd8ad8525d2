#include "tree_report.h"

#include <string>

#include "vrkxml.hpp"

namespace vrktool {

namespace {

std::string utf8(const UniChar *s) { return vrkxml::toUtf8(vrkxml::view(s)); }

// A value for one line: quoted, control characters escaped, cut short
// after 60 characters.
std::string shown(const UniChar *value) {
    constexpr int kMost = 60;
    const std::string text = utf8(value);
    std::string out(1, '"');
    int characters = 0;
    for (const char c : text) {
        const bool lead = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        if (lead && characters++ == kMost) {
            out += "...";
            break;
        }
        if (c == '\n') out += "\\n";
        else if (c == '\r') out += "\\r";
        else if (c == '\t') out += "\\t";
        else if (c == '"' || c == '\\') out += std::string(1, '\\') + c;
        else out += c;
    }
    out += '"';
    return out;
}

}  // namespace

void printOutline(const vrkNode *document, std::FILE *out) {
    vrkxml::walkDescendants(document, [out](const vrkNode *node, long long depth) {
        constexpr long long kMostIndented = 40;
        if (depth <= kMostIndented) {
            std::fprintf(out, "%*s", static_cast<int>(2 * (depth - 1)), "");
        } else {
            std::fprintf(out, "[%lld] ", depth);
        }
        switch (node->type) {
        case ELEMENT_NODE: {
            std::string line(1, '<');
            line += utf8(node->name);
            for (const vrkNode *a : vrkxml::attributes(node)) {
                line += ' ';
                line += utf8(a->name);
                line += '=';
                line += shown(a->value);
            }
            std::fprintf(out, "%s>\n", line.c_str());
            break;
        }
        case TEXT_NODE: std::fprintf(out, "%s\n", shown(node->value).c_str()); break;
        case CDATA_SECTION_NODE: std::fprintf(out, "CDATA %s\n", shown(node->value).c_str()); break;
        case PROCESSING_INSTRUCTION_NODE:
            std::fprintf(out, "<?%s %s?>\n", utf8(node->name).c_str(), shown(node->value).c_str());
            break;
        default: std::fprintf(out, "(node of type %d)\n", node->type); break;
        }
    });
}

TreeCounts countTree(const vrkNode *document) {
    TreeCounts counts;
    vrkxml::walkDescendants(document, [&counts](const vrkNode *node, long long depth) {
        if (depth > counts.maxDepth) counts.maxDepth = depth;
        switch (node->type) {
        case ELEMENT_NODE:
            ++counts.elements;
            counts.attributes += vrkNamedNodeMap_getLength(&node->attributes);
            break;
        case TEXT_NODE: ++counts.texts; break;
        case CDATA_SECTION_NODE: ++counts.cdataSections; break;
        case PROCESSING_INSTRUCTION_NODE: ++counts.instructions; break;
        default: break;
        }
    });
    return counts;
}

}  // namespace vrktool
