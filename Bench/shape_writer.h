// The small tools the shape generators share: a fixed-seed random source
// (the tests' own) and a writer that appends words, numbers and markup to a document.
#ifndef VRKXML_BENCH_SHAPE_WRITER_H
#define VRKXML_BENCH_SHAPE_WRITER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "support/random.h"

namespace vrkperf {

// The tests' fixed-seed generator: the same documents on every machine.
using Random = vrktest::Random;

class ShapeWriter {
public:
    ShapeWriter(std::size_t targetBytes, std::uint64_t seed) : target_(targetBytes), random_(seed) {
        out_.reserve(targetBytes + targetBytes / 16 + 4096);
    }

    bool full() const { return out_.size() >= target_; }
    Random &random() { return random_; }
    std::string &out() { return out_; }
    std::string take() { return std::move(out_); }

    ShapeWriter &operator<<(std::string_view text) {
        out_ += text;
        return *this;
    }
    ShapeWriter &operator<<(char c) {
        out_ += c;
        return *this;
    }
    ShapeWriter &operator<<(std::size_t number) {
        out_ += std::to_string(number);
        return *this;
    }
    // What Random::below gives.
    ShapeWriter &operator<<(std::uint32_t number) { return *this << static_cast<std::size_t>(number); }

    std::string_view pick(std::span<const std::string_view> words) { return words[random_.below(words.size())]; }
    // `count` words from the list, separated by single spaces.
    void words(std::span<const std::string_view> list, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            if (i != 0) out_ += ' ';
            out_ += pick(list);
        }
    }
    // A number below `bound` with two decimals.
    void decimal(std::size_t bound) {
        out_ += std::to_string(random_.below(bound));
        out_ += '.';
        const std::size_t cents = random_.below(100);
        if (cents < 10) out_ += '0';
        out_ += std::to_string(cents);
    }
    // An ISO date in 2000 to 2024.
    void date() {
        out_ += std::to_string(2000 + random_.below(25));
        out_ += '-';
        twoDigits(1 + random_.below(12));
        out_ += '-';
        twoDigits(1 + random_.below(28));
    }

private:
    void twoDigits(std::size_t n) {
        if (n < 10) out_ += '0';
        out_ += std::to_string(n);
    }

    std::size_t target_;
    Random random_;
    std::string out_;
};

}  // namespace vrkperf

#endif
