/* The public header as a strict C99 program sees it, used through the
 * shared library. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vrkxml.h"

int main(void) {
    char text[] = "<doc/>";
    vrkParseError error;
    vrkDOMException exception = {0, NULL, 0, NULL, 0};
    vrkNode *document = vrkDOM_parse(text, &error);
    vrkNode *made = vrkDOM_createDocument(&exception);
    const UniChar name[] = {'r'};
    vrkNode *root = vrkDOM_createEANode(ELEMENT_NODE, name, 1, &exception);
    int ok = made != NULL && root != NULL && vrkNode_appendChild(made, root, &exception) == root &&
             exception.code == 0 && vrkDOM_getNumberOfChildren(made) == 1;
    /* A refusal through a convenience names this file and line. */
    vrkNode_appendChild(root, made, &exception);
    ok = ok && exception.code == ERR_HIERARCHY_REQUEST &&
         strcmp(exception.callerFile, __FILE__) == 0 &&
         exception.callerLine == __LINE__ - 3;
    vrkDOM_destroyNode(made, 1);
    if (document != NULL) vrkDOM_destroyNode(document, 1);
    else ok = ok && error.code != 0 && error.file != NULL;
    printf("%s\n", ok ? "ok" : "FAILED");
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
