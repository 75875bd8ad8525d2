// Long random sequences of legal edits on parsed documents.  After every edit
// the integrity check finds nothing and the edit put the nodes where it says;
// at the end everything is released.
#include <map>
#include <random>
#include <vector>

#include "dom_test.h"

using namespace domtest;

namespace {

// The tree with adjacent text nodes read as one: what merging must keep.
std::string flatText(const vrkNode *node) {
    if (node->type == TEXT_NODE) return utf8(node->value);
    if (node->type == CDATA_SECTION_NODE) return "<C" + utf8(node->value) + ">";
    std::string out = "<" + utf8(node->name) + ">";
    for (const vrkNode *child = node->firstChild; child != nullptr; child = child->next) out += flatText(child);
    return out + "</>";
}

class RandomEditor {
public:
    std::vector<vrkNode *> documents, pool;  // pool: detached roots with cleared links
    vrkDOMException e{};
    ~RandomEditor() {
        for (vrkNode *node : documents) vrkDOM_destroyNode(node, 1);
        for (vrkNode *node : pool) vrkDOM_destroyNode(node, 1);
    }

    // One random edit; returns its name.
    std::string step() {
        vrkNode *document = documents[pick(documents.size())];
        std::vector<vrkNode *> nodes, elements, stack{document};
        while (!stack.empty()) {
            nodes.push_back(stack.back()), stack.pop_back();
            if (nodes.back()->type == ELEMENT_NODE) elements.push_back(nodes.back());
            for (vrkNode *c = nodes.back()->lastChild; c != nullptr; c = c->previous) stack.push_back(c);
        }
        const unsigned op = nodes.size() > 250 ? 2 : pick(10) % 9;  // keeps the trees from growing without end
        vrkNode *any = nodes.size() > 1 ? nodes[1 + pick(nodes.size() - 1)] : nullptr;  // not the document
        vrkNode *element = elements.empty() ? nullptr : elements[pick(elements.size())];
        vrkNode *child = element != nullptr && element->firstChild != nullptr ? nthChild(element) : nullptr;
        if (op == 0 && child != nullptr) {
            vrkNode *added = detached();
            EXPECT_EQ(vrkNodeReal_insertBefore(kCaller, 0, element, added, child, &e), added);
            EXPECT_TRUE(added->next == child && child->previous == added);
            return "insertBefore";
        }
        if (op == 1 && child != nullptr) {
            vrkNode *added = detached(), *before = child->previous, *after = child->next;
            EXPECT_EQ(vrkNodeReal_replaceChild(kCaller, 0, element, added, child, &e), child);
            EXPECT_TRUE(added->previous == before && added->next == after);
            return release(child), "replaceChild";
        }
        if (op == 2 && any != nullptr) {
            // The document element goes now and then; mostly something below it.
            if (any->parent == document && any->firstChild != nullptr && pick(8) != 0) any = nthChild(any);
            EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 0, any->parent, any, &e), any);
            return release(any), "removeChild";
        }
        if (op == 3) {  // under a document: an element when it has none, else a PI
            const bool toDocument = element == nullptr || pick(8) == 0;
            vrkNode *parent = toDocument ? document : element;
            vrkNode *added = !toDocument ? detached() : fresh(vrkDOM_getDocumentElement(document) == nullptr ? 0 : 3);
            EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 0, parent, added, &e), added);
            EXPECT_EQ(parent->lastChild, added);
            return "appendChild";
        }
        if (op == 4 && element != nullptr) {
            std::vector<vrkNode *> named{element};
            for (vrkNode *a = element->attributes.first; a != nullptr; a = a->next) named.push_back(a);
            vrkNode *node = named[pick(named.size())];
            if (node->namespaceURI == nullptr) return "nothing";
            static const char16_t *const kPrefixes[] = {nullptr, u"", u"a", u"bb", u"ccc", u"dddd"};
            const char16_t *prefix = kPrefixes[pick(6)];
            const std::u16string to = prefix == nullptr ? u"" : prefix, name = str(node->name);
            const std::u16string local = node->prefix == nullptr ? name : name.substr(str(node->prefix).size() + 1);
            const UniChar *localName = node->localName, *uri = node->namespaceURI;
            EXPECT_EQ(vrkNodeReal_setPrefix(kCaller, 0, node, prefix ? units(to).data() : nullptr, len(to), &e), 1);
            EXPECT_EQ(str(node->name), to.empty() ? local : to + u":" + local);
            EXPECT_TRUE(str(node->prefix) == to && (node->prefix == nullptr) == to.empty());
            EXPECT_TRUE(node->localName == localName && node->namespaceURI == uri);
            return "setPrefix";
        }
        if (op == 5) {
            const std::string before = flatText(document);
            EXPECT_EQ(vrkNodeReal_normalize(kCaller, 0, nodes[pick(nodes.size())], &e), 1);
            EXPECT_EQ(flatText(document), before);
            return "normalize";
        }
        if (op == 6 && any != nullptr && element != nullptr) {
            vrkNode *copy = vrkNodeReal_cloneNode(kCaller, 0, any, static_cast<int32_t>(pick(2)), &e);
            EXPECT_TRUE(copy->firstChild == nullptr && copy->attributes.count == 0);
            EXPECT_EQ(vrkNodeReal_appendChild(kCaller, 0, element, copy, &e), copy);
            return "cloneNode";
        }
        if (op == 7 && any != nullptr && element != nullptr && element != any->parent) {
            const std::string before = describe(document);
            EXPECT_EQ(vrkNodeReal_removeChild(kCaller, 0, element, any, &e), nullptr);
            EXPECT_TRUE(e.code == ERR_NOT_FOUND && describe(document) == before);
            return e = vrkDOMException{}, "refused removeChild";
        }
        if (op == 8 && !pool.empty()) return vrkDOM_destroyNode(takeFromPool(), 1), "destroy";
        return "nothing";
    }

