#pragma once

#include "common/JsonWriter.h"
#include "ldf/LdfModel.h"

namespace quill::dbjson::ldf {

// Times in seconds, speed in bit/s. Start bits are those of the least significant bit in the frame.
void writeLdfJson(const Model& model, JsonWriter& json);

// Seconds for a time in ms such that seconds x 1000, cut to an integer, is the whole number of ms.
[[nodiscard]] double secondsFromMs(double ms);

// Position of the least significant bit, as 8 x byte + bit. With the most significant byte first,
// the signal takes the same bytes in reverse.
[[nodiscard]] uint32_t leastSignificantBit(uint32_t offset, uint32_t bitLength, bool isBigEndian);

// The initial value as one number that, placed into the signal's bits, gives the initial bytes.
// Arrays of more than 8 bytes keep those that fit.
[[nodiscard]] uint64_t initialValue(const Signal& signal, bool isBigEndian);

}  // namespace quill::dbjson::ldf
