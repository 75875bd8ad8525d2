// UTF-8 decoding, one sequence and whole texts, and the byte order helpers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

TEST(Utf8Decode, OneSequenceResultAndCursor) {
    struct Case { std::string bytes; UniChar result; std::ptrdiff_t moved; };
    const Case cases[] = {
        {"\x41", 0x41, 1}, {std::string(1, '\0'), 0, 1}, {"\x7F", 0x7F, 1},
        {"\xC2\x80", 0x80, 2}, {"\xDF\xBF", 0x7FF, 2}, {"\xE0\xA0\x80", 0x800, 3},
        {"\xE2\x82\xAC", 0x20AC, 3}, {"\xED\x9F\xBF", 0xD7FF, 3}, {"\xEE\x80\x80", 0xE000, 3},
        {"\xEF\xBF\xBE", 0xFFFE, 3}, {"\xEF\xBF\xBF", 0xFFFF, 3},
        // No lead byte: the cursor stays.
        {"\x80", 0xFFFF, 0}, {"\xFE", 0xFFFF, 0}, {"\xFF", 0xFFFF, 0},
        // Overlong forms, surrogates and four- to six-byte forms: read to the end, refused.
        {"\xC1\xBF", 0xFFFF, 2}, {"\xE0\x9F\xBF", 0xFFFF, 3}, {"\xED\xA0\x80", 0xFFFF, 3},
        {"\xED\xBF\xBF", 0xFFFF, 3}, {"\xF0\x80\x80\x80", 0xFFFF, 4},
        {"\xF8\x88\x80\x80\x80", 0xFFFF, 5}, {"\xFD\xBF\xBF\xBF\xBF\xBF", 0xFFFF, 6},
        // A bad continuation byte: the cursor stops on it.
        {"\xE2\x28\xA1", 0xFFFF, 1}, {std::string("\xC3\0", 2), 0xFFFF, 1},
        {"\xE2\x82\xC0", 0xFFFF, 2}, {"\xFC\x80\x80\x80\x80\xFF", 0xFFFF, 5},
    };
    for (const Case &c : cases) {
        const std::string text = c.bytes + "!";
        const char *cursor = text.data();
        EXPECT_EQ(vrkUTF8ToUniChar(&cursor), c.result) << "case " << &c - cases;
        EXPECT_EQ(cursor - text.data(), c.moved) << "case " << &c - cases;
    }
}

TEST(Utf8Decode, WholeTextsInBothModes) {
    // units: the whole result, or what precedes the failure.
    struct Case { std::string bytes; bool good; std::u16string units; };
    const Case cases[] = {
        {"", true, u""}, {"h\xC3\xA9llo", true, u"h\u00E9llo"},
        {"\x7F\xC2\x80\xE2\x82\xAC" "1\xEF\xBF\xBE", true, u"\x7F\x80\x20AC" u"1\xFFFE"},
        {std::string("a\0\x80", 3), true, u"a"},  // the first zero byte ends the text
        {"ab\xEF\xBF\xBF" "c", false, u"ab"}, {"ab\xC3", false, u"ab"},
        {"\x80", false, u""}, {"a\xED\xA0\x80", false, u"a"}, {"\xF0\x9F\x98\x80", false, u""},
    };
    for (const Case &c : cases) {
        const char *s = c.bytes.c_str();
        EXPECT_EQ(vrkUTF8StrLen(s), c.good ? static_cast<int32_t>(c.units.size()) : -1);

        UniChar *made = nullptr;
        EXPECT_EQ(countAllocations([&] { made = vrkUTF8ToUniCharString(s, nullptr); }), c.good ? 1 : 0);
        EXPECT_EQ(str(made), c.good ? c.units : u"") << "case " << &c - cases;
        EXPECT_EQ(made != nullptr, c.good);
        std::free(made);

        // A caller's destination at an odd address: the unit behind what is written stays.
        unsigned char buffer[2 * 16 + 1];
        std::memset(buffer, 0xAA, sizeof buffer);
        auto *dest = reinterpret_cast<UniChar *>(buffer + 1);
        EXPECT_EQ(vrkUTF8ToUniCharString(s, dest), c.good ? dest : nullptr);
        std::u16string written(c.units.size() + 2, u'\0');
        std::memcpy(written.data(), buffer + 1, written.size() * sizeof(UniChar));
        EXPECT_EQ(written, c.units + (c.good ? u'\0' : u'\xFFFF') + u'\xAAAA') << "case " << &c - cases;
    }

    EXPECT_EQ(forEachAllocationFailure([](const AllocationRun &run) {
                  UniChar *made = vrkUTF8ToUniCharString("h\xC3\xA9", nullptr);
                  EXPECT_EQ(made == nullptr, run.failed());
                  std::free(made);
              }),
              2);
}

TEST(ByteOrder, ShouldSwapAndSwapAtAnyAddress) {
    const unsigned char pairs[][3] = {{0, 0xFE, 0xFF}, {0, 0xFF, 0xFE}, {0, 0xFE, 0xFE},
                                      {0, 0xFF, 0xFF}, {0, 0xFE, 0x00}};
    for (const auto &p : pairs) EXPECT_EQ(ShouldSwapUTF16(p + 1), p[1] == 0xFE && p[2] == 0xFF);

    // The mark and units with one zero byte are swapped; the zero unit ends.
    const unsigned char original[] = {0xFF, 0xFE, 0x41, 0x00, 0x00, 0x41, 0x34, 0x12, 0, 0, 0x78, 0x56};
    const unsigned char swapped[] = {0xFE, 0xFF, 0x00, 0x41, 0x41, 0x00, 0x12, 0x34, 0, 0, 0x78, 0x56};
    for (const std::size_t offset : {0u, 1u}) {
        alignas(UniChar) unsigned char buffer[sizeof original + 1];
        std::memcpy(buffer + offset, original, sizeof original);
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset));
        EXPECT_EQ(std::memcmp(buffer + offset, swapped, sizeof swapped), 0) << offset;
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset + 8));  // empty: unchanged
        EXPECT_EQ(std::memcmp(buffer + offset, swapped, sizeof swapped), 0) << offset;
    }
}
