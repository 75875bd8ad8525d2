#include "dom/node_names.h"

namespace vrk {

const UniChar kTextNodeName[] = {'#', 't', 'e', 'x', 't', 0};
const UniChar kCDATASectionNodeName[] = {'#', 'c', 'd', 'a', 't', 'a', '-', 's',
                                         'e', 'c', 't', 'i', 'o', 'n', 0};
const UniChar kDocumentNodeName[] = {'#', 'd', 'o', 'c', 'u', 'm', 'e', 'n', 't', 0};

}  // namespace vrk
