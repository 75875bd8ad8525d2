// The zero-terminated 16-bit string family, UTF-8 decoding and encoding, the byte order helpers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

struct Odd {  // units stored one byte into a block, for reads at odd addresses
    std::string bytes;
    UniChar *get() { return reinterpret_cast<UniChar *>(bytes.data() + 1); }
};
Odd odd(std::u16string_view text) {
    Odd out{std::string(1 + 2 * text.size(), '\0')};
    std::memcpy(out.bytes.data() + 1, text.data(), 2 * text.size());
    return out;
}

TEST(UniStringFamily, ConcatenationAndBoundedCopies) {
    Units buffer(8, 0xAAAA);
    EXPECT_EQ(vrkunistrcpy(buffer.data(), units(u"xyz").data()), buffer.data());
    EXPECT_EQ(vrkunistrcat(vrkunistrcat(buffer.data(), units(u"12").data()), units(u"").data()),
              buffer.data());
    EXPECT_EQ(str(buffer.data(), 7), std::u16string(u"xyz12\0\xAAAA", 7));
    // vrkunistrncpy pads with zero units up to n; a full copy is left unended.
    struct Case {
        std::u16string_view src;
        int32_t n;
        std::u16string_view stored;
    };
    for (const Case &c : {Case{u"abc", 3, u"abc\xAAAA"},
                          {u"abc", 1, u"a\xAAAA"},
                          {u"", 0, u"\xAAAA"},
                          {u"abc", 5, std::u16string_view(u"abc\0\0\xAAAA", 6)},
                          {u"", -3, u"\xAAAA"},
                          {u"", 2, std::u16string_view(u"\0\0\xAAAA", 3)}}) {
        buffer.assign(8, 0xAAAA);
        EXPECT_EQ(vrkunistrncpy(buffer.data(), units(c.src).data(), c.n), buffer.data());
        EXPECT_EQ(str(buffer.data(), c.stored.size()), c.stored) << "n = " << c.n;
    }
}

TEST(UniStringFamily, SearchesAndComparisons) {
    Units s = units(u"abcab\x4161");  // the terminator never matches; only the low 16 bits count
    for (const auto &[unit, at] :
         {std::pair<int32_t, int>{u'b', 1}, {0x4161, 5}, {0x10063, 2}, {'z', -1}, {0, -1}}) {
        EXPECT_EQ(vrkunistrchr(s.data(), unit), at < 0 ? nullptr : s.data() + at);
    }
    EXPECT_EQ(vrkunistrchr(units(u"").data(), 0), nullptr);
    struct Span {
        std::u16string_view s;
        std::u16string_view reject;
        int32_t length;
    };
    for (const Span c : {Span{u"", u"abc", 0},
                         {u"hello", u"xyz", 5},
                         {u"hello", u"h", 0},
                         {u"hello", u"zo", 4}}) {
        EXPECT_EQ(vrkunistrcspn(units(c.s).data(), units(c.reject).data()), c.length);
    }
    struct Case {
        std::u16string_view a;
        std::u16string_view b;
        int32_t folded;  // vrkunistrcmp
        int32_t n;
        int32_t exact;  // vrkunistrncmp over n units
    };
    const Case cases[] = {
        {u"abc", u"ABC", 0, 3, 'a' - 'A'},
        {u"ab", u"abc", -0x43, 2, 0},
        {u"ab", u"abc", -0x43, 5, -'c'},
        {u"abc", u"ab", 0x43, 5, 'c'},
        {u"ab", u"ab", 0, 5, 0},
        {u"", u"", 0, 1, 0},
        {u"", u"a", -'A', 1, -'a'},
        {u"x", u"y", -1, 0, -1},
        {u"x", u"y", -1, -7, -1},
        {u"xa", u"xb", -1, 1, 0},
        {u"\x0101", u"\x0100", 1, 1, 1},
        {u"\xFFFF", u"a", 0xFFFF - 'A', 1, 0xFFFF - 'a'},
        {u"[", u"a", '[' - 'A', 1, '[' - 'a'},
    };
    // Exactly sized copies: a read past a terminator shows under ASan.
    for (const Case &c : cases) {
        auto a = std::make_unique<UniChar[]>(c.a.size() + 1);
        auto b = std::make_unique<UniChar[]>(c.b.size() + 1);
        std::copy(c.a.begin(), c.a.end(), a.get());
        std::copy(c.b.begin(), c.b.end(), b.get());
        EXPECT_EQ(vrkunistrcmp(a.get(), b.get()), c.folded) << "case " << &c - cases;
        EXPECT_EQ(vrkunistrncmp(a.get(), b.get(), c.n), c.exact) << "case " << &c - cases;
    }
}

