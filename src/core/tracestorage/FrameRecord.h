#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace tracestorage {

// Bus of a stored frame. The numbers are the bus types of received frames.
enum class Bus : uint8_t { None = 0, Can = 1, Lin = 2, Ethernet = 3, FlexRay = 5 };

// Bits of FrameRecord::flags and of the column "flags".
namespace flag {
inline constexpr uint32_t kTransmitted = 1U << 0U;
inline constexpr uint32_t kExtended = 1U << 1U;  // 29-bit CAN identifier
inline constexpr uint32_t kRemote = 1U << 2U;    // remote request, no payload
inline constexpr uint32_t kFd = 1U << 3U;        // CAN FD frame
inline constexpr uint32_t kBitRateSwitch = 1U << 4U;
inline constexpr uint32_t kErrorState = 1U << 5U;  // ESI: the sender is error passive
inline constexpr uint32_t kError = 1U << 6U;  // error frame: identifier and payload may be partial
inline constexpr uint32_t kEnhancedChecksum = 1U << 8U;  // LIN checksum model
inline constexpr uint32_t kFlexRayShift = 16U;  // FlexRay frame flags 0 to 15 lie from here on
}  // namespace flag

// One frame as it is stored. The payload lies in the batch that holds the record.
struct FrameRecord {
    int64_t timeNs =
        0;  // since 1970-01-01; since the start of measurement when the file has no date
    uint32_t ident = 0;  // CAN or LIN identifier, FlexRay slot; 0 for Ethernet
    uint32_t flags = 0;  // namespace flag
    uint32_t payloadOffset = 0;
    uint32_t payloadLength = 0;
    uint16_t channel = 0;  // counted from 1, as the file writes it
    Bus bus = Bus::None;
    uint8_t dlc = 0;      // data length code; LIN: payload bytes
    uint32_t detail = 0;  // LIN checksum; FlexRay: header CRC, cycle << 16, channel mask << 24
};
static_assert(sizeof(FrameRecord) == 32);

// Frames on their way into the storage, with their payloads in one block. Moving it moves pointers.
class FrameBatch {
public:
    void reserve(size_t frames, size_t payloadBytes) {
        m_frames.reserve(frames);
        m_payload.reserve(payloadBytes);
    }
    void clear() {
        m_frames.clear();
        m_payload.clear();
    }
    void append(FrameRecord record, std::span<const uint8_t> payload) {
        record.payloadOffset = static_cast<uint32_t>(m_payload.size());
        record.payloadLength = static_cast<uint32_t>(payload.size());
        m_payload.insert(m_payload.end(), payload.begin(), payload.end());
        m_frames.push_back(record);
    }
    [[nodiscard]] size_t size() const { return m_frames.size(); }
    [[nodiscard]] bool empty() const { return m_frames.empty(); }
    [[nodiscard]] const std::vector<FrameRecord>& frames() const { return m_frames; }
    [[nodiscard]] std::span<const uint8_t> payload(const FrameRecord& record) const {
        return {m_payload.data() + record.payloadOffset, record.payloadLength};
    }

private:
    std::vector<FrameRecord> m_frames;
    std::vector<uint8_t> m_payload;
};

}  // namespace tracestorage
