#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace RV::Crc {

// Rolling counter and CRC of one frame. Start bits are those of signals: the position of the least
// significant bit, 8 x byte index + bit within the byte. Lengths are in bits. Not synchronised:
// whoever sets resetPending beside a running job holds the job's own lock.
struct FrameUpdateSettings {
    int32_t dataLength = 0;  // data bytes, 1 to 64

    uint64_t counter = 0;  // value of the last transmission
    bool counterEnabled = false;
    int32_t counterStartBit = 0;
    int32_t counterLength = 0;
    bool counterBigEndian = false;
    bool resetPending = false;  // the next transmission carries 0

    uint8_t crcType = 0;  // code of the CRC catalogue, 0 for none
    int32_t crcStartBit = 0;
    int32_t crcLength = 0;
    bool crcBigEndian = false;
    std::vector<uint8_t> keyBytes;  // for "CRC_8 Variant"
};

// Why these settings cannot be used, as a text for status and log; nothing when they can: data
// length outside 1 to 64, unknown CRC code, counter or CRC field empty or not wholly in the data.
[[nodiscard]] std::optional<std::string> validate(const FrameUpdateSettings& settings);

// Brings a frame's data up to date before one transmission. The counter first: 0 when a reset is
// pending, else one more than the last value, modulo 2^counterLength. Then the CRC over the whole
// data with its own field at 0, its low crcLength bits into the field.
//
// Fields are written with the signal writer. It ORs a little-endian field that does not fill whole
// bytes onto the bits that are there and clears bits next to it, so give every transmission a fresh
// copy of the frame's bytes with the fields at 0, never the data of the transmission before.
//
// False, with data and settings unchanged, when the data length is outside 1 to 64 or beyond
// `data`, the CRC code is unknown, or a field lies where the signal writer cannot reach. Allocates
// nothing.
[[nodiscard]] bool updateFrame(std::span<uint8_t> data, FrameUpdateSettings& settings) noexcept;

}  // namespace RV::Crc