TEST(Utf8Decode, OneSequenceAndWholeTexts) {
    // One sequence (the encoder test decodes every unit's form).  No lead
    // byte: the cursor stays.  Overlong forms, surrogates, four- to six-byte
    // forms: read to the end, refused.  A bad continuation: stops on it.
    struct Case {
        std::string bytes;
        UniChar result;
        std::ptrdiff_t moved;
    };
    const Case cases[] = {
        {std::string(1, '\0'), 0, 1},
        {"\xC2\x80", 0x80, 2},
        {"\xE2\x82\xAC", 0x20AC, 3},
        {"\xEF\xBF\xBE", 0xFFFE, 3},
        {"\x80", 0xFFFF, 0},
        {"\xFE", 0xFFFF, 0},
        {"\xFF", 0xFFFF, 0},
        {"\xC1\xBF", 0xFFFF, 2},
        {"\xE0\x9F\xBF", 0xFFFF, 3},
        {"\xED\xA0\x80", 0xFFFF, 3},
        {"\xF0\x80\x80\x80", 0xFFFF, 4},
        {"\xF8\x88\x80\x80\x80", 0xFFFF, 5},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", 0xFFFF, 6},
        {"\xE2\x28\xA1", 0xFFFF, 1},
        {std::string("\xC3\0", 2), 0xFFFF, 1},
        {"\xE2\x82\xC0", 0xFFFF, 2},
        {"\xFC\x80\x80\x80\x80\xFF", 0xFFFF, 5},
    };
    for (const Case &c : cases) {
        const std::string text = c.bytes + "!";
        const char *cursor = text.data();
        EXPECT_EQ(vrkUTF8ToUniChar(&cursor), c.result) << "case " << &c - cases;
        EXPECT_EQ(cursor - text.data(), c.moved) << "case " << &c - cases;
    }
    const std::string q(37, 'q');  // long enough for the block-wise paths
    const std::u16string uq(37, u'q');
    struct Text {
        std::string bytes;
        bool good;
        std::u16string units;
    };  // units: all, or those before the failure
    const Text texts[] = {
        {"", true, u""},
        {"h\xC3\xA9llo", true, u"h\u00E9llo"},
        {q + "\xC3\xA9" + q, true, uq + u'\u00E9' + uq},
        {"\x7F\xC2\x80\xE2\x82\xAC"
         "1\xEF\xBF\xBE",
         true,
         u"\x7F\x80\x20AC"
         u"1\xFFFE"},
        {std::string("a\0\x80", 3), true, u"a"},  // the first zero byte ends the text
        {"ab\xEF\xBF\xBF"
         "c",
         false, u"ab"},
        {"ab\xC3", false, u"ab"},
        {q + "\x80", false, uq},
        {"\x80", false, u""},
        {"a\xED\xA0\x80", false, u"a"},
        {"\xF0\x9F\x98\x80", false, u""},
    };
    for (const Text &c : texts) {
        EXPECT_EQ(vrkUTF8StrLen(c.bytes.c_str()),
                  c.good ? static_cast<int32_t>(c.units.size()) : -1);
        UniChar *made = nullptr;
        EXPECT_EQ(
            countAllocations([&] { made = vrkUTF8ToUniCharString(c.bytes.c_str(), nullptr); }),
            c.good);
        EXPECT_EQ(made == nullptr ? u"null" : str(made), c.good ? c.units : u"null")
            << "text " << &c - texts;
        std::free(made);
        Odd dest = odd(
            std::u16string(c.units.size() + 2, u'\xAAAA'));  // a caller's; the unit after stays
        EXPECT_EQ(vrkUTF8ToUniCharString(c.bytes.c_str(), dest.get()),
                  c.good ? dest.get() : nullptr);
        EXPECT_EQ(dest.bytes, odd(c.units + (c.good ? u'\0' : u'\xFFFF') + u'\xAAAA').bytes)
            << &c - texts;
    }
}

TEST(UniString, EveryAllocatingCallGivesNullWithoutMemory) {
    Units text = units(u"a\u00E9\u20AC");
    std::vector<std::function<void *()>> makes = {
        [&] { return vrkunistrdup(text.data()); }, [&] { return unistrndup(text.data(), 2); },
        [&] { return vrkUniCharArrayToString(text.data(), 0); },
        [&] { return vrkUniCharStringToUTF8(text.data(), 0); },
        [] { return vrkUTF8ToUniCharString("h\xC3\xA9", nullptr); }};
    for (int32_t n : {-1, 0, 2, 10})
        makes.push_back([&, n] { return vrkUniCharStringNToUTF8(text.data(), n, 0); });
    for (const auto &make : makes) {
        EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                      void *made = make();
                      EXPECT_EQ(made == nullptr, run.failed());
                      std::free(made);
                  }),
                  2)
            << "maker " << &make - makes.data();
    }
}

TEST(ByteOrder, ShouldSwapAndSwapAtAnyAddress) {
    const unsigned char pairs[][3] = {
        {0, 0xFE, 0xFF}, {0, 0xFF, 0xFE}, {0, 0xFE, 0xFE}, {0, 0xFF, 0xFF}, {0, 0xFE, 0}};
    for (const auto &p : pairs) EXPECT_EQ(ShouldSwapUTF16(p + 1), p[1] == 0xFE && p[2] == 0xFF);
    // The mark and units with one zero byte swap; the zero unit ends; an empty string stays.
    const unsigned char original[] = {0xFF, 0xFE, 0x41, 0, 0, 0x41, 0x34, 0x12, 0, 0, 0x78, 0x56};
    const unsigned char swapped[] = {0xFE, 0xFF, 0, 0x41, 0x41, 0, 0x12, 0x34, 0, 0, 0x78, 0x56};
    for (const std::size_t offset : {0u, 1u}) {
        alignas(UniChar) unsigned char buffer[sizeof original + 1];
        std::memcpy(buffer + offset, original, sizeof original);
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset));
        SwapUTF16(reinterpret_cast<UniChar *>(buffer + offset + 8));
        EXPECT_EQ(std::memcmp(buffer + offset, swapped, sizeof swapped), 0) << offset;
    }
}
