// The attribute map's lookups: exact names, the two keys independent.
// Replacing and removing at each place are the edit model's (Fuzz/fuzz_edit).
#include "dom_test.h"

using namespace domtest;

namespace {

vrkNode *get(const vrkNamedNodeMap &map, std::u16string_view name) {
    return vrkNamedNodeMap_getNamedItem(&map, units(name).data(), len(name));
}
vrkNode *getNS(const vrkNamedNodeMap &map, std::u16string_view uri, std::u16string_view local) {
    return vrkNamedNodeMap_getNamedItemNS(&map, units(uri).data(), len(uri), units(local).data(),
                                          len(local));
}

}  // namespace

TEST(NamedNodeMap, LookupsAreExactAndKeysIndependent) {
    vrkNamedNodeMap map{};
    vrkNode *noUri = nsNode(ATTRIBUTE_NODE, nullptr, u"b", u"a");  // a local name, no namespace
    vrkNode *plain = attr(u"abc");
    vrkNode *pa = nsNode(ATTRIBUTE_NODE, u"urn:u", u"p", u"a");
    vrkNode *qa = nsNode(ATTRIBUTE_NODE, u"urn:u", u"q", u"a");
    for (vrkNode *n : {noUri, plain, pa, qa})
        EXPECT_EQ(vrkNamedNodeMap_setNamedItem(&map, n), nullptr);
    EXPECT_EQ(get(map, u"q:a"), qa);
    EXPECT_EQ(getNS(map, u"urn:u", u"a"), pa) << "the first of two under the NS key";
    for (auto name : {u"a", u"Q:A", u"ab", u"abcd"}) EXPECT_EQ(get(map, name), nullptr) << "name";
    const std::pair<const char16_t *, const char16_t *> misses[] = {
        {u"urn:", u"a"}, {u"urn:U", u"a"}, {u"urn:u", u"A"}, {u"urn:u", u"ab"}, {u"", u"a"}};
    for (auto [uri, local] : misses) EXPECT_EQ(getNS(map, uri, local), nullptr) << "NS key";
    // Under the NS key q:a replaces p:a in its place; nodes without that key never match.
    vrkNamedNodeMap nsMap{};
    vrkNode *x = attr(u"x");
    vrkNode *pa2 = nsNode(ATTRIBUTE_NODE, u"urn:u", u"p", u"a");
    vrkNode *qa2 = nsNode(ATTRIBUTE_NODE, u"urn:u", u"q", u"a");
    vrkNode *ba = nsNode(ATTRIBUTE_NODE, nullptr, u"b", u"a");
    for (vrkNode *n : {pa2, x, ba}) EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&nsMap, n), nullptr);
    EXPECT_EQ(vrkNamedNodeMap_setNamedItemNS(&nsMap, qa2), pa2);
    EXPECT_EQ(utf8(nsMap.first->name), "q:a") << "the replacement takes the first place";
    EXPECT_EQ(vrkNamedNodeMap_getLength(&nsMap), 3);
    for (vrkNode *n : {noUri, plain, pa, qa, x, ba, pa2, qa2}) vrkDOM_destroyNode(n, 0);
}
