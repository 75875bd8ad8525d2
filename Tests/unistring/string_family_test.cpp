// The zero-terminated 16-bit string family.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/alloc_fault.h"
#include "support/unitext.h"

using namespace vrktest;

TEST(UniStringFamily, LengthAndCopiesIncludingOddAddressesAndOverlap) {
    EXPECT_EQ(vrkunistrlen(units(u"").data()), 0);
    const UniChar text[] = {0x0100, 0x0001, 0x4100, 0, 0x41, 0};  // only a zero unit ends a string
    unsigned char bytes[sizeof text + 1];
    std::memcpy(bytes + 1, text, sizeof text);
    EXPECT_EQ(vrkunistrlen(reinterpret_cast<UniChar *>(bytes + 1)), 3);

    UniChar buffer[8];
    std::fill(std::begin(buffer), std::end(buffer), UniChar{0xAAAA});
    EXPECT_EQ(vrkunistrcpy(buffer, units(u"xyz").data()), buffer);
    EXPECT_EQ(vrkunistrcat(buffer, units(u"12").data()), buffer);
    vrkunistrcat(buffer, units(u"").data());
    EXPECT_EQ(str(buffer, 7), std::u16string(u"xyz12\0\xAAAA", 7));

    Units shift = units(u"abcdefgh");  // moving a tail down within its block
    vrkunistrcpy(shift.data() + 1, shift.data() + 3);
    EXPECT_EQ(str(shift.data(), 9), std::u16string(u"adefgh\0h\0", 9));
    shift = units(u"abcdef");
    vrkunistrncpy(shift.data(), shift.data() + 2, 6);
    EXPECT_EQ(str(shift.data(), 7), std::u16string(u"cdef\0\0\0", 7));

    // Bounded copy: pads a short source, never terminates a full copy.
    struct Case { std::u16string_view src; int32_t n; std::u16string_view stored; };
    const Case cases[] = {{u"abc", 3, u"abc\xAAAA"}, {u"abc", 1, u"a\xAAAA"},
                          {u"abc", 5, std::u16string_view(u"abc\0\0\xAAAA", 6)},
                          {u"", 2, std::u16string_view(u"\0\0\xAAAA", 3)}, {u"", 0, u"\xAAAA"}, {u"", -3, u"\xAAAA"}};
    for (const Case &c : cases) {
        std::fill(std::begin(buffer), std::end(buffer), UniChar{0xAAAA});
        EXPECT_EQ(vrkunistrncpy(buffer, units(c.src).data(), c.n), buffer);
        EXPECT_EQ(str(buffer, c.stored.size()), c.stored) << "n = " << c.n;
    }
}

TEST(UniStringFamily, DuplicatesCopyExactlyAndGiveNullWithoutMemory) {
    Units array = units(std::u16string(u"x\0y\xD800", 4));
    for (int32_t n = 0; n <= 4; ++n) {
        for (auto *make : {&unistrndup, &vrkUniCharArrayToString}) {
            UniChar *copy = make(array.data(), n);
            ASSERT_NE(copy, nullptr);
            const auto count = static_cast<std::size_t>(n);
            EXPECT_EQ(str(copy, count + 1), str(array.data(), count) + u'\0');
            std::free(copy);
        }
    }
    UniChar *dup = vrkunistrdup(array.data() + 2);
    EXPECT_EQ(str(dup, 3), std::u16string(u"y\xD800\0", 3));
    std::free(dup);

    using Make = UniChar *(*)(const UniChar *);
    for (Make make : {Make{[](const UniChar *s) { return vrkunistrdup(s); }},
                      Make{[](const UniChar *s) { return unistrndup(s, 3); }},
                      Make{[](const UniChar *s) { return vrkUniCharArrayToString(s, 0); }}}) {
        EXPECT_EQ(forEachAllocationFailure([&](const AllocationRun &run) {
                      UniChar *copy = make(units(u"hello").data());
                      EXPECT_EQ(copy == nullptr, run.failed());
                      std::free(copy);
                  }), 2);
    }
}

TEST(UniStringFamily, SearchesNeverMatchTheTerminator) {
    Units s = units(u"abcab\x4161");
    struct Find { uint32_t unit; std::ptrdiff_t at; };  // at -1: not found; only the low 16 bits count
    for (const Find f : {Find{u'b', 1}, {0x4161, 5}, {0x10000 + u'c', 2}, {u'z', -1}, {0, -1}}) {
        EXPECT_EQ(vrkunistrchr(s.data(), static_cast<int32_t>(f.unit)), f.at < 0 ? nullptr : s.data() + f.at);
    }
    EXPECT_EQ(vrkunistrchr(units(u"").data(), 0), nullptr);
    struct Span { std::u16string_view s, reject; int32_t length; };
    for (const Span c : {Span{u"", u"abc", 0}, {u"hello", u"xyz", 5}, {u"hello", u"h", 0}, {u"hello", u"zo", 4}}) {
        EXPECT_EQ(vrkunistrcspn(units(c.s).data(), units(c.reject).data()), c.length);
    }
}

TEST(UniStringFamily, ComparisonsGiveTheDifferenceOfTheFirstUnequalUnits) {
    struct Case { std::u16string_view a, b; int32_t folded, n, exact; };  // vrkunistrcmp; vrkunistrncmp with n
    const Case cases[] = {
        {u"abc", u"ABC", 0, 3, 'a' - 'A'}, {u"ab", u"abc", -0x43, 2, 0}, {u"ab", u"abc", -0x43, 5, -'c'},
        {u"abc", u"ab", 0x43, 5, 'c'},     {u"ab", u"ab", 0, 5, 0},       {u"", u"", 0, 1, 0},
        {u"", u"a", -'A', 1, -'a'},        {u"x", u"y", -1, 0, -1},       {u"x", u"y", -1, -7, -1},
        {u"xa", u"xb", -1, 1, 0},          {u"\x0101", u"\x0100", 1, 1, 1},
        {u"\xFFFF", u"a", 0xFFFF - 'A', 1, 0xFFFF - 'a'}, {u"[", u"a", '[' - 'A', 1, '[' - 'a'},
    };
    for (const Case &c : cases) {
        // Exactly sized copies: a read past a terminator shows under the sanitizer.
        auto a = std::make_unique<UniChar[]>(c.a.size() + 1), b = std::make_unique<UniChar[]>(c.b.size() + 1);
        std::copy(c.a.begin(), c.a.end(), a.get());
        std::copy(c.b.begin(), c.b.end(), b.get());
        EXPECT_EQ(vrkunistrcmp(a.get(), b.get()), c.folded) << "case " << &c - cases;
        EXPECT_EQ(vrkunistrncmp(a.get(), b.get(), c.n), c.exact) << "case " << &c - cases;
    }
}
