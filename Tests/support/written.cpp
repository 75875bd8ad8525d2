#include "support/written.h"

namespace vrktest {

std::string written(const vrkNode *node, int32_t encoding, int32_t *result) {
    std::string out;
    const auto append = [](const void *bytes, uint32_t length, void *user) {
        static_cast<std::string *>(user)->append(static_cast<const char *>(bytes), length);
        return 0;
    };
    const int32_t done = vrkDOM_serialize(node, encoding, append, &out);
    if (result != nullptr) *result = done;
    return out;
}

}  // namespace vrktest
