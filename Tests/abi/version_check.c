/* The version macros agree with one another, with the version the build
 * gave the project (VRKXML_BUILD_VERSION) and with the shared library's file
 * name (argv[1], which ends in that version). */
#include <stdio.h>
#include <string.h>

#include "vrkxml.h"

int main(int argc, char **argv) {
    char numbers[40];
    const char *file = argc > 1 ? argv[1] : "";
    const size_t fileLength = strlen(file);
    const size_t versionLength = strlen(VRKXML_VERSION_STRING);
    int failed = 0;
    snprintf(numbers, sizeof numbers, "%d.%d.%d", VRKXML_VERSION_MAJOR, VRKXML_VERSION_MINOR,
             VRKXML_VERSION_PATCH);
    if (strcmp(numbers, VRKXML_VERSION_STRING) != 0) {
        printf("VRKXML_VERSION_STRING is %s, the three numbers say %s\n", VRKXML_VERSION_STRING,
               numbers);
        failed = 1;
    }
    if (strcmp(VRKXML_BUILD_VERSION, VRKXML_VERSION_STRING) != 0) {
        printf("the build's version is %s, the header's %s\n", VRKXML_BUILD_VERSION,
               VRKXML_VERSION_STRING);
        failed = 1;
    }
    if (fileLength < versionLength ||
        strcmp(file + fileLength - versionLength, VRKXML_VERSION_STRING) != 0) {
        printf("the shared library is %s, the header's version %s\n", file, VRKXML_VERSION_STRING);
        failed = 1;
    }
    if (!failed) printf("version %s\n", VRKXML_VERSION_STRING);
    return failed;
}
