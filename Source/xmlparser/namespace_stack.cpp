// The stack of namespace declarations in scope during a parse.
#include <cstdlib>

#include "unistring/export.h"
#include "xmlparser/namespace_stack.h"

namespace {

// A token's length, or 0 for a token that stands for nothing (null start).
int32_t lengthOf(const Token *token) {
    return token->start == nullptr ? 0 : static_cast<int32_t>(token->end - token->start + 1);
}

}  // namespace

VRK_EXPORT int32_t pushNameSpaceStack(ProduceContext *context, const Token *prefix, const Token *uri) {
    auto *record = static_cast<vrk::StackRecord *>(std::malloc(sizeof(vrk::StackRecord)));
    if (record == nullptr) return 0;
    NameSpaceStackEntry *entry = &record->entry;
    entry->depth = context->depth;
    entry->prefix = prefix->start;
    entry->prefixLength = lengthOf(prefix);
    entry->uri = uri->start;
    entry->uriLength = lengthOf(uri);
    entry->next = context->nameSpaceStack;
    const vrk::StackRecord *below = entry->next == nullptr ? nullptr : vrk::recordOf(entry->next);
    record->nearestDefault = entry->prefix == nullptr ? entry : below == nullptr ? nullptr : below->nearestDefault;
    record->replaceNext = below == nullptr ? 0 : below->replaceNext;
    for (int i = 0; i < vrk::StackRecord::kRemembered; ++i) {
        const NameSpaceStackEntry *known = below == nullptr ? nullptr : below->remembered[i];
        // This declaration hides an older one of the same prefix.
        if (known != nullptr && entry->prefix != nullptr && known->prefixLength == entry->prefixLength &&
            vrkunistrncmp(known->prefix, entry->prefix, entry->prefixLength) == 0) {
            known = entry;
        }
        record->remembered[i] = known;
    }
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
