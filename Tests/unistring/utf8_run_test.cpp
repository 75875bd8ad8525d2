// The run encoder of the serializer, and its scratch buffer, against the
// unit-by-unit form: runs that mix ASCII blocks with longer forms at every
// position, from odd addresses too.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "dom/serialize_buffer.h"
#include "support/alloc_fault.h"
#include "unistring/utf8_fast.h"

namespace {

std::string oneByOne(const std::vector<UniChar> &units) {
    std::string out;
    for (UniChar unit : units) {
        char bytes[4];
        out.append(bytes, static_cast<std::size_t>(vrkUniCharToUTF8(unit, bytes)));
    }
    return out;
}

}  // namespace

TEST(Utf8Run, MixedRunsEncodeAsUnitByUnitAtEveryLengthAndPosition) {
    const UniChar others[] = {0x00E9, 0x07FF, 0x0800, 0x20AC, 0xD800, 0xDFFF, 0xFFFF};
    for (int length = 0; length <= 40; ++length) {
        for (int at = -1; at < length; ++at) {
            std::vector<UniChar> units(static_cast<std::size_t>(length));
            for (int i = 0; i < length; ++i) units[static_cast<std::size_t>(i)] = static_cast<UniChar>('a' + i % 26);
            if (at >= 0) units[static_cast<std::size_t>(at)] = others[(length + at) % 7];
            const std::string expected = oneByOne(units);
            // Unaligned: one byte into a buffer of units.
            std::vector<char> raw(units.size() * 2 + 1);
            if (!units.empty()) std::memcpy(raw.data() + 1, units.data(), units.size() * 2);
            const auto *odd = reinterpret_cast<const UniChar *>(raw.data() + 1);
            for (const UniChar *s : {static_cast<const UniChar *>(units.data()), odd}) {
                EXPECT_EQ(vrk::utf8BytesOfRun(s, length), static_cast<int64_t>(expected.size()));
                std::vector<char> out(expected.size() + 2, '#');
                const char *end = vrk::encodeRun(s, length, out.data());
                ASSERT_EQ(end - out.data(), static_cast<std::ptrdiff_t>(expected.size())) << length << " " << at;
                EXPECT_EQ(std::string(out.data(), expected.size()), expected);
                EXPECT_EQ(out[expected.size()], '\0');
            }
        }
    }
}

TEST(Utf8Run, BufferGrowsOnlyForAPieceLongerThanItHolds) {
    SerializeBuffer buffer{static_cast<char *>(std::malloc(9)), 8};
    const std::vector<UniChar> euro(3, 0x20AC);  // 9 bytes; 3 units might need 9, more than 8
    const std::vector<UniChar> ascii(8, 'x');
    EXPECT_EQ(vrktest::countAllocations([&] {
                  EXPECT_EQ(vrk::SerializeBuffer_convert(&buffer, ascii.data(), 2), 2);
                  EXPECT_EQ(vrk::SerializeBuffer_convert(&buffer, ascii.data(), 8), 8);
              }),
              0);
    EXPECT_EQ(vrktest::countAllocations([&] { EXPECT_EQ(vrk::SerializeBuffer_convert(&buffer, euro.data(), 3), 9); }), 1);
    EXPECT_EQ(buffer.capacity, 9);
    EXPECT_EQ(std::string(buffer.data), "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC");
    EXPECT_EQ(vrktest::countAllocations([&] { EXPECT_EQ(vrk::SerializeBuffer_convert(&buffer, euro.data(), 3), 9); }), 0);
    std::free(buffer.data);
}
