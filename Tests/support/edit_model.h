// The model of the edit rules: a byte program picks tree operations and
// their nodes, and each outcome is checked against the documented rules
// (which code a refusal raises, what a result is, where nodes end up);
// after every step the integrity check must print nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "support/random.h"
#include "vrkxml.h"

namespace vrktest {

// The bytes that drive the steps: a program read in order, then, when a
// random source is given, its numbers without end.
struct EditProgram {
    const uint8_t *bytes = nullptr;
    std::size_t size = 0;
    Random *random = nullptr;
    std::size_t at = 0;

    bool done() const { return random == nullptr && at >= size; }
    uint8_t next() {
        if (at < size) return bytes[at++];
        return random != nullptr ? static_cast<uint8_t>(random->below(256)) : 0;
    }
};

// Sends standard output, where the integrity check prints, to an empty
// file that the steps then read.  Call once before runEdits.
void captureIntegrityReports();

// Runs at most `steps` steps of `program` on `document`, which it takes
// over and releases with every node made on the way.  The harness keeps to
// the documented limits: nodes are inserted only when detached and never
// into their own subtree, attributes stay out of child lists, a node leaves
// the tree before it is destroyed, and a refusal is cleared before the next
// step.  Aborts with a message on the first rule broken.
void runEdits(vrkNode *document, EditProgram &program, int steps);

}  // namespace vrktest
