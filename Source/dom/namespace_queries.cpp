// Namespace-aware construction from a qualified name, and the questions a
// finished tree answers from the declarations that stand in it as attributes.
#include "dom/dom_exception.h"
#include "unistring/export.h"

namespace {

int32_t lengthOf(const Token &token) { return static_cast<int32_t>(token.end - token.start + 1); }

// Visits each attribute of node and of its ancestors, nearest first and in
// map order; the first attribute `answers` accepts gives the result, which
// `answer` takes from it (and which may be null).
template <class Answers, class Answer>
const UniChar *searchDeclarations(const vrkNode *node, Answers answers, Answer answer) {
    for (; node != nullptr; node = node->parent) {
        const vrkNode *attribute = node->attributes.first;
        for (int32_t i = 0; i < node->attributes.count && attribute != nullptr; ++i, attribute = attribute->next) {
            if (answers(attribute)) return answer(attribute);
        }
    }
    return nullptr;
}

bool declaresPrefix(const vrkNode *attribute) {
    return attribute->prefix != nullptr && vrkunistrcmp(attribute->prefix, UCSxmlns) == 0;
}

}  // namespace

VRK_EXPORT vrkNode *vrkDOMReal_createEANodeNS(const char *callerFile, int32_t callerLine, int32_t type,
                                              const UniChar *namespaceURI, int32_t uriLength,
                                              const UniChar *qualifiedName, int32_t qualifiedNameLength,
                                              vrkDOMException *exception) {
    if (vrk::exceptionPending(exception)) return nullptr;
    if (namespaceURI == nullptr) {
        VRK_RAISE(exception, ERR_NAMESPACE, callerFile, callerLine);
        return nullptr;
    }
    // The name productions read nothing of the context but these three.
    ProduceContext context{};
    context.textStart = context.cursor = const_cast<UniChar *>(qualifiedName);
    context.textEnd = context.textStart + qualifiedNameLength - 1;
    Token qualified, prefix, local;
    if (Produce_QName(&context, &qualified, &prefix, &local) != PRODUCE_OK || prefix.start == nullptr) {
        VRK_RAISE(exception, ERR_NAMESPACE, callerFile, callerLine);
        return nullptr;
    }
    vrkNode *node = vrkDOMReal_createEANodeNSP("Source/dom", __LINE__, type, namespaceURI, uriLength, prefix.start,
                                               lengthOf(prefix), local.start, lengthOf(local), exception);
    if (exception->code != 0) {
        exception->callerFile = callerFile;
        exception->callerLine = callerLine;
    }
    return node;
}

VRK_EXPORT const UniChar *vrkDOM_getDeclaredNameSpace(const vrkNode *node, int32_t acceptDefault,
                                                      const UniChar *prefix, int32_t prefixLength) {
    // xmlns folds case; the declared prefix compares exactly over
    // prefixLength units, with no comparison of lengths.
    return searchDeclarations(
        node,
        [&](const vrkNode *attribute) {
            return (acceptDefault != 0 && vrkunistrcmp(UCSxmlns, attribute->name) == 0) ||
                   (declaresPrefix(attribute) && prefix != nullptr &&
                    vrkunistrncmp(attribute->localName, prefix, prefixLength) == 0);
        },
        [](const vrkNode *attribute) -> const UniChar * { return attribute->value; });
}

VRK_EXPORT const UniChar *DOM_getDeclaredNameSpacePrefix(const vrkNode *node, const UniChar *uri) {
    // The answer is the declaration's own prefix field (the xmlns as
    // written), telling that a prefixed declaration of uri is in force.
    return searchDeclarations(
        node,
        [&](const vrkNode *attribute) {
            return declaresPrefix(attribute) && attribute->value != nullptr && vrkunistrcmp(attribute->value, uri) == 0;
        },
        [](const vrkNode *attribute) -> const UniChar * { return attribute->prefix; });
}
