// The namespace stack and resolution as a caller that runs productions on a
// context of its own uses them (the parser may reach the same rules through
// paths of its own, so these exported entries are checked directly).
#include <string>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

// A context over `text`, whose units the pushed tokens point into.
struct Scope {
    Units text = units(u"p urn:p urn:d");
    ProduceContext context{};
    Scope() {
        context.textStart = context.cursor = text.data();
        context.textEnd = text.data() + text.size() - 2;
    }
    Token at(std::size_t first, std::size_t last) { return Token{&text[first], &text[last]}; }
    // Declares the prefix p, and with `withDefault` a default namespace too.
    void declare(bool withDefault) {
        const Token prefix = at(0, 0);
        const Token uri = at(2, 6);
        EXPECT_EQ(pushNameSpaceStack(&context, &prefix, &uri), 1);
        const Token none{nullptr, nullptr};
        const Token defaultUri = at(8, 12);
        if (withDefault) {
            EXPECT_EQ(pushNameSpaceStack(&context, &none, &defaultUri), 1);
        }
    }
    ~Scope() {
        context.depth = 0;
        popNameSpaceStack(&context);
    }
};

vrkNode *prefixed(int32_t type, std::u16string_view prefix) {
    const Units p = units(prefix);
    const Units local = units(u"e");
    vrkDOMException e{};
    return vrkDOMReal_createEANodeNSP(__FILE__, __LINE__, type, nullptr, 0, p.data(),
                                      static_cast<int32_t>(prefix.size()), local.data(), 1, &e);
}

vrkNode *plain(int32_t type) {
    const Units name = units(u"e");
    vrkDOMException e{};
    return vrkDOMReal_createEANode(__FILE__, __LINE__, type, name.data(), 1, &e);
}

// resolveNameSpace's result, the error code it left, and the node's fields.
std::string resolved(Scope &scope, vrkNode *node) {
    const int32_t result = resolveNameSpace(&scope.context, node);
    std::u16string fields = str(node->namespaceURI) + u"|" + str(node->localName);
    std::string text = std::to_string(result) + " error ";
    text += std::to_string(scope.context.error.code) + " ";
    for (char16_t unit : fields) text.push_back(static_cast<char>(unit));
    vrkDOM_destroyNode(node, 1);
    return text;
}

}  // namespace

TEST(NamespaceInternals, ResolveOnAContextGivenByACaller) {
    Scope scope;
    EXPECT_EQ(resolved(scope, plain(ELEMENT_NODE)), "0 error 0 |");  // nothing declared yet
    scope.declare(true);
    EXPECT_EQ(resolved(scope, prefixed(ELEMENT_NODE, u"p")), "1 error 0 urn:p|e");
    EXPECT_EQ(resolved(scope, prefixed(ATTRIBUTE_NODE, u"p")), "1 error 0 urn:p|e");
    // The local name is filled in; the default namespace is not for attributes.
    EXPECT_EQ(resolved(scope, plain(ELEMENT_NODE)), "1 error 0 urn:d|e");
    EXPECT_EQ(resolved(scope, plain(ATTRIBUTE_NODE)), "1 error 0 |");
    EXPECT_EQ(resolved(scope, prefixed(ELEMENT_NODE, u"xml")),
              "1 error 0 http://www.w3.org/XML/1998/namespace|e");
    EXPECT_EQ(resolved(scope, prefixed(ELEMENT_NODE, u"q")), "0 error 24 |e");
    EXPECT_EQ(scope.context.error.offset, 0);  // at the cursor
}

TEST(NamespaceInternals, LookupsAndRefusedAllocations) {
    Scope scope;
    scope.declare(false);
    Token out{};
    const Units p = units(u"p");
    const Units q = units(u"q");
    EXPECT_EQ(getNameSpaceURI(&scope.context, p.data(), &out), 1);
    EXPECT_EQ(str(out), u"urn:p");
    EXPECT_EQ(getNameSpaceURI(&scope.context, q.data(), &out), 0);
    EXPECT_EQ(getNameSpaceURI(&scope.context, nullptr, &out), 0);  // no default declared
    EXPECT_EQ(str(out), u"urn:p");                                 // untouched by a miss
    // Every allocation of a resolution refused in turn: the refusal is
    // recorded and the node still releases everything.
    EXPECT_GT(forEachAllocationFailure([&](const AllocationRun &run) {
                  vrkNode *node = prefixed(ELEMENT_NODE, u"p");
                  if (node == nullptr) return;
                  scope.context.error = vrkParseError{};
                  const std::string got = resolved(scope, node);
                  EXPECT_EQ(got, run.failed() ? "0 error 1 |e" : "1 error 0 urn:p|e");
              }),
              1);
}
