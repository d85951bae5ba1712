#pragma once

#include <cstdint>
#include <span>

// The signal codec, namespace Model::codec: raw values out of payload bytes and back.
//
// Everywhere `startBit` is the position of the signal's least significant bit in both byte orders:
// 8 x byte index + bit within the byte, bit 0 being the byte's least significant. An Intel signal
// (isBigEndian false) continues at bit 0 of the following bytes, a Motorola signal (true) at bit 0
// of the preceding ones. `bitLength` is 1 to 64 in valid data; what other lengths give is fixed
// too. Raw values are unsigned: no sign extension, no floating point, no limits. PhysicalCodec.h
// has those.
//
// All operations are pure functions of their arguments and may run on any thread.
namespace Model::codec {

// What parseSignalValue answers when there is nothing to read. A signal of 64 ones gives the same.
inline constexpr uint64_t kInvalidRawValue = ~uint64_t{0};

// Positions that the encoder's pre-clear can address: the largest CAN FD payload, in bits.
inline constexpr int64_t kClearPositions = 512;

// The raw value of a signal, or kInvalidRawValue when the payload is absent or empty, the start
// lies beyond it, an Intel signal runs past its end or a Motorola signal before its first byte.
[[nodiscard]] uint64_t parseSignalValue(const uint8_t* payload, uint32_t size, bool isBigEndian,
                                        uint32_t startBit, uint32_t bitLength) noexcept;
[[nodiscard]] uint64_t parseSignalValue(std::span<const uint8_t> payload, bool isBigEndian,
                                        uint32_t startBit, uint32_t bitLength) noexcept;

// Pre-clears the signal's place, then ORs the raw value in, not masked to `bitLength`: higher bits
// land in the rest of the last byte written. False when the start lies beyond the payload. A
// Motorola signal that would run before byte 0 is not written (true), an Intel signal that runs
// past the end is written as far as the payload goes (true). Throws std::out_of_range("invalid
// bitset position") as clearSignalBits does, payload unchanged.
bool rawValueToByte(std::span<uint8_t> payload, uint64_t raw, bool isBigEndian, uint32_t startBit,
                    uint32_t bitLength);

// The encoder's first step. Clears a Motorola signal's own bits, but for an Intel signal the bits
// from startBit on counted from each byte's most significant bit. Positions beyond the payload are
// ignored; one outside 0 to 511 throws std::out_of_range("invalid bitset position").
void clearSignalBits(std::span<uint8_t> payload, bool isBigEndian, uint32_t startBit,
                     uint32_t bitLength);

// True when clearSignalBits, and so rawValueToByte, does not throw for this layout.
[[nodiscard]] bool isClearable(bool isBigEndian, uint32_t startBit, uint32_t bitLength) noexcept;

}  // namespace Model::codec
