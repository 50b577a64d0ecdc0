#pragma once
#include <cstdint>

#include "fuzz/driver/Material.h"
#include "fuzz/driver/Random.h"

namespace fuzz {

/// Makes inputs by changing examples. What an input is depends on the seed and its number only, so a run can be
/// repeated, and begun again in the middle.
class Mutator {
public:
    Mutator(const Material& material, std::uint64_t seed) : material_(material), seed_(seed) {}

    /// Input number `run`; the first ones are the corpus as it stands.
    void Make(std::uint64_t run, Units& input);

private:
    void Change_(Units& input, Random& random);

    const Material& material_;
    std::uint64_t seed_;
    Units scratch_;
};

} // namespace fuzz
