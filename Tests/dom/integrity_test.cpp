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

const std::string kFirst = "First child has a previous sibling\n";
const std::string kNotChild = "Not a child of parent\n";
const std::string kPrevious = "this->previous->next != this\n";
const std::string kNext = "this->next->previous != this\n";
const std::string kLast = "Parent's last child is not last\n";
const std::string kCycle = "Links form a cycle; walk stopped\n";

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

std::string internal(const vrkNode *parent, const vrkNode *firstChild) {
    testing::internal::CaptureStdout();
    DOM_checkIntegrityInternal(parent, firstChild);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(IntegrityCheck, MessagesInWalkOrder) {
    vrkNode n[8]{};
    vrkNode &root = n[0];
    vrkNode &a = n[1];
    vrkNode &b = n[2];
    vrkNode &c = n[3];
    vrkNode &d = n[4];
    vrkNode &e = n[5];
    vrkNode &stray = n[6];
    const auto fresh = [&] { std::fill(std::begin(n), std::end(n), vrkNode{}); };
    EXPECT_EQ(integrity(nullptr), "");
    // One line at most from the start node, and then no walk below it.
    adopt(root, {&a});
    a.parent = nullptr;
    root.parent = &stray;
    EXPECT_EQ(integrity(&root), "Root node has parent\n");
    root.parent = nullptr;
    root.previous = &stray;
    EXPECT_EQ(integrity(&root), "More than one root element (previous)\n");
    root.previous = nullptr;
    root.next = &stray;
    EXPECT_EQ(integrity(&root), "More than one root element (subsequent)\n");
    // b has two bad neighbours, and the walk goes on past c into d.
    fresh();
    adopt(root, {&a, &b, &c, &d});
    adopt(d, {&e});
    b.previous = &stray;
    c.previous = &stray;
    e.previous = &stray;
    EXPECT_EQ(integrity(&root), kNext + kPrevious + kNext + kPrevious + kFirst);
    // A deep node's lines, then its parent's last child, then the parent's own sibling links.
    fresh();
    adopt(root, {&a, &b});
    adopt(a, {&c});
    adopt(c, {&d});
    d.previous = &stray;
    a.lastChild = nullptr;
    b.previous = nullptr;
    EXPECT_EQ(integrity(&root), kFirst + kLast + kNext);
    // A nested list is left at a node of another parent; the level above goes on to b.
    fresh();
    adopt(root, {&a, &b});
    adopt(a, {&c, &d, &e});
    adopt(b, {&stray});
    d.parent = nullptr;
    stray.previous = &root;
    EXPECT_EQ(integrity(&root), kNotChild + kFirst);
    // The internal entry walks the list handed in and ends against the parent's lastChild.
    fresh();
    adopt(root, {&a});
    b.parent = &root;
    a.next = &stray;
    EXPECT_EQ(internal(&root, &b), kLast);
    EXPECT_EQ(internal(&b, nullptr), "");
    int result = -1;
    testing::internal::CaptureStdout();
    result = DebugPrint("%d-%s|%%\n", 42, "xy");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "42-xy|%\n");
    EXPECT_EQ(result, 8);
}

TEST(IntegrityCheck, CyclesStopTheWalkAndDepthNeedsNoStack) {
    vrkNode root{};
    vrkNode a{};
    vrkNode b{};
    adopt(root, {&a, &b});
    b.next = &a;  // back to a, whose previous (null) disagrees each round
    const std::string out = integrity(&root);
    ASSERT_TRUE(out.ends_with(kNext + kCycle)) << out;
    EXPECT_EQ(out.size() % kNext.size(), kCycle.size() % kNext.size()) << out;
    adopt(a, {&b});
    adopt(b, {&a});
    EXPECT_EQ(internal(&b, &a), kCycle) << "each node the parent of the other";
    constexpr std::size_t kDepth = 1'000'000;
    std::vector<vrkNode> chain(kDepth + 1);
    for (std::size_t i = 0; i < kDepth; ++i) adopt(chain[i], {&chain[i + 1]});
    chain[kDepth - 1].lastChild = nullptr;  // shows that the walk got to the bottom
    std::string deep;
    runOnSmallStack([&] { deep = integrity(&chain[0]); });
    EXPECT_EQ(deep, kLast);
}