private:
    unsigned pick(std::size_t n) { return static_cast<unsigned>(random_() % n); }
    vrkNode *nthChild(vrkNode *parent) {
        vrkNode *child = parent->firstChild;
        for (unsigned i = pick(static_cast<std::size_t>(vrkDOM_getNumberOfChildren(parent))); i > 0; --i) child = child->next;
        return child;
    }
    // A node taken out is ours: destroyed, or kept (links cleared) for later.
    void release(vrkNode *node) {
        if (pick(2) == 0) return vrkDOM_destroyNode(node, 1);
        node->parent = node->previous = node->next = nullptr, pool.push_back(node);
    }
    vrkNode *takeFromPool() {
        std::swap(pool[pick(pool.size())], pool.back());
        vrkNode *node = pool.back();
        return pool.pop_back(), node;
    }
    vrkNode *detached() { return !pool.empty() && pick(2) == 0 ? takeFromPool() : fresh(pick(5)); }
    vrkNode *fresh(unsigned kind) {
        const auto n = static_cast<int32_t>(pick(8));
        const Units text = units(u"text<&>"), k = units(u"k");
        switch (kind) {
        case 0: return element(u"k");
        case 1: return vrkDOMReal_createTextNode(kCaller, 0, text.data(), n, &e);
        case 2: return vrkDOMReal_createCDATASection(kCaller, 0, text.data(), n, &e);
        case 3: return vrkDOMReal_createProcessingInstruction(kCaller, 0, k.data(), 1, text.data(), n, &e);
        default: return nsNode(ELEMENT_NODE, u"urn:n", u"k", u"k");
        }
    }
    std::mt19937 random_{20240611};
};

}  // namespace

TEST(RandomEdit, EveryEditKeepsTheTreesSound) {
    const int64_t liveBefore = liveAllocations();
    {
        std::string list = "<list xmlns:q='urn:q'>";
        for (int i = 0; i < 20; ++i) list += "<q:i q:n='" + std::to_string(i) + "'>a&amp;b</q:i>tail";
        RandomEditor editor;
        for (const std::string &text : {std::string("<?pi one?><p:root xmlns:p='urn:p' xmlns='urn:d' a='1' p:b='2'><p:x>t&amp;u"
                                                    "<y q='3'>v<![CDATA[w]]>&#65;&#66;</y></p:x>z<e/><?inner data?></p:root><?tail?>"),
                                         list + "</list>", std::string("<deep><a><b><c><d>x&lt;y</d></c></b></a>&gt;<![CDATA[x]]></deep>")}) {
            editor.documents.push_back(parseUtf8(text).document.release());
        }
        std::map<std::string, int> done;
        for (int i = 0; i < 6000; ++i) {
            const std::string what = editor.step();
            ++done[what];
            std::string printed;
            for (const auto *roots : {&editor.documents, &editor.pool})
                for (const vrkNode *node : *roots) printed += integrity(node);
            ASSERT_TRUE(editor.e.code == 0 && printed.empty() && !HasFailure()) << "step " << i << ": " << what << " " << printed;
        }
        for (const char *what : {"insertBefore", "replaceChild", "removeChild", "appendChild", "setPrefix", "normalize",
                                 "cloneNode", "refused removeChild", "destroy"}) {
            EXPECT_GT(done[what], 100) << what;
        }
    }
    EXPECT_EQ(liveAllocations(), liveBefore);
}
