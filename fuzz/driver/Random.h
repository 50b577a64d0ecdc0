#pragma once
#include <cstddef>
#include <cstdint>

namespace fuzz {

/// SplitMix64: quick, and the same on every machine, which the distributions of <random> are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15;
        std::uint64_t bits = state_;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }

    /// From 0 to limit - 1. limit: from 1 to 2^32.
    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>((Next() >> 32) * limit >> 32); }
    bool OneIn(std::size_t count) { return Below(count) == 0; }

private:
    std::uint64_t state_;
};

/// FNV-1a.
template <class Text>
std::uint64_t Hash(const Text& text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const auto unit : text) {
        hash = (hash ^ static_cast<std::uint64_t>(unit)) * 0x100000001B3;
    }
    return hash;
}

} // namespace fuzz
