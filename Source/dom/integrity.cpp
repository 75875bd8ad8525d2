// A diagnostic walk that prints a line on standard output for each broken
// link of the child lists in a tree.
#include <cstdarg>
#include <cstdio>

#include "unistring/export.h"

namespace {

// The walk is a loop over these steps, not a recursion, so that a tree of
// any depth is checked.  Each step is a node with what is to be done at it.
enum class Step {
    EnterList,     // node: the parent whose child list begins now
    CheckNode,     // node: a member of the list of `listParent`
    AfterSubtree,  // node: a member whose subtree has been checked
};

// Brent's cycle detection over the walk's states.  A state (the node, the
// step and the list's parent) decides every step after it, and a sound tree
// never comes to the same state twice; meeting a remembered one means the
// links go round in a circle and the walk would never end.
class CycleGuard {
public:
    bool repeats(const vrkNode *node, Step step, const vrkNode *listParent) {
        if (node == savedNode_ && step == savedStep_ && listParent == savedListParent_) return true;
        if (++taken_ == limit_) {
            savedNode_ = node;
            savedStep_ = step;
            savedListParent_ = listParent;
            taken_ = 0;
            limit_ *= 2;
        }
        return false;
    }

private:
    const vrkNode *savedNode_ = nullptr;
    Step savedStep_ = Step::EnterList;
    const vrkNode *savedListParent_ = nullptr;
    uint64_t taken_ = 0;
    uint64_t limit_ = 2;
};

}  // namespace

VRK_EXPORT int DebugPrint(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = std::vfprintf(stdout, format, arguments);
    va_end(arguments);
    return result;
}

VRK_EXPORT void DOM_checkIntegrityInternal(const vrkNode *parent, const vrkNode *firstChild) {
    if (firstChild == nullptr) return;
    // A list is finished by going back up to its parent: every member was
    // checked to name that parent before its subtree was entered.
    const vrkNode *top = parent;
    const vrkNode *listParent = parent;
    const vrkNode *node = parent;
    const vrkNode *last = nullptr;
    Step step = Step::EnterList;
    CycleGuard guard;
    for (;;) {
        if (guard.repeats(node, step, listParent)) {
            DebugPrint("Links form a cycle; walk stopped\n");
            return;
        }
        bool listEnds = false;
        bool checkLast = false;
        switch (step) {
        case Step::EnterList: {
            const vrkNode *first = node == top ? firstChild : node->firstChild;
            listParent = node;
            if (first == nullptr) {
                listEnds = true;
            } else if (first->previous != nullptr) {
                DebugPrint("First child has a previous sibling\n");
                listEnds = true;
            } else {
                node = first;
                step = Step::CheckNode;
            }
            break;
        }
        case Step::CheckNode:
            if (node->parent != listParent) {
                DebugPrint("Not a child of parent\n");
                listEnds = true;
            } else {
                step = Step::EnterList;  // the subtree comes before the node's own sibling links
            }
            break;
        case Step::AfterSubtree:
            if (node->previous != nullptr && node->previous->next != node) {
                DebugPrint("this->previous->next != this\n");
            }
            if (node->next != nullptr && node->next->previous != node) {
                DebugPrint("this->next->previous != this\n");
            }
            last = node;
            if (node->next != nullptr) {
                node = node->next;
                step = Step::CheckNode;
            } else {
                listEnds = true;
                checkLast = true;
            }
            break;
        }
        if (!listEnds) continue;
        if (checkLast && listParent->lastChild != last) DebugPrint("Parent's last child is not last\n");
        if (listParent == top) return;
        // Back up: the list's parent is a member of its own parent's list.
        node = listParent;
        listParent = node->parent;
        step = Step::AfterSubtree;
    }
}

VRK_EXPORT void DOM_checkIntegrity(const vrkNode *node) {
    if (node == nullptr) return;
    if (node->parent != nullptr) {
        DebugPrint("Root node has parent\n");
    } else if (node->previous != nullptr) {
        DebugPrint("More than one root element (previous)\n");
    } else if (node->next != nullptr) {
        DebugPrint("More than one root element (subsequent)\n");
    } else {
        DOM_checkIntegrityInternal(node, node->firstChild);
    }
}
