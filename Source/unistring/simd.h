// Whether the SSE2 paths are compiled: where the target has SSE2, unless the
// build asks for the portable loops alone (VRKXML_NO_SIMD, from the CMake
// option VRKXML_SIMD=OFF), which is how the test suite covers those loops
// over whole texts and not only over the short tails the vector loops leave.
#pragma once

#if defined(__SSE2__) && !defined(VRKXML_NO_SIMD)
#define VRKXML_SSE2 1
#else
#define VRKXML_SSE2 0
#endif
