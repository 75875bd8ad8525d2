// The attribute map: index and lookups, removal and set at every place in
// the list, the two keys, and setting attributes on an element.
#include <utility>

#include "dom_test.h"

using namespace domtest;

namespace {

// The map holds exactly `expected`, in order, reachable by index and by links.
void expectMap(const vrkNamedNodeMap &map, std::initializer_list<vrkNode *> expected) {
    EXPECT_EQ(vrkNamedNodeMap_getLength(&map), static_cast<int32_t>(expected.size()));
    const vrkNode *prev = nullptr, *at = map.first;
    int32_t i = 0;
    for (vrkNode *want : expected) {
        ASSERT_EQ(at, want) << "at " << i;
        EXPECT_TRUE(vrkNamedNodeMap_item(&map, i++) == want && at->previous == prev);
        prev = std::exchange(at, at->next);
    }
    EXPECT_TRUE(at == nullptr && !vrkNamedNodeMap_item(&map, i) && !vrkNamedNodeMap_item(&map, -1));
}
vrkNode *get(const vrkNamedNodeMap &map, std::u16string_view name) { return vrkNamedNodeMap_getNamedItem(&map, units(name).data(), len(name)); }
vrkNode *getNS(const vrkNamedNodeMap &map, std::u16string_view uri, std::u16string_view local) {
    return vrkNamedNodeMap_getNamedItemNS(&map, units(uri).data(), len(uri), units(local).data(), len(local));
}
vrkNode *nsAttr(const char16_t *uri, std::u16string_view p, std::u16string_view l) { return nsNode(ATTRIBUTE_NODE, uri, p, l); }

}  // namespace

TEST(NamedNodeMap, SetReplaceAndRemoveAtEveryPlace) {
    vrkNamedNodeMap map{};
    expectMap(map, {});
    EXPECT_TRUE(!vrkNamedNodeMap_removeNamedItem(&map, units(u"a").data(), 1) &&
                !NamedNodeMap_removeNamedItemNS(&map, units(u"u").data(), 1, units(u"a").data(), 1));
    vrkNode *only = attr(u"a");
    EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&map, only), nullptr);
    EXPECT_EQ(vrkNamedNodeMap_removeNamedItem(&map, units(u"a").data(), 1), only);
    EXPECT_TRUE(map.count == 0 && map.first == nullptr);
    vrkNode *h = nsAttr(u"u", u"p", u"h"), *m = attr(u"m"), *t = attr(u"t"), *z = attr(u"z");
    EXPECT_TRUE(!vrkNamedNodeMap_setNamedItem(&map, h) && !vrkNamedNodeMap_setNamedItemNS(&map, m) &&  // afresh
                !vrkNamedNodeMap_setNamedItem(&map, t) && !vrkNamedNodeMap_setNamedItem(&map, z));
    expectMap(map, {h, m, t, z});
    EXPECT_EQ(vrkNamedNodeMap_removeNamedItem(&map, units(u"m").data(), 1), m);
    EXPECT_TRUE(m->previous == h && m->next == t);  // the removed node keeps its links
    EXPECT_EQ(vrkNamedNodeMap_removeNamedItem(&map, units(u"z").data(), 1), z);
    EXPECT_EQ(NamedNodeMap_removeNamedItemNS(&map, units(u"u").data(), 1, units(u"h").data(), 1), h);
    EXPECT_EQ(vrkNamedNodeMap_removeNamedItem(&map, units(u"b").data(), 1), nullptr);
    expectMap(map, {t});
    for (vrkNode *n : {only, h, m, t, z}) vrkDOM_destroyNode(n, 0);

    for (int place = 0; place < 3; ++place) {  // replacement in place at head, middle and tail
        vrkNamedNodeMap m3{};
        vrkNode *list[3] = {attr(u"x"), attr(u"y"), attr(u"z")}, *ns = nsAttr(u"u", u"p", u"q");
        for (vrkNode *n : list) vrkNamedNodeMap_setNamedItem(&m3, n);
        vrkNode *old = list[place];
        list[place] = attr(str(old->name));
        EXPECT_EQ(vrkNamedNodeMap_setNamedItem(&m3, list[place]), old);
        // A node already in the map comes back and nothing moves.
        EXPECT_EQ(vrkNamedNodeMap_setNamedItem(&m3, list[place]), list[place]);
        EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&m3, ns), nullptr);
        EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&m3, ns), ns);
        expectMap(m3, {list[0], list[1], list[2], ns});
        for (vrkNode *n : {list[0], list[1], list[2], ns, old}) vrkDOM_destroyNode(n, 0);
    }
}

