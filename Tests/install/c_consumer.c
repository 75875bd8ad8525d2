/* A C program built against the installed library through pkg-config. */
#include <stdio.h>
#include <string.h>

#include <vrkxml.h>

int main(void) {
    char text[] = "<greeting lang='en'>hello</greeting>";
    vrkParseError error;
    vrkNode *document = vrkDOM_parse(text, &error);
    if (document == NULL) {
        printf("error %d at %d\n", error.code, error.offset);
        return 1;
    }
    char name[16];
    vrkUniCharStringToUTF8(vrkDOM_getDocumentElement(document)->name, name);
    vrkDOM_destroyNode(document, 1);
    printf("%s\n", name);
    return strcmp(name, "greeting") == 0 ? 0 : 1;
}
