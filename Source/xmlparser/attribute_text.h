// An attribute of a start tag as its text gives it: read first, made into a
// node of one block once the whole tag (and so its namespaces) is known.
#pragma once

#include "vrkxml.h"
#include "xmlparser/token.h"

namespace vrk {

struct AttributeText {
    Token name;             // the qualified name as written
    Token prefix;           // start null when the name has no prefix
    Token local;            // the local part, or the whole name
    Token value;            // the raw text between the quotes
    int32_t resolvedLength; // units of the value once its references are resolved
    Token uri;              // the namespace name; start null for none
};

// Produce_AttValue, also counting the units of the value once its
// references are resolved.
int32_t readAttValue(ProduceContext *context, Token *value, int32_t *resolvedLength);

// Copies the value behind `room` with its references resolved (it must be
// one that readAttValue accepted, `resolvedLength` being its count) and a
// terminator; moves `room` behind them and returns where the value begins.
UniChar *placeResolvedValue(UniChar *&room, const Token &value, int32_t resolvedLength);

// The steps of Produce_Attribute that read the text: the name, =, the value,
// and the push of a namespace declaration.  PRODUCE_OK, PRODUCE_NO_MATCH
// or PRODUCE_ERROR as that production gives them; `uri` is left empty.
int32_t readAttribute(ProduceContext *context, AttributeText *attribute);

// The attribute node of one block: name, prefix and local part, namespace
// name (none when attribute.uri.start is null) and resolved value.  Null
// when memory runs out; nothing is recorded.
vrkNode *makeAttributeNode(const AttributeText &attribute);

// ERR_DUPLICATE_ATTRIBUTE, with its message, at the cursor (behind the
// second attribute of the name).  PRODUCE_ERROR.
int32_t recordDuplicateAttribute(ProduceContext *context);

}  // namespace vrk
