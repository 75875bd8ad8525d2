// Tree editing driven by a byte program.  Input: a mode byte, a two-byte
// little-endian length n, n bytes of document (as in fuzz_parse), then the
// program.  Each step picks an operation and its nodes (by index into a flat
// list of every node held) and checks the documented outcome; after each
// step the integrity check must print nothing.  The harness keeps to the
// documented limits: nodes are inserted only when detached and never into
// their own subtree, attributes stay out of child lists, a node leaves the
// tree before it is destroyed, and a refusal is cleared before the next step.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "fuzz_support.h"

#define SITE __FILE__, __LINE__

namespace {

using Units = std::vector<UniChar>;  // always ends with a zero unit

int32_t lengthOf(const Units &s) { return static_cast<int32_t>(s.size() - 1); }

bool isAncestorOrSelf(const vrkNode *candidate, const vrkNode *node) {
    for (; node != nullptr; node = node->parent)
        if (node == candidate) return true;
    return false;
}

bool equal(const UniChar *a, const Units &b) {
    return a != nullptr && vrkunistrlen(a) == lengthOf(b) && std::equal(b.begin(), b.end(), a);
}

// DOM_checkIntegrity prints on standard output, which is sent to an empty
// file at startup; any byte in it is a broken link.
void checkQuiet() {
    std::fflush(stdout);
    struct stat status {};
    if (fstat(STDOUT_FILENO, &status) != 0 || status.st_size == 0) return;
    char report[512] = {};
    if (pread(STDOUT_FILENO, report, sizeof report - 1, 0) < 0) report[0] = 0;
    std::fprintf(stderr, "%s", report);
    fuzz::fail("the integrity check reported broken links");
}

struct Session {
    const uint8_t *program = nullptr;
    std::size_t size = 0;
    std::size_t at = 0;
    std::vector<vrkNode *> roots;  // roots[0] is the document; the rest are detached
    std::vector<vrkNode *> nodes;  // everything held, attributes included
    vrkDOMException ex{};

    uint8_t byte() { return at < size ? program[at++] : 0; }
    vrkNode *anyNode() { return nodes[byte() % nodes.size()]; }
    vrkNode *childCandidate() {  // a node that may be in a child list
        vrkNode *node = anyNode();
        return node->type == ATTRIBUTE_NODE ? nullptr : node;
    }
    std::size_t pickRoot() { return roots.size() < 2 ? 0 : 1 + byte() % (roots.size() - 1); }
    void adopt(vrkNode *node) {
        if (node == nullptr) fuzz::fail("a factory gave null without a failure");
        roots.push_back(node);
    }
    // A node given back by the library keeps its old links; they are ours.
    void takeBack(vrkNode *node) {
        node->parent = node->previous = node->next = nullptr;
        roots.push_back(node);
    }
    void attached(std::size_t root) { roots.erase(roots.begin() + static_cast<std::ptrdiff_t>(root)); }

    // The record must hold exactly `code` (0: none); cleared for the next step.
    void expect(int32_t code) {
        if (ex.code != code) {
            std::fprintf(stderr, "expected code %d, got %d\n", code, ex.code);
            fuzz::fail("unexpected outcome of a tree operation");
        }
        ex = {};
    }

    // A string from the program: a few literal units, or a field of a node
    // (so that lookups by name have something to find).
    Units text(std::size_t least = 0) {
        static constexpr UniChar kWide[] = {0xD800, 0xDC00, 0xFFFF, 0xFFFE, 0x00E9, 0x4E2D, 0xFEFF, 0x0085};
        const uint8_t how = byte();
        Units s;
        if (how & 1) {
            const vrkNode *n = anyNode();
            const UniChar *fields[] = {n->name, n->value, n->namespaceURI, n->prefix, n->localName};
            for (const UniChar *f = fields[(how >> 1) % 5]; f != nullptr && *f != 0; ++f) s.push_back(*f);
        } else {
            for (int i = (how >> 1) % 12; i > 0; --i) {
                const uint8_t b = byte();
                s.push_back(b >= 0xF8 ? kWide[b - 0xF8] : b == 0 ? UniChar{'x'} : UniChar{b});
            }
        }
        while (s.size() < least) s.push_back('p');
        s.push_back(0);
        return s;
    }

