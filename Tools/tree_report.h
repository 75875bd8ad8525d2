// The tool's two reports on a parsed tree: an indented outline, and counts.
#pragma once

#include <cstdio>

#include "vrkxml.h"

namespace vrktool {

// One line per node, indented by depth (two blanks a level; past 40 levels
// the depth is written as a number instead): elements with their
// attributes, text and CDATA sections quoted and cut at 60 characters,
// processing instructions.
void printOutline(const vrkNode *document, std::FILE *out);

struct TreeCounts {
    long long elements = 0, attributes = 0, texts = 0, cdataSections = 0, instructions = 0;
    long long maxDepth = 0;
};

TreeCounts countTree(const vrkNode *document);

}  // namespace vrktool
