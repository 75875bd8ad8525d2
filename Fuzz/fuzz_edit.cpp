// Tree editing driven by a byte program, checked by the model of the edit
// rules of the tests (Tests/support/edit_model.h).  Input: a mode byte, a
// two-byte little-endian length n, n bytes of document (as in fuzz_parse),
// then the program; or "G", S, SEED: a generated document of SEED edited by
// 16 * S steps of the generator's numbers from the same seed.
#include <algorithm>

#include "fuzz_support.h"
#include "support/edit_model.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    vrktest::captureIntegrityReports();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    if (const auto request = fuzz::generatedRequest(data, size)) {
        // In the form the seed picks: characters beyond 16 bits come as UTF-16.
        fuzz::Text text = fuzz::generatedText(request->seed);
        vrktest::Random random(request->seed);
        vrktest::EditProgram program{nullptr, 0, &random};
        vrkParseError error{};
        vrkNode *document = vrkDOM_parse(text.start, &error);
        if (document == nullptr) fuzz::fail("a generated document does not parse");
        vrktest::runEdits(document, program, 16 * static_cast<int>(request->count));
        return 0;
    }
    if (size < 3) return 0;
    const std::size_t length =
        std::min<std::size_t>(static_cast<std::size_t>(data[1] | data[2] << 8), size - 3);
    fuzz::Text text = fuzz::makeText(data[0], data + 3, length);
    vrkParseError error{};
    vrkNode *document = vrkDOM_parse(text.start, &error);
    vrkDOMException exception{};
    if (document == nullptr) document = vrkDOM_createDocument(&exception);
    vrktest::EditProgram program{data + 3 + length, size - 3 - length};
    vrktest::runEdits(document, program, 400);
    return 0;
}
