#pragma once

#include <cstdint>

namespace Model::codec {

// Where a signal lies in a payload. `startBit` is its least significant bit in both byte orders.
struct SignalLayout {
    uint32_t startBit = 0;
    uint32_t bitLength = 0;
    bool isBigEndian = false;
};

}  // namespace Model::codec
