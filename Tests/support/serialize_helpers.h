// Serializing into a string, for tests.
#pragma once

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "vrkxml.h"

namespace vrktest {

// The whole output of vrkDOM_serialize as bytes; expects the result 1.
inline std::string serialized(const vrkNode *node, int32_t encoding) {
    std::string out;
    auto append = [](const void *bytes, uint32_t length, void *user) {
        static_cast<std::string *>(user)->append(static_cast<const char *>(bytes), length);
        return 0;
    };
    EXPECT_EQ(vrkDOM_serialize(node, encoding, append, &out), 1);
    return out;
}

// UTF-16 output bytes as units (machine order).
inline std::u16string unitsOf(const std::string &bytes) {
    std::u16string out(bytes.size() / 2, u'\0');
    std::memcpy(out.data(), bytes.data(), out.size() * 2);
    return out;
}

}  // namespace vrktest