TEST(NamedNodeMap, LookupsAreExactAndKeysIndependent) {
    vrkNamedNodeMap map{};
    // b:a has a local name but no namespace name; abc has neither.
    vrkNode *noUri = nsAttr(nullptr, u"b", u"a"), *plain = attr(u"abc");
    vrkNode *pa = nsAttr(u"urn:u", u"p", u"a"), *qa = nsAttr(u"urn:u", u"q", u"a"), *ra = nsAttr(u"urn:v", u"r", u"a");
    for (vrkNode *n : {noUri, plain, pa, qa, ra}) EXPECT_EQ(vrkNamedNodeMap_setNamedItem(&map, n), nullptr);
    expectMap(map, {noUri, plain, pa, qa, ra});  // p:a and q:a side by side under the plain key
    EXPECT_TRUE(get(map, u"p:a") == pa && getNS(map, u"urn:u", u"a") == pa && getNS(map, u"urn:v", u"a") == ra);
    for (auto name : {u"a", u"P:A", u"ab", u"abcd"}) EXPECT_EQ(get(map, name), nullptr);  // "ab" agrees as far as it goes
    for (auto [uri, local] : {std::pair{u"urn:", u"a"}, {u"urn:U", u"a"}, {u"urn:u", u"A"}, {u"urn:u", u"ab"}})
        EXPECT_EQ(getNS(map, uri, local), nullptr);
    // Under the NS key q:a replaces p:a; nodes without that key never match.
    vrkNamedNodeMap nsMap{};
    vrkNode *x1 = attr(u"x"), *x2 = attr(u"x"), *ba = nsAttr(nullptr, u"b", u"a"), *pa2 = nsAttr(u"urn:u", u"p", u"a"),
            *qa2 = nsAttr(u"urn:u", u"q", u"a");
    for (vrkNode *n : {x1, pa2}) EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&nsMap, n), nullptr);
    EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&nsMap, qa2), pa2);
    for (vrkNode *n : {x2, ba}) EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&nsMap, n), nullptr);
    expectMap(nsMap, {x1, qa2, x2, ba});
    for (vrkNode *n : {noUri, plain, pa, qa, ra, x1, x2, ba, pa2, qa2}) vrkDOM_destroyNode(n, 0);
}

TEST(ElementSetAttribute, ParentAndRefusal) {
    vrkDOMException e{};
    vrkNode *el = element(u"e"), *text = textNode(u"t");
    vrkNode *a1 = attr(u"a"), *a2 = attr(u"a"), *ns1 = nsAttr(u"u", u"p", u"n"), *ns2 = nsAttr(u"u", u"q", u"n");
    a1->parent = text;
    for (vrkNode *notElement : {text, a2}) {
        vrkDOMException re{}, reNS{};
        EXPECT_TRUE(!vrkElementReal_setAttributeNode(kCaller, 50, notElement, a1, &re) &&
                    !vrkElementReal_setAttributeNodeNS(kCaller, 51, notElement, a1, &reNS));
        expectRaised(re, ERR_HIERARCHY_REQUEST, 50);
        expectRaised(reNS, ERR_HIERARCHY_REQUEST, 51);
        EXPECT_TRUE(a1->parent == text && notElement->attributes.count == 0);
    }
    EXPECT_TRUE(!vrkElementReal_setAttributeNode(kCaller, 5, el, a1, &e) && !vrkElementReal_setAttributeNodeNS(kCaller, 6, el, ns1, &e));
    EXPECT_EQ(vrkElementReal_setAttributeNode(kCaller, 7, el, a2, &e), a1);
    EXPECT_EQ(vrkElementReal_setAttributeNodeNS(kCaller, 8, el, ns2, &e), ns1);
    EXPECT_EQ(e.code, 0);
    for (vrkNode *n : {a1, a2, ns1, ns2}) EXPECT_EQ(n->parent, el);  // the replaced ones too
    expectMap(el->attributes, {a2, ns2});
    for (vrkNode *n : {el, text, a1, ns1}) vrkDOM_destroyNode(n, 1);
}
