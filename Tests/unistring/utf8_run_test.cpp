// The serializer's run encoder and scratch buffer against the unit-by-unit form.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "dom/serialize_buffer.h"
#include "support/alloc_fault.h"
#include "unistring/utf8_fast.h"

TEST(Utf8Run, MixedRunsEncodeAsUnitByUnitAtEveryLengthAndPosition) {
    const UniChar others[] = {0x00E9, 0x07FF, 0x0800, 0x20AC, 0xD800, 0xDFFF, 0xFFFF};
    for (int length = 0; length <= 40; ++length) {
        for (int at = -1; at < length; ++at) {  // at: where a longer form replaces an ASCII unit
            std::vector<UniChar> units;
            std::string expected;
            for (int i = 0; i < length; ++i) {
                char bytes[4];
                units.push_back(i == at ? others[(length + at) % 7] : UniChar('a' + i % 26));
                expected.append(bytes,
                                static_cast<std::size_t>(vrkUniCharToUTF8(units.back(), bytes)));
            }
            std::vector<char> raw(units.size() * 2 + 1);  // and one byte into a block
            if (!units.empty()) std::memcpy(raw.data() + 1, units.data(), units.size() * 2);
            const UniChar *aligned = units.data(),
                          *odd = reinterpret_cast<const UniChar *>(raw.data() + 1);
            for (const UniChar *s : {aligned, odd}) {
                EXPECT_EQ(vrk::utf8BytesOfRun(s, length), static_cast<int64_t>(expected.size()));
                std::vector<char> out(expected.size() + 2, '#');
                ASSERT_EQ(vrk::encodeRun(s, length, out.data()) - out.data(),
                          std::ptrdiff_t(expected.size()))
                    << at;
                EXPECT_EQ(std::string(out.data(), expected.size() + 2), expected + '\0' + '#')
                    << length << " " << at;
            }
        }
    }
}

TEST(Utf8Run, BufferGrowsOnlyForAPieceLongerThanItHolds) {
    SerializeBuffer buffer{static_cast<char *>(std::malloc(9)), 8};
    const std::vector<UniChar> euro(3, 0x20AC),
        ascii(8, 'x');  // 3 units might need 9 bytes, more than 8
    const auto convert = [&](const std::vector<UniChar> &u, int32_t n, int32_t bytes) {
        return vrktest::countAllocations(
            [&] { EXPECT_EQ(vrk::SerializeBuffer_convert(&buffer, u.data(), n), bytes); });
    };
    EXPECT_EQ(convert(ascii, 2, 2) + convert(ascii, 8, 8), 0);
    EXPECT_EQ(convert(euro, 3, 9), 1);
    EXPECT_EQ(buffer.capacity, 9);
    EXPECT_EQ(std::string(buffer.data), "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC");
    EXPECT_EQ(convert(euro, 3, 9), 0);
    std::free(buffer.data);
}
