// Texts longer than 32-bit offsets can address are refused, never
// overflowed.  The texts are gigabytes long but cost one page of memory:
// one small file of text mapped over and over side by side.
#include <sys/mman.h>
#include <unistd.h>

#include <vector>

#include "dom_test.h"

using namespace domtest;

namespace {

// `total` bytes of a repeated byte pair, then zero bytes; unmapped on destruction.
class HugeText {
public:
    HugeText(std::size_t total, unsigned char first, unsigned char second)
        : size_(total + kChunk) {
        const int reserved = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
        void *area = mmap(nullptr, size_, PROT_NONE, reserved, -1, 0);
        base_ = area == MAP_FAILED ? nullptr : static_cast<unsigned char *>(area);
        const int file = memfd_create("vrkxml-huge-text", 0);
        std::vector<unsigned char> chunk(kChunk);
        for (std::size_t i = 0; i < kChunk; i += 2) {
            chunk[i] = first;
            chunk[i + 1] = second;
        }
        const auto written = pwrite(file, chunk.data(), kChunk, 0);
        bool ok = base_ && file >= 0 && written == static_cast<ssize_t>(kChunk);
        const int shared = MAP_SHARED | MAP_FIXED | MAP_POPULATE;
        for (std::size_t at = 0; ok && at < total; at += kChunk) {
            ok = mmap(base_ + at, kChunk, PROT_READ | PROT_WRITE, shared, file, 0) != MAP_FAILED;
        }
        if (file >= 0) close(file);
        // A private zeroed chunk behind the text terminates it in every encoding.
        const int zeroed = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED;
        ready_ =
            ok && mmap(base_ + total, kChunk, PROT_READ | PROT_WRITE, zeroed, -1, 0) != MAP_FAILED;
    }
    ~HugeText() {
        if (base_ != nullptr) munmap(base_, size_);
    }
    unsigned char *bytes() const { return ready_ ? base_ : nullptr; }

private:
    static constexpr std::size_t kChunk = 1 << 20;
    std::size_t size_;
    unsigned char *base_ = nullptr;
    bool ready_ = false;
};

constexpr std::size_t kUnitsPastLimit = (std::size_t{1} << 31) + (1 << 20);  // 2^31 + 2^20

void expectRefused(unsigned char *text) {
    ASSERT_NE(text, nullptr) << "could not map a huge text";
    vrkParseError error{};
    const int64_t before = liveAllocations();
    EXPECT_EQ(vrkDOM_parse(text, &error), nullptr);
    EXPECT_EQ(error.code, ERR_TEXT_TOO_LONG);
    EXPECT_EQ(error.offset, 0);
    EXPECT_EQ(error.line, error.callerLine) << "reported by the entry itself";
    EXPECT_STREQ(error.file, "Source/dom");
    EXPECT_STREQ(error.callerFile, "Source/dom");
    EXPECT_STREQ(error.message, "Text too long: more than 2147483647 units.");
    EXPECT_EQ(liveAllocations(), before);  // nothing was decoded
}

}  // namespace

TEST(TextLimits, MoreUnitsThanOffsetsCanAddressAreRefused) {
    expectRefused(HugeText(kUnitsPastLimit, 'a', 'a').bytes());  // UTF-8, one unit per byte
    HugeText utf16(2 * kUnitsPastLimit, 'a', 0);
    HugeText swapped(2 * kUnitsPastLimit, 0, 'a');
    utf16.bytes()[0] = '<';  // machine order, "<" then "a"...
    expectRefused(utf16.bytes());
    swapped.bytes()[0] = 0xFE;  // swapped behind a mark: refused before any swap
    swapped.bytes()[1] = 0xFF;
    expectRefused(swapped.bytes());
    EXPECT_EQ(swapped.bytes()[3], 'a') << "the text was swapped";
}

TEST(TextLimits, LengthsThatDoNotFit32BitsAreReportedNotWrapped) {
    // Surrogate-free units above 0x7FF take three bytes each in UTF-8.
    HugeText utf16((std::size_t{3} << 29) + (1 << 20), 0x00,
                   0x30);  // 0x3000, 3 * 2^28 + 2^19 units
    const auto *text = reinterpret_cast<const UniChar *>(utf16.bytes());
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(vrkUniCharToUTF8Len(text), -1);
    const int64_t before = liveAllocations();
    EXPECT_EQ(vrkUniCharStringToUTF8(text, nullptr), nullptr);
    EXPECT_EQ(liveAllocations(), before);
    EXPECT_EQ(vrkUniCharNToUTF8Len(text, 1000), 3000);
}
