#include "support/edit_model.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/tree_text.h"
#include "support/written.h"

#define SITE __FILE__, __LINE__

namespace vrktest {

namespace {

using Units = std::vector<UniChar>;  // always ends with a zero unit

[[noreturn]] void fail(const std::string &what) {
    std::fprintf(stderr, "edit model: %s\n", what.c_str());
    std::abort();
}

int32_t lengthOf(const Units &s) { return static_cast<int32_t>(s.size() - 1); }

bool isAncestorOrSelf(const vrkNode *candidate, const vrkNode *node) {
    for (; node != nullptr; node = node->parent) {
        if (node == candidate) return true;
    }
    return false;
}

bool equal(const UniChar *a, const Units &b) {
    return a != nullptr && vrkunistrlen(a) == lengthOf(b) && std::equal(b.begin(), b.end(), a);
}

// Any byte in the captured output is a broken link.
void checkQuiet() {
    std::fflush(stdout);
    struct stat status {};
    if (fstat(STDOUT_FILENO, &status) != 0 || status.st_size == 0) return;
    char report[512] = {};
    if (pread(STDOUT_FILENO, report, sizeof report - 1, 0) < 0) report[0] = 0;
    fail(std::string("the integrity check reported broken links: ") + report);
}

class Session {
public:
    Session(EditProgram &program, vrkNode *document) : program_(program) {
        roots_.push_back(document);
        collect();
    }
    ~Session() {
        for (vrkNode *root : roots_) vrkDOM_destroyNode(root, 1);
    }

    void step();
    void checkTrees() {
        collect();
        for (const vrkNode *root : roots_) DOM_checkIntegrity(root);
        checkQuiet();
    }

private:
    uint8_t byte() { return program_.next(); }
    vrkNode *anyNode() { return nodes_[byte() % nodes_.size()]; }
    // A node that may stand in a child list.
    vrkNode *childCandidate() {
        vrkNode *node = anyNode();
        return node->type == ATTRIBUTE_NODE ? nullptr : node;
    }
    // A detached root (the index in roots_), or 0 for none.
    std::size_t pickRoot() { return roots_.size() < 2 ? 0 : 1 + byte() % (roots_.size() - 1); }
    void adopt(vrkNode *node) {
        if (node == nullptr) fail("a factory gave null without a failure");
        roots_.push_back(node);
    }
    // A node given back by the library keeps its old links; they are ours.
    void takeBack(vrkNode *node) {
        node->parent = nullptr;
        node->previous = nullptr;
        node->next = nullptr;
        roots_.push_back(node);
    }
    void attached(std::size_t root) {
        roots_.erase(roots_.begin() + static_cast<std::ptrdiff_t>(root));
    }

    // The record must hold exactly `code` (0: none); cleared for the next step.
    void expect(int32_t code, const char *operation) {
        if (ex_.code != code) {
            fail(std::string(operation) + ": expected code " + std::to_string(code) + ", got " +
                 std::to_string(ex_.code));
        }
        ex_ = {};
    }

    Units text(std::size_t least = 0);
    void collect();
    void create(int32_t kind);
    void edit();
    void removeChild();
    void setAttribute(int32_t kind);
    void removeAttribute(int32_t kind);
    void lookUp();
    void setValue();
    void setPrefix();
    void normalize();
    void count();
    void pending();
    std::string trees() const;

