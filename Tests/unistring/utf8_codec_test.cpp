// UTF-8 decoding and encoding of units and strings, and the byte order helpers.
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
        {"\x41", 0x41, 1}, {std::string(1, '\0'), 0, 1}, {"\x7F", 0x7F, 1}, {"\xC2\x80", 0x80, 2},
        {"\xDF\xBF", 0x7FF, 2}, {"\xE0\xA0\x80", 0x800, 3}, {"\xED\x9F\xBF", 0xD7FF, 3},
        {"\xEE\x80\x80", 0xE000, 3}, {"\xEF\xBF\xBE", 0xFFFE, 3}, {"\xEF\xBF\xBF", 0xFFFF, 3},
        {"\x80", 0xFFFF, 0}, {"\xFE", 0xFFFF, 0}, {"\xFF", 0xFFFF, 0},  // no lead byte: the cursor stays
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
    const std::string ascii(37, 'q');  // long enough for the block-wise paths
    struct Case { std::string bytes; bool good; std::u16string units; };  // units: all, or those before the failure
    const Case cases[] = {
        {"", true, u""}, {"h\xC3\xA9llo", true, u"h\u00E9llo"},
        {"\x7F\xC2\x80\xE2\x82\xAC" "1\xEF\xBF\xBE", true, u"\x7F\x80\x20AC" u"1\xFFFE"},
        {ascii + "\xC3\xA9" + ascii, true, std::u16string(37, u'q') + u'\u00E9' + std::u16string(37, u'q')},
        {std::string("a\0\x80", 3), true, u"a"},  // the first zero byte ends the text
        {"ab\xEF\xBF\xBF" "c", false, u"ab"}, {"ab\xC3", false, u"ab"}, {ascii + "\x80", false, std::u16string(37, u'q')},
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
        unsigned char buffer[2 * 80 + 1];
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
              }), 2);
}

TEST(Utf8Encode, EveryUnitHasItsFormAndDecodesBackUnlessSurrogateOrFFFF) {
    for (uint32_t u = 0; u <= 0xFFFF; ++u) {
        const auto unit = static_cast<UniChar>(u);
        char out[4] = {'#', '#', '#', '#'};
        const int32_t written = vrkUniCharToUTF8(unit, out);
        ASSERT_EQ(written, u < 0x80 ? 1 : u < 0x800 ? 2 : 3) << std::hex << u;
        ASSERT_EQ(out[3], '#') << std::hex << u;
        const UniChar single[] = {unit, 0};
        ASSERT_EQ(vrkUniCharToUTF8Len(single), u == 0 ? 0 : written) << std::hex << u;
        const char *cursor = out;
        const bool refused = (u >= 0xD800 && u <= 0xDFFF) || u == 0xFFFF;
        ASSERT_EQ(vrkUTF8ToUniChar(&cursor), refused ? 0xFFFF : unit) << std::hex << u;
        ASSERT_EQ(cursor - out, written) << std::hex << u;
        if (refused) {  // still written in the three-byte form
            const std::string form{char(0xE0 | u >> 12), char(0x80 | (u >> 6 & 0x3F)), char(0x80 | (u & 0x3F))};
            ASSERT_EQ(std::string(out, 3), form) << std::hex << u;
        }
    }
}

TEST(Utf8Encode, LengthsAgreeWithConversions) {
    struct Case { std::u16string text; int32_t n; std::string bytes; };  // bytes: the first n units' form
    const Case cases[] = {
        {u"", 3, ""}, {u"A\u00E9\u20AC", 3, "A\xC3\xA9\xE2\x82\xAC"}, {u"A\u00E9\u20AC", 2, "A\xC3\xA9"},
        {u"A\u00E9\u20AC", 100, "A\xC3\xA9\xE2\x82\xAC"}, {u"\u00E9A", 1, "\xC3\xA9"}, {u"ABC", 0, ""},
        {u"ABC", -1, ""}, {u"\xD83D\xDE00x", 2, "\xED\xA0\xBD\xED\xB8\x80"},  // a pair stays two units
        {std::u16string(u"ab\0cd", 5), 5, "ab"},
    };
    for (const Case &c : cases) {
        Units text = units(c.text);  // at an odd address
        std::string odd(1 + text.size() * sizeof(UniChar), '\0');
        std::memcpy(odd.data() + 1, text.data(), text.size() * sizeof(UniChar));
        const auto *s = reinterpret_cast<const UniChar *>(odd.data() + 1);
        EXPECT_EQ(vrkUniCharNToUTF8Len(s, c.n), static_cast<int32_t>(c.bytes.size())) << c.n;
        char *made = nullptr;
        EXPECT_EQ(countAllocations([&] { made = vrkUniCharStringNToUTF8(s, c.n, nullptr); }), 1);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(std::string(made, c.bytes.size() + 1), c.bytes + '\0') << c.n;
        std::free(made);
        char dest[16];
        std::memset(dest, '#', sizeof dest);
        EXPECT_EQ(vrkUniCharStringNToUTF8(s, c.n, dest), dest);
        EXPECT_EQ(std::string(dest, c.bytes.size() + 2), c.bytes + '\0' + '#') << c.n;
        // The whole-string forms agree with the counted ones given enough units.
        made = vrkUniCharStringToUTF8(s, nullptr);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(vrkUniCharToUTF8Len(s), static_cast<int32_t>(std::strlen(made)));
        EXPECT_EQ(std::string(made), std::string(vrkUniCharStringNToUTF8(s, 1000, dest)));
        std::free(made);
    }
    Units text = units(u"a\u00E9\u20AC");
    for (int32_t n : {-1, 0, 2, 10, INT32_MAX}) {
        EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                      char *made = n == INT32_MAX ? vrkUniCharStringToUTF8(text.data(), nullptr)
                                                  : vrkUniCharStringNToUTF8(text.data(), n, nullptr);
                      EXPECT_EQ(made == nullptr, run.failed()) << n;
                      std::free(made);
                  }), 2);
    }
}

TEST(ByteOrder, ShouldSwapAndSwapAtAnyAddress) {
    const unsigned char pairs[][3] = {{0, 0xFE, 0xFF}, {0, 0xFF, 0xFE}, {0, 0xFE, 0xFE}, {0, 0xFF, 0xFF}, {0, 0xFE, 0}};
    for (const auto &p : pairs) EXPECT_EQ(ShouldSwapUTF16(p + 1), p[1] == 0xFE && p[2] == 0xFF);
    // The mark and units with one zero byte are swapped; the zero unit ends.
    const unsigned char original[] = {0xFF, 0xFE, 0x41, 0, 0, 0x41, 0x34, 0x12, 0, 0, 0x78, 0x56};
    const unsigned char swapped[] = {0xFE, 0xFF, 0, 0x41, 0x41, 0, 0x12, 0x34, 0, 0, 0x78, 0x56};
    for (const std::size_t offset : {0u, 1u}) {
        alignas(UniChar) unsigned char buffer[sizeof original + 1];
        std::memcpy(buffer + offset, original, sizeof original);
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset));
        EXPECT_EQ(std::memcmp(buffer + offset, swapped, sizeof swapped), 0) << offset;
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset + 8));  // empty: unchanged
        EXPECT_EQ(std::memcmp(buffer + offset, swapped, sizeof swapped), 0) << offset;
    }
}
