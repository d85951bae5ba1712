// Layouts of every length in both byte orders over payloads of several lengths.
#include "own_seeds.h"

namespace quill::fuzz {

std::vector<Seed> ownSeeds(std::string_view /*target*/) {
    std::vector<Seed> seeds;
    for (const uint8_t order : {uint8_t{6}, uint8_t{7}}) {
        for (uint8_t length = 0; length <= 65; ++length) {
            Seed seed(17 + size_t{length} % 24);
            seed[0] = order;
            seed[1] = static_cast<uint8_t>(length * 3U);
            seed[5] = length;
            for (size_t i = 9; i < seed.size(); ++i) seed[i] = static_cast<uint8_t>(i * 37U);
            seeds.push_back(std::move(seed));
        }
    }
    return seeds;
}

}  // namespace quill::fuzz
