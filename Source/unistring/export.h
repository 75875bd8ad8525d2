// Marks the definitions of the library's public names.
#pragma once

#include "vrkxml.h"

// The public header gives its declarations default visibility; everything
// else in the library is compiled hidden.  Exported definitions need C
// linkage to match those declarations.
#define VRK_EXPORT extern "C"
