#include "core/hardware/crc/FrameUpdate.h"

#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/CrcVariant.h"
#include "signal/SignalCodec.h"
#include "signal/SignalLayout.h"

namespace RV::Crc {

namespace {

using Model::codec::SignalLayout;

constexpr int32_t kMaxDataBytes = 64;

SignalLayout counterField(const FrameUpdateSettings& settings) {
    return {static_cast<uint32_t>(settings.counterStartBit),
            static_cast<uint32_t>(settings.counterLength), settings.counterBigEndian};
}

SignalLayout crcField(const FrameUpdateSettings& settings) {
    return {static_cast<uint32_t>(settings.crcStartBit), static_cast<uint32_t>(settings.crcLength),
            settings.crcBigEndian};
}

bool hasDataLength(const FrameUpdateSettings& settings) {
    return settings.dataLength >= 1 && settings.dataLength <= kMaxDataBytes;
}

bool isReachable(const SignalLayout& field) {
    return Model::codec::isClearable(field.isBigEndian, field.startBit, field.bitLength);
}

uint64_t lowBits(uint64_t value, int32_t count) {
    if (count >= 64) return value;
    return count <= 0 ? 0 : value & ((uint64_t{1} << count) - 1);
}

// Only for fields that isReachable has passed, for which the writer does not throw. A field beyond
// the data is written as far as the writer goes, its result does not matter here.
void writeField(std::span<uint8_t> data, uint64_t value, const SignalLayout& field) {
    Model::codec::rawValueToByte(data, value, field.isBigEndian, field.startBit, field.bitLength);
}

void stepCounter(FrameUpdateSettings& settings) {
    if (settings.resetPending) {
        settings.resetPending = false;
        settings.counter = 0;
    } else {
        settings.counter = lowBits(settings.counter + 1, settings.counterLength);
    }
}

uint64_t frameCrc(std::span<const uint8_t> data, const FrameUpdateSettings& settings) {
    if (settings.crcType != kCrc8Variant) return computeCrc(settings.crcType, data).value_or(0);
    return computeCrc8Variant(data, {settings.crcStartBit, settings.crcLength,
                                     settings.crcBigEndian, settings.keyBytes, settings.counter});
}

// What is wrong with a field of 1 or more bits in the data; nothing when it lies within.
std::optional<std::string> fieldFault(const char* name, int32_t startBit, int32_t length,
                                      bool isBigEndian, int32_t dataLength) {
    const int64_t start = startBit;
    const int64_t end = int64_t{8} * dataLength;
    // A big-endian field rises to the most significant bit of byte 0.
    const int64_t room = isBigEndian ? 8 * (start / 8) + 8 - start % 8 : end - start;
    if (start >= 0 && start < end && length >= 1 && length <= room) return std::nullopt;
    return std::string(name) + " field of " + std::to_string(length) + " bits at start bit " +
           std::to_string(startBit) + (isBigEndian ? " (big-endian)" : " (little-endian)") +
           " lies outside the " + std::to_string(dataLength) + " data bytes";
}

}  // namespace

std::optional<std::string> validate(const FrameUpdateSettings& settings) {
    if (!hasDataLength(settings)) {
        return "data length " + std::to_string(settings.dataLength) + " is not 1 to 64";
    }
    if (settings.counterEnabled) {
        auto fault = fieldFault("counter", settings.counterStartBit, settings.counterLength,
                                settings.counterBigEndian, settings.dataLength);
        if (fault) return fault;
    }
    if (settings.crcType == kNoCrc) return std::nullopt;
    if (findAlgorithm(settings.crcType) == nullptr) {
        return "unknown CRC code " + std::to_string(settings.crcType);
    }
    return fieldFault("CRC", settings.crcStartBit, settings.crcLength, settings.crcBigEndian,
                      settings.dataLength);
}

bool updateFrame(std::span<uint8_t> data, FrameUpdateSettings& settings) noexcept {
    if (!hasDataLength(settings)) return false;
    const auto length = static_cast<size_t>(settings.dataLength);
    if (length > data.size()) return false;
    data = data.first(length);
    const SignalLayout counter = counterField(settings);
    const SignalLayout crc = crcField(settings);
    const bool hasCrc = settings.crcType != kNoCrc;
    if (settings.counterEnabled && !isReachable(counter)) return false;
    if (hasCrc && (findAlgorithm(settings.crcType) == nullptr || !isReachable(crc))) return false;

    if (settings.counterEnabled) {
        stepCounter(settings);
        writeField(data, settings.counter, counter);
    }
    if (hasCrc) {
        writeField(data, 0, crc);
        writeField(data, lowBits(frameCrc(data, settings), settings.crcLength), crc);
    }
    return true;
}

}  // namespace RV::Crc