    // Rebuilds the flat list, checking every attribute map on the way.
    void collect() {
        nodes.clear();
        for (vrkNode *root : roots) {
            for (vrkNode *node = root; node != nullptr;) {
                nodes.push_back(node);
                int32_t count = 0;
                for (vrkNode *a = node->attributes.first; a != nullptr; a = a->next, ++count) {
                    if (a->previous != (count == 0 ? nullptr : nodes.back()) || a->parent != node)
                        fuzz::fail("attribute map links broken");
                    nodes.push_back(a);
                }
                if (count != node->attributes.count) fuzz::fail("attribute map count wrong");
                if (node->firstChild != nullptr && (node->type == ELEMENT_NODE || node->type == DOCUMENT_NODE)) {
                    node = node->firstChild;
                    continue;
                }
                while (node != root && node->next == nullptr) node = node->parent;
                node = node == root ? nullptr : node->next;
            }
        }
    }

    void step();
};

void Session::step() {
    const int32_t kind = byte() & 1 ? ATTRIBUTE_NODE : ELEMENT_NODE;
    switch (byte() % 24) {
    case 0: {
        const Units name = text();
        adopt(vrkDOMReal_createEANode(SITE, kind, name.data(), lengthOf(name), &ex));
        break;
    }
    case 1: {
        const Units uri = text(), prefix = text(1), local = text(1);
        const bool noUri = byte() & 1;
        adopt(vrkDOMReal_createEANodeNSP(SITE, kind, noUri ? nullptr : uri.data(), lengthOf(uri), prefix.data(),
                                         lengthOf(prefix), local.data(), lengthOf(local), &ex));
        break;
    }
    case 2: {
        const Units uri = text(), name = text(1);
        const bool noUri = byte() & 1;
        vrkNode *node = vrkDOMReal_createEANodeNS(SITE, kind, noUri ? nullptr : uri.data(), lengthOf(uri),
                                                  name.data(), lengthOf(name), &ex);
        if (node != nullptr && noUri) fuzz::fail("createEANodeNS took a null namespace name");
        if (node == nullptr) expect(ERR_NAMESPACE);
        else adopt(node);
        break;
    }
    case 3: case 4: {
        const Units value = text();
        adopt(kind == ELEMENT_NODE ? vrkDOMReal_createTextNode(SITE, value.data(), lengthOf(value), &ex)
                                   : vrkDOMReal_createCDATASection(SITE, value.data(), lengthOf(value), &ex));
        break;
    }
    case 5: {
        const Units target = text(1), data = text();
        adopt(vrkDOMReal_createProcessingInstruction(SITE, target.data(), lengthOf(target), data.data(),
                                                     lengthOf(data), &ex));
        break;
    }
    case 6: adopt(vrkDOMReal_createDocument(SITE, &ex)); break;
    case 7: adopt(vrkNodeReal_cloneNode(SITE, anyNode(), byte() & 1, &ex)); break;
    case 8: case 9: case 10: {  // append, insert before, replace
        vrkNode *parent = anyNode();
        const std::size_t root = pickRoot();
        vrkNode *child = roots[root];
        if (root == 0 || child->type == ATTRIBUTE_NODE || isAncestorOrSelf(child, parent)) break;
        const uint8_t how = byte() % 3;
        vrkNode *other = how == 0 ? nullptr : childCandidate();
        if (how != 0 && other == nullptr) break;
        vrkNode *result = nullptr;
        int32_t code = 0;
        if (how == 0) {
            if (parent->type != ELEMENT_NODE && parent->type != DOCUMENT_NODE) break;  // only those take children
            if (child->type == DOCUMENT_NODE ||
                (parent->type == DOCUMENT_NODE && child->type != PROCESSING_INSTRUCTION_NODE &&
                 vrkDOM_getDocumentElement(parent) != nullptr))
                code = ERR_HIERARCHY_REQUEST;
            result = vrkNodeReal_appendChild(SITE, parent, child, &ex);
        } else if (how == 1) {
            vrkNode *grand = parent->parent;
            if (child->type == DOCUMENT_NODE ||
                (parent->type != ELEMENT_NODE && grand != nullptr && grand->type == DOCUMENT_NODE &&
                 vrkDOM_getDocumentElement(grand) != nullptr))
                code = ERR_HIERARCHY_REQUEST;
            else if (other->parent != parent)
                code = ERR_NOT_FOUND;
            result = vrkNodeReal_insertBefore(SITE, parent, child, other, &ex);
        } else {
            // A document as the new child is no reason for a refusal here.
            code = parent->type != ELEMENT_NODE ? ERR_HIERARCHY_REQUEST : other->parent != parent ? ERR_NOT_FOUND : 0;
            result = vrkNodeReal_replaceChild(SITE, parent, child, other, &ex);
            if (result != nullptr && result != other) fuzz::fail("replaceChild gave back another node");
        }
        expect(code);
        if ((result == nullptr) != (code != 0)) fuzz::fail("result and record disagree");
        if (result == nullptr) break;
        attached(root);
        if (how == 2) takeBack(other);
        break;
    }
    case 11: {
        vrkNode *parent = anyNode();
        vrkNode *child = childCandidate();
        if (child == nullptr) break;
        const int32_t code = child->parent != parent ? ERR_NOT_FOUND : 0;
        vrkNode *result = vrkNodeReal_removeChild(SITE, parent, child, &ex);
        expect(code);
        if (result != (code == 0 ? child : nullptr)) fuzz::fail("removeChild gave the wrong node");
        if (result != nullptr) takeBack(result);
        break;
    }
    case 12: {  // set an attribute node, plain or NS
        vrkNode *element = anyNode();
        const std::size_t root = pickRoot();
        vrkNode *attribute = roots[root];
        if (root == 0 || attribute->type != ATTRIBUTE_NODE) break;
        vrkNode *old = kind == ELEMENT_NODE ? vrkElementReal_setAttributeNode(SITE, element, attribute, &ex)
                                            : vrkElementReal_setAttributeNodeNS(SITE, element, attribute, &ex);
        const bool refused = element->type != ELEMENT_NODE;
        expect(refused ? ERR_HIERARCHY_REQUEST : 0);
        if (refused) break;
        attached(root);
        if (old != nullptr) takeBack(old);
        break;
    }
    case 13: case 14: {  // remove a named attribute, plain or NS
        vrkNamedNodeMap *map = &anyNode()->attributes;
        const Units name = text(), uri = text();
        vrkNode *removed = kind == ELEMENT_NODE
                               ? vrkNamedNodeMap_removeNamedItem(map, name.data(), lengthOf(name))
                               : NamedNodeMap_removeNamedItemNS(map, uri.data(), lengthOf(uri), name.data(),
                                                                lengthOf(name));
        if (removed == nullptr) break;
        if (kind == ELEMENT_NODE ? !equal(removed->name, name) : !equal(removed->localName, name))
            fuzz::fail("removed an attribute of another name");
        takeBack(removed);
        break;
    }
    case 15: {  // map lookups
        const vrkNamedNodeMap *map = &anyNode()->attributes;
        const int32_t length = vrkNamedNodeMap_getLength(map);
        if (vrkNamedNodeMap_item(map, length) != nullptr || vrkNamedNodeMap_item(map, -1) != nullptr ||
            (length > 0 && vrkNamedNodeMap_item(map, length - 1) == nullptr))
            fuzz::fail("map item out of step with its length");
        const Units name = text(), uri = text();
        const vrkNode *found = vrkNamedNodeMap_getNamedItem(map, name.data(), lengthOf(name));
        if (found != nullptr && !equal(found->name, name)) fuzz::fail("getNamedItem found another name");
        found = vrkNamedNodeMap_getNamedItemNS(map, uri.data(), lengthOf(uri), name.data(), lengthOf(name));
        if (found != nullptr && (!equal(found->localName, name) || !equal(found->namespaceURI, uri)))
            fuzz::fail("getNamedItemNS found another name");
        break;
    }
    case 16: {
        vrkNode *node = anyNode();
        const Units value = text();
        const bool takes = node->type == ATTRIBUTE_NODE || node->type == TEXT_NODE || node->type == CDATA_SECTION_NODE;
        if (vrkNodeReal_setNodeValue(SITE, node, value.data(), lengthOf(value), &ex) != (takes ? 1 : 0))
            fuzz::fail("setNodeValue result wrong");
        expect(0);
        if (takes && !equal(node->value, value)) fuzz::fail("setNodeValue stored another value");
        break;
    }
    case 17: {
        vrkNode *node = anyNode();
        const Units prefix = text();
        const bool none = byte() & 1;
        const int32_t done = vrkNodeReal_setPrefix(SITE, node, none ? nullptr : prefix.data(), lengthOf(prefix), &ex);
        expect(node->namespaceURI == nullptr ? ERR_NAMESPACE : 0);
        if (done == 0 && node->namespaceURI != nullptr) fuzz::fail("setPrefix refused a namespaced node");
        if (done != 0 && (none || prefix.size() == 1 ? node->prefix != nullptr : !equal(node->prefix, prefix)))
            fuzz::fail("setPrefix left another prefix");
        break;
    }
    case 18: {
        vrkNode *node = byte() == 0 ? nullptr : anyNode();
        if (vrkNodeReal_normalize(SITE, node, &ex) != 1) fuzz::fail("normalize failed");
        expect(0);
        if (node == nullptr || node->type == TEXT_NODE) break;
        collect();
        for (const vrkNode *n : nodes) {
            if (n->type == TEXT_NODE && n->next != nullptr && n->next->type == TEXT_NODE && n->parent != nullptr &&
                isAncestorOrSelf(node, n->parent))
                fuzz::fail("normalize left adjacent text nodes");
        }
        break;
    }
    case 19: {
        const vrkNode *node = anyNode();
        const Units prefix = text(), uri = text();
        vrkDOM_getDeclaredNameSpace(node, byte() & 1, prefix.data(), lengthOf(prefix));
        const UniChar *xmlns = DOM_getDeclaredNameSpacePrefix(node, uri.data());
        if (xmlns != nullptr && vrkunistrcmp(xmlns, UCSxmlns) != 0) fuzz::fail("declared prefix is no xmlns");
        break;
    }
    case 20: {
        const std::size_t root = pickRoot();
        if (root == 0) break;
        vrkDOM_destroyNode(roots[root], 1);
        attached(root);
        break;
    }
    case 21: {
        vrkNode *node = anyNode();
        const vrkNode *element = vrkDOM_getDocumentElement(node);
        if (element != nullptr && (node->type != DOCUMENT_NODE || element->parent != node || element->type != ELEMENT_NODE))
            fuzz::fail("getDocumentElement gave a stranger");
        int32_t children = 0;
        for (const vrkNode *c = node->firstChild; c != nullptr; c = c->next) ++children;
        if (vrkDOM_getNumberOfChildren(node) != children) fuzz::fail("getNumberOfChildren miscounted");
        break;
    }
    default: {
        int32_t result = 0;
        fuzz::serialize(anyNode(), kind == ELEMENT_NODE ? ENCODING_UTF8 : ENCODING_UTF16, &result);
        if (result != 1) fuzz::fail("serialize failed");
        break;
    }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    std::FILE *sink = std::tmpfile();
    if (sink == nullptr || dup2(fileno(sink), STDOUT_FILENO) < 0) fuzz::fail("cannot redirect standard output");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (size < 3) return 0;
    const std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(data[1] | data[2] << 8), size - 3);
    fuzz::Text text = fuzz::makeText(data[0], data + 3, length);
    vrkParseError error{};
    Session session;
    session.program = data + 3 + length;
    session.size = size - 3 - length;
    vrkNode *document = vrkDOM_parse(text.start, &error);
    if (document == nullptr) document = vrkDOMReal_createDocument(SITE, &session.ex);
    session.roots.push_back(document);
    session.collect();
    for (int steps = 0; steps < 400 && session.at < session.size; ++steps) {
        session.step();
        session.collect();
        for (const vrkNode *root : session.roots) DOM_checkIntegrity(root);
        checkQuiet();
    }
    int32_t written = 0;
    fuzz::serialize(document, ENCODING_UTF8, &written);
    if (written != 1) fuzz::fail("serialize failed");
    for (vrkNode *root : session.roots) vrkDOM_destroyNode(root, 1);
    return 0;
}
