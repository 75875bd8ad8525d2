// The stack of namespace declarations in scope during a parse.
#include <cstdlib>

#include "unistring/export.h"
#include "vrkxml.h"

namespace {

// A token's length, or 0 for a token that stands for nothing (null start).
int32_t lengthOf(const Token *token) {
    return token->start == nullptr ? 0 : static_cast<int32_t>(token->end - token->start + 1);
}

}  // namespace

VRK_EXPORT int32_t pushNameSpaceStack(ProduceContext *context, const Token *prefix, const Token *uri) {
    auto *entry = static_cast<NameSpaceStackEntry *>(std::malloc(sizeof(NameSpaceStackEntry)));
    if (entry == nullptr) return 0;
    entry->depth = context->depth;
    entry->prefix = prefix->start;
    entry->prefixLength = lengthOf(prefix);
    entry->uri = uri->start;
    entry->uriLength = lengthOf(uri);
    entry->next = context->nameSpaceStack;
    context->nameSpaceStack = entry;
    return 1;
}

VRK_EXPORT void popNameSpaceStack(ProduceContext *context) {
    while (context->nameSpaceStack != nullptr && context->nameSpaceStack->depth >= context->depth) {
        NameSpaceStackEntry *top = context->nameSpaceStack;
        context->nameSpaceStack = top->next;
        std::free(top);
    }
}
