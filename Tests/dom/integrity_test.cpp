// The integrity check: which lines a broken tree prints, in which order, and
// that the walk ends on trees of any depth and on links that go in a circle.
// The broken trees are zeroed records linked by hand.
#include <functional>
#include <initializer_list>
#include <vector>

#include "dom_test.h"
#include "support/small_stack.h"

using namespace domtest;

namespace {

const std::string kFirst = "First child has a previous sibling\n", kNotChild = "Not a child of parent\n",
                  kPrevious = "this->previous->next != this\n", kNext = "this->next->previous != this\n",
                  kLast = "Parent's last child is not last\n", kCycle = "Links form a cycle; walk stopped\n";

// Makes children the sound child list of parent.
void adopt(vrkNode &parent, std::initializer_list<vrkNode *> children) {
    vrkNode *previous = nullptr;
    for (vrkNode *child : children) {
        child->parent = &parent, child->previous = previous, child->next = nullptr;
        (previous != nullptr ? previous->next : parent.firstChild) = child;
        previous = child;
    }
    parent.lastChild = previous;
}

std::string printed(const std::function<void()> &action) {
    testing::internal::CaptureStdout();
    action(), std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(IntegrityCheck, MessagesInWalkOrder) {
    Parsed parsed = parseUtf8("<?a x?><r p='1' q='2'><x>t<![CDATA[c]]><y/>u</x><z/>v</r><?b?>");
    EXPECT_EQ(integrity(parsed.document.get()) + integrity(nullptr), "");
    vrkNode n[8]{};
    vrkNode &root = n[0], &a = n[1], &b = n[2], &c = n[3], &d = n[4], &e = n[5], &stray = n[6];
    const auto fresh = [&] { for (vrkNode &x : n) x = vrkNode{}; };
    root.lastChild = &stray;  // an empty list: lastChild is not looked at
    EXPECT_EQ(integrity(&root), "");
    // One line at most from the start node, and then no walk below it.
    adopt(root, {&a});
    a.parent = nullptr;
    root.parent = root.next = &stray;
    EXPECT_EQ(integrity(&root), "Root node has parent\n");
    root.parent = nullptr, root.previous = &stray;
    const std::string previous = integrity(&root);
    root.previous = nullptr;
    EXPECT_EQ(previous + integrity(&root), "More than one root element (previous)\nMore than one root element (subsequent)\n");

    fresh(), adopt(root, {&a, &b, &c}), b.previous = nullptr;  // broken on one side only
    EXPECT_EQ(integrity(&root), kNext);
    b.previous = &a, root.lastChild = &b;
    EXPECT_EQ(integrity(&root), kLast);
    // b has two bad neighbours, and the walk goes on past c into d.
    fresh(), adopt(root, {&a, &b, &c, &d}), adopt(d, {&e});
    b.previous = c.previous = e.previous = &stray;
    EXPECT_EQ(integrity(&root), kNext + kPrevious + kNext + kPrevious + kFirst);
    // A deep node's lines, then its parent's last child, then the parent's own sibling links.
    fresh(), adopt(root, {&a, &b}), adopt(a, {&c}), adopt(c, {&d});
    d.previous = &stray, a.lastChild = nullptr, b.previous = nullptr;
    EXPECT_EQ(integrity(&root), kFirst + kLast + kNext);
    // A nested list left at its second node, without its last child being
    // compared and without its third node; the level above goes on to b.
    fresh(), adopt(root, {&a, &b}), adopt(a, {&c, &d, &e}), adopt(b, {&stray});
    d.parent = nullptr, e.next = &root, stray.previous = &root;
    EXPECT_EQ(integrity(&root), kNotChild + kFirst);
    // Regression: a node met again in another list is no cycle (c under g and under b).
    fresh(), adopt(root, {&a, &b}), adopt(a, {&n[7]}), adopt(n[7], {&c});
    b.firstChild = b.lastChild = &c;
    EXPECT_EQ(integrity(&root), kNotChild);

    // The internal entry walks the list handed in, not p's, and ends against p's lastChild.
    fresh(), adopt(root, {&a});
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&b, nullptr); }), "");
    root.parent = root.next = &stray;  // the start node's own links are not checked here
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&root, &a); }), "");
    b.parent = &root, a.next = &stray;
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&root, &b); }), kLast);
    int result = -1;
    EXPECT_EQ(printed([&] { result = DebugPrint("%d-%s|%%\n", 42, "xy"); }), "42-xy|%\n");
    EXPECT_EQ(result, 8);
}

TEST(IntegrityCheck, CyclesStopTheWalkAndDepthNeedsNoStack) {
    vrkNode root{}, a{}, b{}, c{}, p{}, q{}, g{}, stray{};
    adopt(root, {&a, &b});
    b.next = &a;  // back to a, whose previous (null) disagrees each round
    const std::string out = integrity(&root);
    ASSERT_TRUE(out.ends_with(kNext + kCycle)) << out;
    for (std::size_t at = 0; at + kCycle.size() < out.size(); at += kNext.size()) EXPECT_EQ(out.substr(at, kNext.size()), kNext);
    // b and c lead to each other with agreeing links: the walk stops there
    // and never reaches q's broken list.
    adopt(root, {&p, &q}), adopt(p, {&a, &b, &c}), adopt(q, {&g});
    g.previous = &stray, c.next = &b, b.previous = &c;
    EXPECT_EQ(integrity(&root), kNext + kCycle);
    // Through firstChild, each node the parent of the other; and a node its own child.
    adopt(a, {&b}), adopt(b, {&a});
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&b, &a); }), kCycle);
    adopt(a, {&a});
    EXPECT_EQ(printed([&] { DOM_checkIntegrityInternal(&a, &a); }), kCycle);

    constexpr std::size_t kDepth = 1'000'000;
    std::vector<vrkNode> chain(kDepth + 1);
    for (std::size_t i = 0; i < kDepth; ++i) adopt(chain[i], {&chain[i + 1]});
    std::string outputs;
    runOnSmallStack([&] {
        outputs = integrity(&chain[0]) + "|";
        chain[kDepth - 1].lastChild = nullptr;  // shows that the walk got to the bottom
        outputs += integrity(&chain[0]);
    });
    EXPECT_EQ(outputs, "|" + kLast);
}
