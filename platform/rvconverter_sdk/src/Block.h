#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace rv {

// A piece of the output on its way from conversion to the file: whole events only.
struct Block {
    std::vector<uint8_t> content;  // its size is the room; what counts is `used`
    size_t used = 0;
    std::vector<uint8_t> packed;  // form in the file, when the format packs
    size_t packedSize = 0;
    uint64_t frames = 0;
    uint32_t objects = 0;  // as the header of a BLF file counts them
    uint64_t startNs = 0;  // start of measurement, since the epoch
    uint64_t firstNs = 0;  // of the first and last event, since the start
    uint64_t lastNs = 0;

    // Empty again, with its memory kept.
    void reset() {
        used = packedSize = 0;
        frames = startNs = firstNs = lastNs = 0;
        objects = 0;
    }
};

}  // namespace rv