    EditProgram &program_;
    std::vector<vrkNode *> roots_;  // roots_[0] is the document; the rest are detached
    std::vector<vrkNode *> nodes_;  // everything held, attributes included
    vrkDOMException ex_{};
};

// A string from the program: a few literal units, or a field of a node (so
// that lookups by name have something to find).
Units Session::text(std::size_t least) {
    static constexpr UniChar kWide[] = {0xD800, 0xDC00, 0xFFFF, 0xFFFE,
                                        0x00E9, 0x4E2D, 0xFEFF, 0x0085};
    const uint8_t how = byte();
    Units s;
    if (how & 1) {
        const vrkNode *n = anyNode();
        const UniChar *fields[] = {n->name, n->value, n->namespaceURI, n->prefix, n->localName};
        for (const UniChar *f = fields[(how >> 1) % 5]; f != nullptr && *f != 0; ++f)
            s.push_back(*f);
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
void Session::collect() {
    nodes_.clear();
    for (vrkNode *root : roots_) {
        for (vrkNode *node = root; node != nullptr;) {
            nodes_.push_back(node);
            int32_t count = 0;
            for (vrkNode *a = node->attributes.first; a != nullptr; a = a->next) {
                if (a->previous != (count == 0 ? nullptr : nodes_.back()) || a->parent != node) {
                    fail("attribute map links broken");
                }
                nodes_.push_back(a);
                ++count;
            }
            if (count != node->attributes.count) fail("attribute map count wrong");
            const bool takesChildren = node->type == ELEMENT_NODE || node->type == DOCUMENT_NODE;
            if (node->firstChild != nullptr && takesChildren) {
                node = node->firstChild;
                continue;
            }
            while (node != root && node->next == nullptr) node = node->parent;
            node = node == root ? nullptr : node->next;
        }
    }
}

void Session::create(int32_t kind) {
    const uint8_t how = byte() % 6;
    const Units first = text(how == 0 ? 0 : 1);
    const Units second = text(1);
    const Units third = text(1);
    const bool noUri = byte() & 1;
    const UniChar *uri = noUri ? nullptr : third.data();
    switch (how) {
    case 0: adopt(vrkDOMReal_createEANode(SITE, kind, first.data(), lengthOf(first), &ex_)); break;
    case 1:
        adopt(vrkDOMReal_createEANodeNSP(SITE, kind, uri, lengthOf(third), first.data(),
                                         lengthOf(first), second.data(), lengthOf(second), &ex_));
        break;
    case 2: {
        vrkNode *node = vrkDOMReal_createEANodeNS(SITE, kind, uri, lengthOf(third), first.data(),
                                                  lengthOf(first), &ex_);
        if (node != nullptr && noUri) fail("createEANodeNS took a null namespace name");
        if (node == nullptr) expect(ERR_NAMESPACE, "createEANodeNS");
        if (node != nullptr) adopt(node);
        break;
    }
    case 3:
        adopt(kind == ELEMENT_NODE
                  ? vrkDOMReal_createTextNode(SITE, first.data(), lengthOf(first), &ex_)
                  : vrkDOMReal_createCDATASection(SITE, first.data(), lengthOf(first), &ex_));
        if (!equal(roots_.back()->value, first)) fail("a character node holds another value");
        break;
    case 4:
        adopt(vrkDOMReal_createProcessingInstruction(SITE, first.data(), lengthOf(first),
                                                     second.data(), lengthOf(second), &ex_));
        if (!equal(roots_.back()->name, first))
            fail("a processing instruction has another target");
        if (!equal(roots_.back()->value, second)) fail("a processing instruction has other data");
        break;
    default: adopt(vrkDOMReal_createDocument(SITE, &ex_));
    }
    expect(0, "a factory");
}

// appendChild, insertBefore or replaceChild of a detached root.
void Session::edit() {
    vrkNode *parent = anyNode();
    const std::size_t root = pickRoot();
    vrkNode *child = roots_[root];
    if (root == 0 || child->type == ATTRIBUTE_NODE || isAncestorOrSelf(child, parent)) return;
    const uint8_t how = byte() % 3;
    vrkNode *other = how == 0 ? nullptr : childCandidate();
    if (how != 0 && other == nullptr) return;
    const bool parentTakesChildren = parent->type == ELEMENT_NODE || parent->type == DOCUMENT_NODE;
    // Only elements and documents take children through appendChild.
    if (how == 0 && !parentTakesChildren) return;
    vrkNode *grand = parent->parent;
    const bool documentFull = parent->type == DOCUMENT_NODE &&
                              child->type != PROCESSING_INSTRUCTION_NODE &&
                              vrkDOM_getDocumentElement(parent) != nullptr;
    const bool besideDocumentElement = parent->type != ELEMENT_NODE && grand != nullptr &&
                                       grand->type == DOCUMENT_NODE &&
                                       vrkDOM_getDocumentElement(grand) != nullptr;
    const vrkNode *before = how == 2 ? other->previous : nullptr;
    const vrkNode *after = how == 2 ? other->next : nullptr;
    const std::string tree = describe(roots_[0]);
    vrkNode *result = nullptr;
    int32_t code = 0;
    if (how == 0) {
        if (child->type == DOCUMENT_NODE || documentFull) code = ERR_HIERARCHY_REQUEST;
        result = vrkNodeReal_appendChild(SITE, parent, child, &ex_);
    } else if (how == 1) {
        if (child->type == DOCUMENT_NODE || besideDocumentElement)
            code = ERR_HIERARCHY_REQUEST;
        else if (other->parent != parent)
            code = ERR_NOT_FOUND;
        result = vrkNodeReal_insertBefore(SITE, parent, child, other, &ex_);
    } else {
        // A document as the new child is no reason for a refusal here.
        if (parent->type != ELEMENT_NODE)
            code = ERR_HIERARCHY_REQUEST;
        else if (other->parent != parent)
            code = ERR_NOT_FOUND;
        result = vrkNodeReal_replaceChild(SITE, parent, child, other, &ex_);
    }
    expect(code, "a child list edit");
    if ((result == nullptr) != (code != 0)) fail("result and record disagree");
    if (result == nullptr) {
        if (describe(roots_[0]) != tree) fail("a refused edit changed the tree");
        return;
    }
    if (result != (how == 2 ? other : child)) fail("a child list edit gave back another node");
    if (child->parent != parent) fail("the new child has another parent");
    if (how == 0 && parent->lastChild != child) fail("appendChild did not place the child last");
    if (how == 1 && (child->next != other || other->previous != child))
        fail("insertBefore misplaced");
    if (how == 2 && (child->previous != before || child->next != after))
        fail("replaceChild misplaced");
    attached(root);
    if (how == 2) takeBack(other);
}

void Session::removeChild() {
    vrkNode *parent = anyNode();
    vrkNode *child = childCandidate();
    if (child == nullptr) return;
    const int32_t code = child->parent != parent ? ERR_NOT_FOUND : 0;
    const vrkNode *before = child->previous;
    vrkNode *result = vrkNodeReal_removeChild(SITE, parent, child, &ex_);
    expect(code, "removeChild");
    if (result != (code == 0 ? child : nullptr)) fail("removeChild gave the wrong node");
    if (result == nullptr) return;
    const vrkNode *first = parent->firstChild;
    if (before == nullptr ? first != child->next : before->next != child->next)
        fail("removeChild broke the list");
    takeBack(result);
}

void Session::setAttribute(int32_t kind) {
    vrkNode *element = anyNode();
    const std::size_t root = pickRoot();
    vrkNode *attribute = roots_[root];
    if (root == 0 || attribute->type != ATTRIBUTE_NODE) return;
    vrkNode *old = kind == ELEMENT_NODE
                       ? vrkElementReal_setAttributeNode(SITE, element, attribute, &ex_)
                       : vrkElementReal_setAttributeNodeNS(SITE, element, attribute, &ex_);
    const bool refused = element->type != ELEMENT_NODE;
    expect(refused ? ERR_HIERARCHY_REQUEST : 0, "setAttributeNode");
    if (refused) return;
    if (attribute->parent != element) fail("an attribute set has another parent");
    const bool inPlace =
        old == nullptr || (attribute->previous == old->previous && attribute->next == old->next);
    if (!inPlace) fail("an attribute replaced another out of its place");
    if (old == nullptr && attribute->next != nullptr) fail("a new attribute is not last");
    attached(root);
    if (old != nullptr) takeBack(old);
}

void Session::removeAttribute(int32_t kind) {
    vrkNamedNodeMap *map = &anyNode()->attributes;
    const Units name = text();
    const Units uri = text();
    vrkNode *removed = kind == ELEMENT_NODE
                           ? vrkNamedNodeMap_removeNamedItem(map, name.data(), lengthOf(name))
                           : NamedNodeMap_removeNamedItemNS(map, uri.data(), lengthOf(uri),
                                                            name.data(), lengthOf(name));
    if (removed == nullptr) return;
    if (!equal(kind == ELEMENT_NODE ? removed->name : removed->localName, name)) {
        fail("removed an attribute of another name");
    }
    takeBack(removed);
}

void Session::lookUp() {
    const vrkNamedNodeMap *map = &anyNode()->attributes;
    const int32_t length = vrkNamedNodeMap_getLength(map);
    if (vrkNamedNodeMap_item(map, length) != nullptr) fail("an item behind the end");
    if (vrkNamedNodeMap_item(map, -1) != nullptr) fail("an item before the start");
    if (length > 0 && vrkNamedNodeMap_item(map, length - 1) == nullptr) fail("no last item");
    const Units name = text();
    const Units uri = text();
    // An attribute of the map is found by its own name, under either key.
    const vrkNode *item = vrkNamedNodeMap_item(map, length > 0 ? byte() % length : 0);
    if (item != nullptr &&
        vrkNamedNodeMap_getNamedItem(map, item->name, vrkunistrlen(item->name)) == nullptr) {
        fail("getNamedItem missed an attribute of the map");
    }
    if (item != nullptr && item->localName != nullptr && item->namespaceURI != nullptr &&
        vrkNamedNodeMap_getNamedItemNS(map, item->namespaceURI, vrkunistrlen(item->namespaceURI),
                                       item->localName,
                                       vrkunistrlen(item->localName)) == nullptr) {
        fail("getNamedItemNS missed an attribute of the map");
    }
    const vrkNode *found = vrkNamedNodeMap_getNamedItem(map, name.data(), lengthOf(name));
    if (found != nullptr && !equal(found->name, name)) fail("getNamedItem found another name");
    found = vrkNamedNodeMap_getNamedItemNS(map, uri.data(), lengthOf(uri), name.data(),
                                           lengthOf(name));
    if (found != nullptr && !equal(found->localName, name))
        fail("getNamedItemNS found another name");
    if (found != nullptr && !equal(found->namespaceURI, uri))
        fail("getNamedItemNS found another URI");
}

void Session::setValue() {
    vrkNode *node = anyNode();
    const Units value = text();
    const int32_t type = node->type;
    const bool takes = type == ATTRIBUTE_NODE || type == TEXT_NODE || type == CDATA_SECTION_NODE;
    if (vrkNodeReal_setNodeValue(SITE, node, value.data(), lengthOf(value), &ex_) !=
        (takes ? 1 : 0)) {
        fail("setNodeValue result wrong");
    }
    expect(0, "setNodeValue");
    if (takes && !equal(node->value, value)) fail("setNodeValue stored another value");
}

void Session::setPrefix() {
    vrkNode *node = anyNode();
    const Units prefix = text();
    const bool none = byte() & 1;
    const std::string name = utf8(node->name);
    const std::size_t oldPrefix = node->prefix == nullptr ? 0 : utf8(node->prefix).size() + 1;
    const int32_t done =
        vrkNodeReal_setPrefix(SITE, node, none ? nullptr : prefix.data(), lengthOf(prefix), &ex_);
    expect(node->namespaceURI == nullptr ? ERR_NAMESPACE : 0, "setPrefix");
    if (done == 0 && node->namespaceURI != nullptr) fail("setPrefix refused a namespaced node");
    if (done == 0) return;
    const bool cleared = none || prefix.size() == 1;
    if (cleared ? node->prefix != nullptr : !equal(node->prefix, prefix))
        fail("setPrefix left another prefix");
    const std::string local = name.substr(oldPrefix);
    if (utf8(node->name) != (cleared ? local : utf8(prefix.data()) + ":" + local)) {
        fail("setPrefix made the name " + utf8(node->name) + " of " + name);
    }
}

void Session::normalize() {
    vrkNode *node = byte() == 0 ? nullptr : anyNode();
    if (vrkNodeReal_normalize(SITE, node, &ex_) != 1) fail("normalize failed");
    expect(0, "normalize");
    if (node == nullptr || node->type == TEXT_NODE) return;
    collect();
    for (const vrkNode *n : nodes_) {
        if (n->type == TEXT_NODE && n->next != nullptr && n->next->type == TEXT_NODE &&
            n->parent != nullptr && isAncestorOrSelf(node, n->parent)) {
            fail("normalize left adjacent text nodes");
        }
    }
}

void Session::count() {
    vrkNode *node = anyNode();
    const vrkNode *element = vrkDOM_getDocumentElement(node);
    if (element != nullptr && (node->type != DOCUMENT_NODE || element->parent != node ||
                               element->type != ELEMENT_NODE)) {
        fail("getDocumentElement gave a stranger");
    }
    int32_t children = 0;
    for (const vrkNode *c = node->firstChild; c != nullptr; c = c->next) ++children;
    if (vrkDOM_getNumberOfChildren(node) != children) fail("getNumberOfChildren miscounted");
}

// Every tree held, with the values and namespace fields describe() leaves out.
std::string Session::trees() const {
    std::string out;
    for (const vrkNode *root : roots_)
        out += describe(root) + utf8(root->value) + namespaceFields(root) + "\n";
    return out;
}

// With a failure pending every operation gives null or 0, keeps the record
// and changes nothing, whatever its arguments.
void Session::pending() {
    vrkNode *node = anyNode();
    vrkNode *other = anyNode();
    const Units some = text(1);
    const std::string before = trees();
    const vrkDOMException kPending{ERR_NOT_FOUND, "f", 1, "g", 2};
    ex_ = kPending;
    const int32_t n = lengthOf(some);
    const UniChar *s = some.data();
    bool refused = false;
    switch (byte() % 12) {
    case 0: refused = vrkNodeReal_appendChild(SITE, node, other, &ex_) == nullptr; break;
    case 1: refused = vrkNodeReal_insertBefore(SITE, node, other, other, &ex_) == nullptr; break;
    case 2: refused = vrkNodeReal_replaceChild(SITE, node, other, other, &ex_) == nullptr; break;
    case 3: refused = vrkNodeReal_removeChild(SITE, node, other, &ex_) == nullptr; break;
    case 4: refused = vrkElementReal_setAttributeNode(SITE, node, other, &ex_) == nullptr; break;
    case 5: refused = vrkElementReal_setAttributeNodeNS(SITE, node, other, &ex_) == nullptr; break;
    case 6: refused = vrkNodeReal_setNodeValue(SITE, node, s, n, &ex_) == 0; break;
    case 7: refused = vrkNodeReal_setPrefix(SITE, node, s, n, &ex_) == 0; break;
    case 8: refused = vrkNodeReal_normalize(SITE, node, &ex_) == 0; break;
    case 9: refused = vrkNodeReal_cloneNode(SITE, node, 1, &ex_) == nullptr; break;
    case 10:
        refused = vrkDOMReal_createEANodeNS(SITE, ELEMENT_NODE, s, n, s, n, &ex_) == nullptr;
        break;
    default: refused = vrkDOMReal_createTextNode(SITE, s, n, &ex_) == nullptr;
    }
    if (!refused) fail("an operation ran with a failure pending");
    const bool kept = ex_.code == kPending.code && ex_.file == kPending.file &&
                      ex_.line == kPending.line && ex_.callerFile == kPending.callerFile &&
                      ex_.callerLine == kPending.callerLine;
    if (!kept) fail("an operation wrote over a pending failure");
    ex_ = {};
    if (trees() != before) fail("an operation changed a tree with a failure pending");
}

void Session::step() {
    const int32_t kind = byte() & 1 ? ATTRIBUTE_NODE : ELEMENT_NODE;
    switch (byte() % 17) {
    case 0:
    case 1: create(kind); break;
    case 2:
    case 3:
    case 4: edit(); break;
    case 5: removeChild(); break;
    case 6: setAttribute(kind); break;
    case 7: removeAttribute(kind); break;
    case 8: lookUp(); break;
    case 9: setValue(); break;
    case 10: setPrefix(); break;
    case 11: normalize(); break;
    case 12: {
        const vrkNode *node = anyNode();
        vrkNode *copy = vrkNodeReal_cloneNode(SITE, node, byte() & 1, &ex_);
        expect(0, "cloneNode");
        adopt(copy);
        if (copy->firstChild != nullptr || copy->attributes.count != 0)
            fail("a copy took children");
        UniChar *vrkNode::*const strings[] = {&vrkNode::name, &vrkNode::value, &vrkNode::prefix,
                                              &vrkNode::localName, &vrkNode::namespaceURI};
        for (const auto field : strings) {
            if (utf8(copy->*field) != utf8(node->*field)) fail("a copy holds another string");
        }
        break;
    }
    case 13: {
        const vrkNode *node = anyNode();
        const Units prefix = text();
        const Units uri = text();
        vrkDOM_getDeclaredNameSpace(node, byte() & 1, prefix.data(), lengthOf(prefix));
        const UniChar *xmlns = DOM_getDeclaredNameSpacePrefix(node, uri.data());
        if (xmlns != nullptr && vrkunistrcmp(xmlns, UCSxmlns) != 0)
            fail("declared prefix is no xmlns");
        break;
    }
    case 15: pending(); break;
    case 14: {
        const std::size_t root = pickRoot();
        if (root == 0) break;
        vrkDOM_destroyNode(roots_[root], 1);
        attached(root);
        break;
    }
    default: {
        count();
        int32_t result = 0;
        written(anyNode(), kind == ELEMENT_NODE ? ENCODING_UTF8 : ENCODING_UTF16, &result);
        if (result != 1) fail("serialize failed");
    }
    }
}

}  // namespace

void captureIntegrityReports() {
    std::FILE *sink = std::tmpfile();
    if (sink == nullptr || dup2(fileno(sink), STDOUT_FILENO) < 0)
        fail("cannot redirect standard output");
}

void runEdits(vrkNode *document, EditProgram &program, int steps) {
    Session session(program, document);
    for (int i = 0; i < steps && !program.done(); ++i) {
        session.step();
        session.checkTrees();
    }
}

}  // namespace vrktest
