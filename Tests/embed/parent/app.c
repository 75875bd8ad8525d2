/* The embedding project's program: parses a document through the library it
 * built as a subproject and prints the root's number of children. */
#include <stdio.h>

#include "vrkxml.h"

int main(void) {
    char text[] = "<r><a/><b/></r>";
    vrkParseError error;
    vrkNode *document = vrkDOM_parse(text, &error);
    if (document == NULL) {
        printf("error %d\n", (int)error.code);
        return 1;
    }
    printf("children %d\n", (int)vrkDOM_getNumberOfChildren(vrkDOM_getDocumentElement(document)));
    vrkDOM_destroyNode(document, 1);
    return 0;
}
