// Texts longer than 32-bit offsets can address are refused, never
// overflowed.  The texts are gigabytes long but cost one page of memory:
// one small file of text mapped over and over side by side.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"

using namespace vrktest;

namespace {

// `total` bytes of `fill` (a repeated byte pair), then zero bytes, at a
// fixed virtual address range; unmapped again on destruction.
class HugeText {
public:
    HugeText(std::size_t total, unsigned char first, unsigned char second) : size_(total + kChunk) {
        void *area = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (area == MAP_FAILED) return;
        base_ = static_cast<unsigned char *>(area);
        const int file = memfd_create("vrkxml-huge-text", 0);
        if (file < 0 || ftruncate(file, kChunk) != 0) return;
        std::vector<unsigned char> chunk(kChunk);
        for (std::size_t i = 0; i < kChunk; i += 2) chunk[i] = first, chunk[i + 1] = second;
        if (pwrite(file, chunk.data(), kChunk, 0) != static_cast<ssize_t>(kChunk)) return;
        for (std::size_t at = 0; at < total; at += kChunk) {
            if (mmap(base_ + at, kChunk, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0) ==
                MAP_FAILED)
                return;
        }
        close(file);
        // A private zeroed chunk behind the text terminates it in every encoding.
        if (mmap(base_ + total, kChunk, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) ==
            MAP_FAILED)
            return;
        ready_ = true;
    }
    ~HugeText() {
        if (base_ != nullptr) munmap(base_, size_);
    }
    bool ready() const { return ready_; }
    unsigned char *bytes() { return base_; }

private:
    static constexpr std::size_t kChunk = 1 << 20;
    std::size_t size_;
    unsigned char *base_ = nullptr;
    bool ready_ = false;
};

constexpr std::size_t kUnitsPastLimit = (std::size_t{1} << 31) + (1 << 20);  // 2^31 + 1 Mi units

void expectRefused(unsigned char *text) {
    vrkParseError error{};
    const int64_t before = liveAllocations();
    EXPECT_EQ(vrkDOM_parse(text, &error), nullptr);
    EXPECT_EQ(error.code, ERR_TEXT_TOO_LONG);
    EXPECT_EQ(error.offset, 0);
    EXPECT_STREQ(error.file, "Source/dom");
    EXPECT_STREQ(error.callerFile, "Source/dom");
    EXPECT_EQ(error.line, error.callerLine);
    EXPECT_STREQ(error.message, "Text too long: more than 2147483647 units.");
    EXPECT_EQ(liveAllocations(), before);  // nothing was decoded
}

}  // namespace

TEST(TextLimits, MoreUnitsThanOffsetsCanAddressAreRefused) {
    {
        // UTF-8: "a" repeated, one unit per byte.
        HugeText utf8(kUnitsPastLimit, 'a', 'a');
        if (!utf8.ready()) GTEST_SKIP() << "could not map a huge text";
        expectRefused(utf8.bytes());
    }
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the UTF-16 cases read 4 GiB unit by unit: release builds only";
#endif
    {
        // UTF-16 in the machine's order ("<" then "a"...), and byte-swapped
        // behind a mark: refused before a single unit is swapped.
        HugeText utf16(2 * kUnitsPastLimit, 'a', 0);
        ASSERT_TRUE(utf16.ready());
        utf16.bytes()[0] = '<';
        expectRefused(utf16.bytes());
    }
    {
        HugeText swapped(2 * kUnitsPastLimit, 0, 'a');
        ASSERT_TRUE(swapped.ready());
        swapped.bytes()[0] = 0xFE, swapped.bytes()[1] = 0xFF;
        expectRefused(swapped.bytes());
        EXPECT_EQ(swapped.bytes()[2], 0);  // still in its own order
        EXPECT_EQ(swapped.bytes()[3], 'a');
    }
}

TEST(TextLimits, LengthsThatDoNotFit32BitsAreReportedNotWrapped) {
    // Surrogate-free units above 0x7FF take three bytes each in UTF-8.
    HugeText utf16((std::size_t{3} << 29) + (1 << 20), 0x00, 0x30);  // 0x3000, 3 * 2^28 + 2^19 units
    ASSERT_TRUE(utf16.ready());
    const auto *units = reinterpret_cast<const UniChar *>(utf16.bytes());
    EXPECT_EQ(vrkUniCharToUTF8Len(units), -1);
    const int64_t before = liveAllocations();
    EXPECT_EQ(vrkUniCharStringToUTF8(units, nullptr), nullptr);
    EXPECT_EQ(liveAllocations(), before);
    EXPECT_EQ(vrkUniCharNToUTF8Len(units, 1000), 3000);
}
