// Start tags and empty-element tags.
//
// The whole tag is read before any node is made: its name, then each
// attribute (declarations go on the namespace stack as they are read).
// Only then are the namespace names known, so each node is made at once in
// one block that holds all its strings, the namespace name included.  A
// tag that fails half-way leaves in the tree what reading it node by node
// would have left: the element with the attributes read so far, none with
// a namespace name.
#include "dom/attribute_placement.h"
#include "dom/child_append.h"
#include "dom/node_block.h"
#include "unistring/export.h"
#include "unistring/unit_access.h"
#include "xmlparser/literal.h"
#include "xmlparser/namespace_stack.h"
#include "xmlparser/parse_error.h"
#include "xmlparser/tag_attributes.h"

using vrk::loadUnit;

namespace {

constexpr vrk::Literal kEmptyTagEnd{u"/>"};

// The element's name as the tag gives it, and its namespace name.
struct ElementText {
    Token name;
    Token prefix;  // start null when the name has no prefix
    Token local;
    Token uri;     // start null for none
};

// The element of one block: its name; prefix and local part when it has a
// prefix; its namespace name, and then a local name (for an element without
// a prefix, the name again), when it has one.
vrkNode *makeElementNode(const ElementText &element) {
    const bool prefixed = element.prefix.start != nullptr;
    const bool namespaced = element.uri.start != nullptr;
    std::size_t units = vrk::tokenRoom(element.name);
    if (prefixed) units += vrk::tokenRoom(element.prefix) + vrk::tokenRoom(element.local);
    if (namespaced) units += vrk::tokenRoom(element.uri) + (prefixed ? 0 : vrk::tokenRoom(element.name));
    vrkNode *node = vrk::allocateNodeBlock(ELEMENT_NODE, units);
    if (node == nullptr) return nullptr;
    UniChar *room = vrk::roomOf(node);
    node->name = vrk::placeToken(room, element.name);
    if (prefixed) {
        node->prefix = vrk::placeToken(room, element.prefix);
        node->localName = vrk::placeToken(room, element.local);
    }
    if (namespaced) {
        if (!prefixed) node->localName = vrk::placeToken(room, element.name);
        node->namespaceURI = vrk::placeToken(room, element.uri);
    }
    return node;
}

// Makes the element and its attributes, hangs the element into the tree
// and makes it current.  PRODUCE_ERROR, with ERR_OUT_OF_MEMORY recorded
// unless an error is pending, when a block is refused; the nodes made so
// far stay in the tree.
int32_t makeNodes(ProduceContext *context, const ElementText &text, vrk::TagAttributes &attributes) {
    vrkNode *element = makeElementNode(text);
    if (element == nullptr) return vrk::recordNodeRefused(context, __LINE__);
    // The parent is the document, still without an element, or an element
    // (a caller of this production who breaks that gets the refusal).
    if (vrk::refusesChild(context->current, element)) {
        vrkNodeReal_appendChild(VRK_PARSER_SITE, context->current, element, vrk::treeException(context));
        vrkDOM_destroyNode(element, 0);
        return PRODUCE_ERROR;
    }
    vrk::linkLastChild(context->current, element);
    context->current = element;
    // Each name is new to the map by now: every attribute goes to its end.
    vrkNode *last = nullptr;
    for (int32_t i = 0; i < attributes.count(); ++i) {
        vrkNode *attribute = vrk::makeAttributeNode(attributes[i]);
        if (attribute == nullptr) return vrk::recordNodeRefused(context, __LINE__);
        attribute->parent = element;
        if (!vrk::placeFirstAttribute(&element->attributes, attribute)) {
            vrk::placeAttribute(&element->attributes, attribute, nullptr, last);
        }
        last = attribute;
    }
    return PRODUCE_OK;
}

// The namespace names of the element and its attributes, now that all the
// tag's declarations are on the stack.  False when a prefix is not declared.
bool resolveNamespaces(ProduceContext *context, ElementText &element, vrk::TagAttributes &attributes) {
    bool declared = true;
    const Token &prefix = element.prefix;
    if (!vrk::findNamespace(context, prefix.start, prefix.start ? vrk::tokenLength(prefix) : 0, &element.uri)) {
        element.uri.start = nullptr;
        declared = prefix.start == nullptr;  // no default namespace is no error
    }
    // Attributes without a prefix are in no namespace; those with one
    // often share it, so the last answer is kept.
    const Token *asked = nullptr;
    Token answer{};
    for (int32_t i = 0; i < attributes.count(); ++i) {
        vrk::AttributeText &attribute = attributes[i];
        const Token &name = attribute.prefix;
        if (name.start == nullptr) continue;
        const int32_t length = vrk::tokenLength(name);
        if (asked == nullptr || vrk::tokenLength(*asked) != length ||
            vrkunistrncmp(asked->start, name.start, length) != 0) {
            asked = &name;
            if (!vrk::findNamespace(context, name.start, length, &answer)) answer.start = nullptr;
        }
        attribute.uri = answer;
        if (answer.start == nullptr) declared = false;
    }
    return declared;
}

}  // namespace

VRK_EXPORT int32_t Produce_STagOREmptyElemTag(ProduceContext *context, Token *name, int32_t *hasContent) {
    UniChar *open = context->cursor;
    if (loadUnit(open) != '<') return PRODUCE_NO_MATCH;
    ++context->cursor;
    ElementText element{};
    if (Produce_QName(context, name, &element.prefix, &element.local) != PRODUCE_OK) {
        context->cursor = open;
        return PRODUCE_NO_MATCH;
    }
    element.name = *name;
    // A pending error refuses the element, as every factory does.
    if (context->error.code != 0) return PRODUCE_ERROR;

    // Attributes need no white space between them.
    vrk::TagAttributes attributes;
    for (;;) {
        Produce_S(context);
        vrk::AttributeText attribute;
        int32_t read = vrk::readAttribute(context, &attribute);
        if (read == PRODUCE_NO_MATCH) break;
        if (read == PRODUCE_OK) {
            const auto added = attributes.add(attribute);
            if (added == vrk::TagAttributes::Added::New) continue;
            read = added == vrk::TagAttributes::Added::Repeated
                       ? vrk::recordDuplicateAttribute(context)
                       : VRK_PARSE_ERROR(context, ERR_OUT_OF_MEMORY, context->cursor);
        }
        makeNodes(context, element, attributes);
        return PRODUCE_ERROR;
    }

    // A prefix without a declaration is recorded once the nodes stand, as
    // resolving them one by one would find it; the tag goes on.
    const bool declared = resolveNamespaces(context, element, attributes);
    if (makeNodes(context, element, attributes) != PRODUCE_OK) return PRODUCE_ERROR;
    if (!declared) VRK_PARSE_ERROR(context, ERR_UNDECLARED_PREFIX, context->cursor);

    if (vrk::startsWith(context->cursor, kEmptyTagEnd)) {
        popNameSpaceStack(context);
        *hasContent = 0;
        context->current = context->current->parent;
        context->cursor += kEmptyTagEnd.length;
        return PRODUCE_OK;
    }
    if (loadUnit(context->cursor) == '>') {
        *hasContent = 1;
        ++context->cursor;
        return PRODUCE_OK;
    }
    return VRK_PARSE_ERROR(context, ERR_TAG_END, context->cursor);
}
