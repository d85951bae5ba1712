#pragma once

#include <cstdint>

namespace quill::traceformats {

// What became of one unit. `text` is a constant: the kind of a unit without a frame, or the reason
// why a frame could not be read; `number` completes it (object type, link type), 0 for none.
struct Decoded {
    enum class Result : uint8_t { Frame, NoFrame, Bad };

    Result result = Result::NoFrame;
    const char* text = "";
    uint32_t number = 0;

    // A unit that only says how to read others.
    static Decoded context() { return {}; }
    static Decoded frame() { return {Result::Frame, "", 0}; }
    static Decoded noFrame(const char* kind, uint32_t number = 0) {
        return {Result::NoFrame, kind, number};
    }
    static Decoded bad(const char* reason, uint32_t number = 0) {
        return {Result::Bad, reason, number};
    }
};

// Moments since 1970 above this (the year 2116) are damage.
inline constexpr uint64_t kLargestTimeNs = uint64_t{1} << 62U;
// Times from the start of measurement above this (36 years) are damage; below it the sum with any
// date up to the year 2200 fits into 63 bits.
inline constexpr uint64_t kLargestSpanNs = uint64_t{1} << 60U;

}  // namespace quill::traceformats
