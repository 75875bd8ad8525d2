// A small seeded generator for test documents: the same seed gives the same
// documents on every machine (splitmix64).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrktest {

class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    // A number below n.
    uint32_t below(std::size_t n) {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return static_cast<uint32_t>((z ^ (z >> 31)) % n);
    }
    bool chance(uint32_t percent) { return below(100) < percent; }
    template <class T>
    const T &pick(const std::vector<T> &items) {
        return items[below(items.size())];
    }

private:
    uint64_t state_;
};

}  // namespace vrktest
