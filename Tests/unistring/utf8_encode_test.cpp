// UTF-8 encoding of units and strings, checked against the decoder and the
// length operations.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

TEST(Utf8Encode, EveryUnitHasItsFormAndDecodesBackUnlessSurrogateOrFFFF) {
    struct Case { UniChar unit; std::string bytes; };
    const Case cases[] = {
        {0x0000, std::string(1, '\0')}, {0x007F, "\x7F"}, {0x0080, "\xC2\x80"},
        {0x07FF, "\xDF\xBF"}, {0x0800, "\xE0\xA0\x80"}, {0x20AC, "\xE2\x82\xAC"},
        {0xD800, "\xED\xA0\x80"}, {0xDFFF, "\xED\xBF\xBF"}, {0xFFFF, "\xEF\xBF\xBF"},
    };
    for (const Case &c : cases) {
        char out[4] = {'#', '#', '#', '#'};
        EXPECT_EQ(vrkUniCharToUTF8(c.unit, out), static_cast<int32_t>(c.bytes.size()));
        EXPECT_EQ(std::string(out, c.bytes.size() + 1), c.bytes + '#') << std::hex << c.unit;
    }

    for (uint32_t u = 0; u <= 0xFFFF; ++u) {
        const auto unit = static_cast<UniChar>(u);
        char out[4] = {};
        const int32_t written = vrkUniCharToUTF8(unit, out);
        ASSERT_EQ(written, u < 0x80 ? 1 : u < 0x800 ? 2 : 3) << std::hex << u;
        const UniChar single[] = {unit, 0};
        ASSERT_EQ(vrkUniCharToUTF8Len(single), u == 0 ? 0 : written) << std::hex << u;

        const char *cursor = out;
        const bool refused = (u >= 0xD800 && u <= 0xDFFF) || u == 0xFFFF;
        ASSERT_EQ(vrkUTF8ToUniChar(&cursor), refused ? 0xFFFF : unit) << std::hex << u;
        ASSERT_EQ(cursor - out, written) << std::hex << u;
    }
}

TEST(Utf8Encode, LengthsAgreeWithConversions) {
    // bytes: what the first n units convert to.
    struct Case { std::u16string text; int32_t n; std::string bytes; };
    const Case cases[] = {
        {u"", 3, ""}, {u"A\u00E9\u20AC", 3, "A\xC3\xA9\xE2\x82\xAC"},
        {u"A\u00E9\u20AC", 2, "A\xC3\xA9"}, {u"A\u00E9\u20AC", 100, "A\xC3\xA9\xE2\x82\xAC"},
        {u"\u00E9A", 1, "\xC3\xA9"}, {u"ABC", 0, ""}, {u"ABC", -1, ""},
        {u"\xD83D\xDE00x", 2, "\xED\xA0\xBD\xED\xB8\x80"},  // a pair stays two units
        {std::u16string(u"ab\0cd", 5), 5, "ab"},
    };
    for (const Case &c : cases) {
        // The text at an odd address.
        Units text = units(c.text);
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
                  }),
                  2);
    }
}
