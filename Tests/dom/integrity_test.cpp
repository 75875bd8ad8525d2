// The integrity check: which lines a broken tree prints, in which order, and
// that the walk ends on trees of any depth and on links that go in a circle.
// The broken trees are zeroed records on the stack, linked by hand.

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/small_stack.h"
#include "support/parse_helpers.h"

using namespace vrktest;

namespace {

const std::string kFirst = "First child has a previous sibling\n", kNotChild = "Not a child of parent\n",
                  kPrevious = "this->previous->next != this\n", kNext = "this->next->previous != this\n",
                  kLast = "Parent's last child is not last\n", kCycle = "Links form a cycle; walk stopped\n";

// Makes children the sound child list of parent.
void adopt(vrkNode &parent, std::initializer_list<vrkNode *> children) {
    vrkNode *previous = nullptr;
    for (vrkNode *child : children) {
        child->parent = &parent;
        child->previous = previous;
        child->next = nullptr;
        (previous != nullptr ? previous->next : parent.firstChild) = child;
        previous = child;
    }
    parent.lastChild = previous;
}

std::string printed(const std::function<void()> &action) {
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string checked(const vrkNode *node) {
    return printed([&] { DOM_checkIntegrity(node); });
}

}  // namespace

TEST(IntegrityCheck, SoundTreesAndTheStartNode) {
    Parsed parsed = parseUtf8("<?a x?><r p='1' q='2'><x>t<![CDATA[c]]><y/>u</x><z/>v</r><?b?>");
    ASSERT_NE(parsed.document, nullptr) << parsed.error.code;
    EXPECT_EQ(checked(parsed.document.get()), "");
    EXPECT_EQ(checked(nullptr), "");

    vrkNode root{}, a{}, stray{};
    root.lastChild = &stray;  // an empty list: lastChild is not looked at
    EXPECT_EQ(checked(&root), "");
    // One line at most from the start node, and then no walk below it.
    adopt(root, {&a});
    a.parent = nullptr;
    root.parent = root.next = &stray;
    EXPECT_EQ(checked(&root), "Root node has parent\n");
    root.parent = nullptr;
    root.previous = &stray;
    EXPECT_EQ(checked(&root), "More than one root element (previous)\n");
    root.previous = nullptr;
    EXPECT_EQ(checked(&root), "More than one root element (subsequent)\n");
}

TEST(IntegrityCheck, ListMessagesInWalkOrder) {
    vrkNode root{}, a{}, b{}, c{}, d{}, e{}, stray{};
    const auto clear = [&] {
        for (vrkNode *node : {&root, &a, &b, &c, &d, &e, &stray}) *node = vrkNode{};
    };
    adopt(root, {&a, &b, &c});
    b.previous = nullptr;  // broken on one side only
    EXPECT_EQ(checked(&root), kNext);
    b.previous = &a;
    root.lastChild = &b;
    EXPECT_EQ(checked(&root), kLast);

    // b has two bad neighbours, and the walk goes on past c into d.
    clear();
    adopt(root, {&a, &b, &c, &d});
    adopt(d, {&e});
    b.previous = c.previous = e.previous = &stray;
    EXPECT_EQ(checked(&root), kNext + kPrevious + kNext + kPrevious + kFirst);

    // A deep node's lines, then its parent's last child, then the parent's
    // own sibling links.
    clear();
    adopt(root, {&a, &b});
    adopt(a, {&c});
    adopt(c, {&d});
    d.previous = &stray;
    a.lastChild = nullptr;
    b.previous = nullptr;
    EXPECT_EQ(checked(&root), kFirst + kLast + kNext);

    // A nested list left at its second node, without its last child being
    // compared and without its third node; the level above goes on to b.
    clear();
    adopt(root, {&a, &b});
    adopt(a, {&c, &d, &e});
    adopt(b, {&stray});
    d.parent = nullptr;
    e.next = &root;
    stray.previous = &root;
    EXPECT_EQ(checked(&root), kNotChild + kFirst);
}

TEST(IntegrityCheck, InternalEntryAndDebugPrint) {
    vrkNode p{}, a{}, b{}, stray{};
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&p, nullptr); }), "");
    adopt(p, {&a});
    p.parent = p.next = &stray;  // the start node's own links are not checked here
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&p, &a); }), "");
    // The list handed in is walked, not p's, and ends against p's lastChild.
    b.parent = &p;
    a.next = &stray;
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&p, &b); }), kLast);

    int result = -1;
    EXPECT_EQ(printed([&] { result = DebugPrint("%d-%s|%%\n", 42, "xy"); }), "42-xy|%\n");
    EXPECT_EQ(result, 8);
}

TEST(IntegrityCheck, MillionLevelsOnASmallStack) {
    constexpr std::size_t kDepth = 1'000'000;
    std::vector<vrkNode> chain(kDepth + 1);
    for (std::size_t i = 0; i < kDepth; ++i) adopt(chain[i], {&chain[i + 1]});
    std::vector<std::string> outputs;
    std::function<void()> work = [&] {
        outputs.push_back(checked(&chain[0]));
        chain[kDepth - 1].lastChild = nullptr;  // shows that the walk got to the bottom
        outputs.push_back(checked(&chain[0]));
    };
    runOnSmallStack(work);
    EXPECT_EQ(outputs, (std::vector<std::string>{"", kLast}));
}

TEST(IntegrityCheck, CyclesStopTheWalk) {
    // b's next leads back to a, whose previous (null) disagrees each round.
    vrkNode root{}, a{}, b{}, c{}, p{}, q{}, g{}, stray{};
    adopt(root, {&a, &b});
    b.next = &a;
    std::string out = checked(&root);
    ASSERT_TRUE(out.ends_with(kNext + kCycle)) << out;
    for (std::size_t at = 0; at + kCycle.size() < out.size(); at += kNext.size()) EXPECT_EQ(out.substr(at, kNext.size()), kNext);

    // b and c lead to each other with agreeing links, in a nested list: the
    // walk stops there and never reaches q's broken list.
    adopt(root, {&p, &q});
    adopt(p, {&a, &b, &c});
    adopt(q, {&g});
    g.previous = &stray;
    c.next = &b;
    b.previous = &c;
    EXPECT_EQ(checked(&root), kNext + kCycle);

    // Through firstChild, each node the parent of the other; and a node its own child.
    adopt(a, {&b});
    adopt(b, {&a});
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&b, &a); }), kCycle);
    adopt(a, {&a});
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&a, &a); }), kCycle);
}

// Disabled until the cycle guard tells a node met again in another list from
// a circle: it remembers node and step only, and prints the cycle line here
// in place of the one expected.
TEST(IntegrityCheck, NodeInTwoListsIsNoCycle) {
    // c is listed under g and again under b, where its parent link disagrees.
    vrkNode root{}, a{}, b{}, g{}, c{};
    adopt(root, {&a, &b});
    adopt(a, {&g});
    adopt(g, {&c});
    b.firstChild = b.lastChild = &c;
    EXPECT_EQ(checked(&root), kNotChild);
}
