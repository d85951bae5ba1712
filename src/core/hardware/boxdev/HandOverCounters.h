#pragma once

#include <cstdint>

namespace rv {

// What one hand-over on a frame's road has seen since the program started. At any quiet moment
// in = out + held + dropped.
struct HandOver {
    uint64_t in = 0;
    uint64_t out = 0;
    uint64_t held = 0;
    uint64_t dropped = 0;

    HandOver& operator+=(const HandOver& other) {
        in += other.in;
        out += other.out;
        held += other.held;
        dropped += other.dropped;
        return *this;
    }
    [[nodiscard]] bool balanced() const { return in == out + held + dropped; }
};

}  // namespace rv
