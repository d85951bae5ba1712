#include "engine/FrameRules.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace simcore::engine {

namespace {

constexpr std::array<uint8_t, 16> kFdLengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
constexpr uint32_t kStandardIds = 0x800;
constexpr uint32_t kExtendedIds = 0x20000000;
constexpr int64_t kNsPerSecond = 1'000'000'000;

int64_t bitsToNs(int64_t bits, int64_t bitrate) { return bits * kNsPerSecond / bitrate; }

// Mean number of stuff bits: in random data a run of five equal bits ends every 30 bits.
int64_t meanStuffBits(int64_t bits) { return bits / 30; }

}  // namespace

const char* busKindName(BusKind kind) {
    static constexpr std::array<const char*, kBusKinds> kNames{"can", "lin", "ethernet", "flexray"};
    return kNames[static_cast<size_t>(kind)];
}

uint8_t canDlcForLength(uint8_t length, bool fd) {
    if (!fd) return std::min<uint8_t>(length, 8);
    const auto* at = std::lower_bound(kFdLengths.begin(), kFdLengths.end(), length);
    return static_cast<uint8_t>(std::min<std::ptrdiff_t>(at - kFdLengths.begin(), 15));
}

uint8_t canLengthOfDlc(uint8_t dlc, bool fd) {
    const uint8_t length = kFdLengths[dlc & 0x0FU];
    return fd ? length : std::min<uint8_t>(length, 8);
}

bool normalise(RvCanFrame& frame) {
    const bool fd = isFd(frame);
    if (frame.id >= (isExtended(frame) ? kExtendedIds : kStandardIds)) return false;
    if (frame.length > (fd ? 64 : 8)) return false;
    if (!fd && isRemote(frame)) {
        frame.length = 0;  // asks for as many bytes as its length code says
    } else {
        frame.extend[1] &= static_cast<uint8_t>(~canflag::kRtr);
        uint8_t dlc = canDlcForLength(frame.length, fd);
        // Classic length codes above 8 carry eight bytes and stay as they are.
        if (!fd && frame.length == 8 && dlcOf(frame) > 8) dlc = dlcOf(frame);
        const uint8_t padded = canLengthOfDlc(dlc, fd);
        std::memset(frame.data + frame.length, 0, sizeof frame.data - frame.length);
        frame.length = padded;
        frame.extend[1] = static_cast<uint8_t>((frame.extend[1] & 0x0FU) | (dlc << 4U));
    }
    if (frame.length == 0) std::memset(frame.data, 0, sizeof frame.data);
    return true;
}

bool normalise(RvLinFrame& frame) {
    if (frame.id > 63 || frame.length > 8 || frame.checkMode > 1) return false;
    std::memset(frame.data + frame.length, 0, sizeof frame.data - frame.length);
    return true;
}

bool normalise(RvEthFrame& frame) {
    if (frame.length < 14 || frame.length > kRvEthMaxLength) return false;
    std::memset(frame.data + frame.length, 0, sizeof frame.data - frame.length);
    return true;
}

bool normalise(RvFlexRayFrame& frame) {
    if (frame.length > 254 || frame.cycle > 63 || frame.slot == 0 || frame.slot > 2047)
        return false;
    if (frame.channelMask == 0 || frame.channelMask > 3) return false;
    std::memset(frame.data + frame.length, 0, sizeof frame.data - frame.length);
    return true;
}

uint8_t linProtectedId(uint8_t id) {
    const auto bit = [id](unsigned n) { return (id >> n) & 1U; };
    const unsigned p0 = bit(0) ^ bit(1) ^ bit(2) ^ bit(4);
    const unsigned p1 = 1U ^ bit(1) ^ bit(3) ^ bit(4) ^ bit(5);
    return static_cast<uint8_t>((id & 0x3FU) | (p0 << 6U) | (p1 << 7U));
}

uint8_t linChecksum(const RvLinFrame& frame) {
    const bool diagnostic = frame.id == 60 || frame.id == 61;
    unsigned sum = frame.checkMode == 1 && !diagnostic ? linProtectedId(frame.id) : 0U;
    for (size_t i = 0; i < std::min<size_t>(frame.length, sizeof frame.data); ++i) {
        sum += frame.data[i];
        if (sum > 0xFF) sum -= 0xFF;  // the carry is added in
    }
    return static_cast<uint8_t>(~sum);
}

uint32_t arbitrationKey(const RvCanFrame& frame) {
    const uint32_t remote = isRemote(frame) ? 1 : 0;
    // In the order on the wire: 11 identifier bits, then RTR or SRR, then IDE, then the rest.
    if (!isExtended(frame)) return (frame.id << 21U) | (remote << 20U);
    const uint32_t base = frame.id >> 18U;
    const uint32_t rest = frame.id & 0x3FFFFU;
    return (base << 21U) | (1U << 20U) | (1U << 19U) | (rest << 1U) | remote;
}

int64_t wireTime(const RvCanFrame& frame, const BusRates& rates) {
    const int64_t payloadBits = 8 * static_cast<int64_t>(frame.length);
    const bool extended = isExtended(frame);
    if (!isFd(frame)) {
        const int64_t stuffable = (extended ? 54 : 34) + payloadBits;
        const int64_t bits = (extended ? 67 : 47) + payloadBits + meanStuffBits(stuffable);
        return bitsToNs(bits, rates.bitrate);
    }
    const int64_t head = extended ? 36 : 17;  // start of frame to the rate switch
    const bool longCrc = frame.length > 16;
    const int64_t crcField =
        longCrc ? 4 + 21 + 7 : 4 + 17 + 6;  // stuff count, CRC, fixed stuff bits
    const int64_t body = 1 + 4 + payloadBits + meanStuffBits(5 + payloadBits) + crcField + 1;
    constexpr int64_t kTail = 12;  // acknowledge, end of frame, intermission
    const bool fast = (frame.extend[0] & canflag::kBrs) != 0 && rates.dataBitrate > 0;
    return bitsToNs(head + meanStuffBits(head) + kTail, rates.bitrate) +
           bitsToNs(body, fast ? rates.dataBitrate : rates.bitrate);
}

int64_t wireTime(const RvLinFrame& frame, const BusRates& rates) {
    // Break, sync and identifier, then the payload and the checksum as ten-bit characters.
    return bitsToNs(34 + 10 * (static_cast<int64_t>(frame.length) + 1), rates.bitrate);
}

int64_t wireTime(const RvEthFrame& frame, const BusRates& rates) {
    const int64_t bytes = std::max<int64_t>(frame.length, 60) + 8 + 4 + 12;
    return bitsToNs(8 * bytes, rates.bitrate);
}

int64_t wireTime(const RvFlexRayFrame& frame, const BusRates& rates) {
    // Start sequence, header, payload and frame CRC as ten-bit bytes, end sequence, idle delimiter.
    return bitsToNs(6 + 10 * (5 + static_cast<int64_t>(frame.length) + 3) + 2 + 11, rates.bitrate);
}

}  // namespace simcore::engine
