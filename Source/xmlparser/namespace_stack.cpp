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
    record->nearestDefault = entry->prefix == nullptr ? entry : nullptr;
    record->replaceNext = 0;
    for (const NameSpaceStackEntry *&known : record->remembered) known = nullptr;
    if (entry->next != nullptr) {
        const vrk::StackRecord *below = vrk::recordOf(entry->next);
        if (entry->prefix != nullptr) record->nearestDefault = below->nearestDefault;
        record->replaceNext = below->replaceNext;
        for (int i = 0; i < vrk::StackRecord::kRemembered; ++i) {
            // This declaration hides an older one of the same prefix.
            const NameSpaceStackEntry *known = below->remembered[i];
            record->remembered[i] = vrk::declaresPrefix(known, entry->prefix, entry->prefixLength) ? entry : known;
        }
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
