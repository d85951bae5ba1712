#include "signal/SignalValue.h"

#include "signal/SignalCodec.h"

namespace Model::codec {

namespace {

SignalValue describe(uint64_t raw, double number, const ValueTable& valueTable) {
    SignalValue result{{}, number, raw};
    // The comparison keeps a not-a-number key, which a map finds for anything, from matching.
    const auto entry = valueTable.find(number);
    if (entry != valueTable.end() && entry->first == number) result.description = entry->second;
    return result;
}

}  // namespace

SignalValue decodeSignal(std::span<const uint8_t> payload, bool isBigEndian, uint32_t startBit,
                         uint32_t bitLength, double factor, double offset,
                         const ValueTable& valueTable) {
    SignalValue result =
        decodeSignalUnscaled(payload, isBigEndian, startBit, bitLength, valueTable);
    result.physicalValue = result.physicalValue * factor + offset;
    return result;
}

SignalValue decodeSignalUnscaled(std::span<const uint8_t> payload, bool isBigEndian,
                                 uint32_t startBit, uint32_t bitLength,
                                 const ValueTable& valueTable) {
    // The error value is decoded like any other: scripts test the raw value for it themselves.
    const uint64_t raw = parseSignalValue(payload, isBigEndian, startBit, bitLength);
    return describe(raw, static_cast<double>(raw), valueTable);
}

}  // namespace Model::codec
