#include <cstdlib>

#include "unistring/export.h"
#include "unistring/unit_access.h"

// Returns null when the allocation fails.
VRK_EXPORT UniChar *tokenToString(const Token *token) {
    const int32_t count = static_cast<int32_t>(token->end - token->start + 1);
    auto *copy = static_cast<UniChar *>(std::malloc(vrk::stringBytes(static_cast<std::size_t>(count))));
    if (copy == nullptr) return nullptr;
    vrkunistrncpy(copy, token->start, count);
    copy[count] = 0;
    return copy;
}
