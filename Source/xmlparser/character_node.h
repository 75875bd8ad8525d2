// The text and CDATA section nodes the parser makes, the commonest nodes of
// a document: what vrkDOMReal_createTextNode (or
// vrkDOMReal_createCDATASection) and vrkNodeReal_appendChild do, in line.
#pragma once

#include "dom/child_append.h"
#include "dom/node_block.h"
#include "dom/node_names.h"
#include "xmlparser/parse_error.h"

namespace vrk {

// Makes a node of `type` (TEXT_NODE or CDATA_SECTION_NODE) with the `length`
// units at text as its value and appends it to current.  PRODUCE_ERROR when
// an error is pending (as the factory refuses then) or memory runs out;
// otherwise PRODUCE_OK, also when current refuses the child (which a caller
// of a production may arrange): the refusal is then recorded and the node
// destroyed.
inline int32_t appendCharacterNode(ProduceContext *context, int32_t type, const UniChar *text, int32_t length,
                                   int32_t line) {
    if (context->error.code != 0) return PRODUCE_ERROR;
    vrkNode *node = allocateNodeBlock(type, roomFor(length));
    if (node == nullptr) return recordNodeRefused(context, line);
    node->name = staticName(type == TEXT_NODE ? kTextNodeName : kCDATASectionNodeName);
    UniChar *room = roomOf(node);
    node->value = placeString(room, text, static_cast<std::size_t>(length));
    if (refusesChild(context->current, node)) {
        vrkNodeReal_appendChild("Source/xmlparser", line, context->current, node, treeException(context));
        vrkDOM_destroyNode(node, 0);
        return PRODUCE_OK;
    }
    linkLastChild(context->current, node);
    return PRODUCE_OK;
}

}  // namespace vrk
