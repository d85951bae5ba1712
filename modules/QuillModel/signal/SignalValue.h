#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

namespace Model::codec {

// Descriptions of raw values, the raw value held as a double.
using ValueTable = std::map<double, std::string>;

// The result of a decode.
struct SignalValue {
    std::string description;  // empty when the value table has no entry for the raw value
    double physicalValue = 0;
    uint64_t rawValue = 0;
};

// A CAN signal: the unsigned raw value, its description by an exactly equal key of the table, and
// raw x factor + offset. A signal that cannot be read decodes as the raw value of all ones.
[[nodiscard]] SignalValue decodeSignal(std::span<const uint8_t> payload, bool isBigEndian,
                                       uint32_t startBit, uint32_t bitLength, double factor,
                                       double offset, const ValueTable& valueTable);

// A LIN signal: as decodeSignal, but the physical value is the raw value itself.
[[nodiscard]] SignalValue decodeSignalUnscaled(std::span<const uint8_t> payload, bool isBigEndian,
                                               uint32_t startBit, uint32_t bitLength,
                                               const ValueTable& valueTable);

}  // namespace Model::codec
