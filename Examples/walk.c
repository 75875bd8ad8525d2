/*
 * walk: parses an XML file (or a small built-in text when no file is given)
 * and prints the name of every element, indented by its depth.
 *
 *   walk [file.xml]
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vrkxml.h"

static const char builtIn[] =
    "<?xml version=\"1.0\"?>\n"
    "<library>\n"
    "  <shelf n=\"1\"><book/><book/></shelf>\n"
    "  <shelf n=\"2\"><box><book/></box></shelf>\n"
    "</library>\n";

/* Reads the whole file into a new block with three zero bytes behind it:
 * enough to end UTF-8 text and UTF-16 text of either length parity. */
static char *readFile(const char *path) {
    FILE *file = fopen(path, "rb");
    char *text = NULL;
    size_t used = 0, capacity = 0;
    if (file == NULL) {
        return NULL;
    }
    for (;;) {
        size_t got;
        if (capacity - used < 4096 + 3) {
            size_t grown = capacity ? capacity * 2 : 8192;
            char *bigger = (char *)realloc(text, grown);
            if (bigger == NULL) {
                free(text);
                fclose(file);
                return NULL;
            }
            text = bigger;
            capacity = grown;
        }
        got = fread(text + used, 1, 4096, file);
        used += got;
        if (got < 4096) {
            break;
        }
    }
    if (ferror(file)) {
        free(text);
        fclose(file);
        return NULL;
    }
    fclose(file);
    text[used] = text[used + 1] = text[used + 2] = '\0';
    return text;
}

/* Prints one element name, its units written as UTF-8. */
static void printName(const vrkNode *element, int depth) {
    char *utf8 = vrkUniCharStringToUTF8(element->name, NULL);
    printf("%*s%s\n", depth * 2, "", utf8 ? utf8 : "?");
    free(utf8);
}

/* Walks the elements below node in document order without recursion,
 * climbing back through the parent links. */
static int walk(const vrkNode *top) {
    const vrkNode *node = top->firstChild;
    int depth = 0, count = 0;
    while (node != NULL) {
        if (node->type == ELEMENT_NODE) {
            printName(node, depth);
            ++count;
            if (node->firstChild != NULL) {
                node = node->firstChild;
                ++depth;
                continue;
            }
        }
        while (node != NULL && node->next == NULL) {
            node = node->parent;
            --depth;
            if (node == top) {
                node = NULL;
            }
        }
        if (node != NULL) {
            node = node->next;
        }
    }
    return count;
}

int main(int argc, char **argv) {
    vrkParseError error = {0, NULL, 0, NULL, 0, 0, NULL};
    vrkNode *document;
    char *text;
    int count;

    if (argc > 2) {
        fprintf(stderr, "usage: %s [file.xml]\n", argv[0]);
        return 2;
    }
    if (argc == 2) {
        text = readFile(argv[1]);
        if (text == NULL) {
            fprintf(stderr, "%s: cannot read %s\n", argv[0], argv[1]);
            return 1;
        }
    } else {
        text = (char *)malloc(sizeof builtIn + 2);
        if (text == NULL) {
            return 1;
        }
        memcpy(text, builtIn, sizeof builtIn);
        text[sizeof builtIn] = text[sizeof builtIn + 1] = '\0';
    }

    document = vrkDOM_parse(text, &error);
    free(text);
    if (document == NULL) {
        fprintf(stderr, "parse failed at unit %d: %s (code %d)\n", (int)error.offset,
                error.message ? error.message : "error", (int)error.code);
        return 1;
    }
    count = walk(document);
    printf("%d elements\n", count);
    vrkDOM_destroyNode(document, 1);
    return 0;
}
