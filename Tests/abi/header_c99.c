/* The public header as a strict C99 program sees it, used through the
 * shared library. */
#include <stdio.h>
#include <stdlib.h>

#include "vrkxml.h"

int main(void) {
    char text[] = "<doc/>";
    vrkParseError error;
    vrkDOMException exception = {0, NULL, 0, NULL, 0};
    vrkNode *document = vrkDOM_parse(text, &error);
    vrkNode *made = vrkDOMReal_createDocument(__FILE__, __LINE__, &exception);
    int ok = made != NULL && exception.code == 0 && vrkDOM_getNumberOfChildren(made) == 0;
    vrkDOM_destroyNode(made, 1);
    if (document != NULL) vrkDOM_destroyNode(document, 1);
    else ok = ok && error.code != 0 && error.file != NULL;
    printf("%s\n", ok ? "ok" : "FAILED");
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
