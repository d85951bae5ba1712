#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "own_seeds.h"

namespace quill::fuzz {

// Makes broken inputs out of good ones: bytes flipped, pieces cut, repeated and taken from other
// inputs, numbers put in that lie on the edge of something. The same seed gives the same inputs.
class Mutator {
public:
    // `inputs` is not empty; nothing that is made is longer than `largest`.
    Mutator(std::vector<Seed> inputs, uint64_t seed, size_t largest);

    // The next input; it holds until the next call.
    [[nodiscard]] const Seed& next();

private:
    void changeOnce();
    void flip();
    void cut();
    void repeat();
    void splice();
    void putBinaryNumber();
    void putTextNumber();
    [[nodiscard]] size_t below(size_t bound);  // 0 when the bound is 0

    std::vector<Seed> m_inputs;
    std::mt19937_64 m_random;
    size_t m_largest;
    Seed m_current;
};

}  // namespace quill::fuzz
